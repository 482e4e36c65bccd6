// tools/kestrel/Text.h - between the library's text and UTF-8 of the command line.
#pragma once

#include <kestrel/files/KSURL.h>
#include <kestrel/foundation/KSString.h>

#include <charconv>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kestrel::tools {

inline std::string utf8(const KSString& string) {
    const std::unique_ptr<char, decltype(&std::free)> text(string.createUTF8Str(), &std::free);
    return text ? text.get() : "";
}

/// The bytes of the path that a URL names, for the system's calls; empty for a URL that is no file.
inline std::string filePath(const KSURL& url) {
    std::string path(4096, '\0');
    if (!CFURLGetFileSystemRepresentation(url.cf_url(), true, reinterpret_cast<UInt8*>(path.data()),
                                          static_cast<CFIndex>(path.size())))
        return "";
    path.resize(path.find('\0'));
    return path;
}

/// A number that is all of text, in any locale's process; nothing when it is none or out of range.
template <class Number>
std::optional<Number> parseNumber(std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

}  // namespace kestrel::tools
