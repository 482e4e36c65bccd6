// kestrel/platform/detail/URLObject.h - the object behind CFURLRef.
#pragma once

#include <kestrel/platform/CFURL.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

struct __CFURL final : kestrel::detail::PlatformObject {
    /// Takes over a text that is known to be a URL.
    explicit __CFURL(std::string urlText);
    ~__CFURL() override { CFRelease(string); }
    std::string describe() const override { return text; }

    /// The escaped path within text: without scheme, host, query and fragment.
    std::string_view getPath() const { return std::string_view(text).substr(pathStart, pathEnd - pathStart); }
    /// True for a relative path and for the scheme "file" without a foreign host.
    bool isFile() const;

    const std::string text;
    CFStringRef string;  ///< the same text as an object
    std::size_t pathStart;
    std::size_t pathEnd;
};

namespace kestrel::detail {

/// The bytes of the path that a URL of a file names, a folder's with its slash; none for other URLs, and for
/// a path with a NUL in it.
std::optional<std::string> fileSystemPath(CFURLRef url);

/// Escapes what a URL's path cannot hold as it is.
std::string escapePath(std::string_view path);
std::string unescape(std::string_view text);

}  // namespace kestrel::detail
