#include <kestrel/platform/CFURL.h>

#include <kestrel/platform/detail/DataObject.h>
#include <kestrel/platform/detail/FileDescriptor.h>
#include <kestrel/platform/detail/StringObject.h>
#include <kestrel/platform/detail/URLObject.h>
#include <kestrel/platform/detail/Utf8.h>

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <utility>

namespace {

constexpr bool isAlphanumeric(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

/// RFC 3986, pchar and "/".
constexpr bool standsInPath(char c) {
    return isAlphanumeric(c) || std::string_view("-._~!$&'()*+,;=:@/").find(c) != std::string_view::npos;
}

constexpr int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

/// The byte of an escape at the start of text; -1 when there is none.
constexpr int escapedByte(std::string_view text) {
    if (text.size() < 3 || text[0] != '%' || hexValue(text[1]) < 0 || hexValue(text[2]) < 0) return -1;
    return hexValue(text[1]) * 16 + hexValue(text[2]);
}

/// Brackets are let through: people write them in frame sequences.
bool isURLText(std::string_view text) {
    bool inFragment = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '%' ? escapedByte(text.substr(i)) < 0
                     : !standsInPath(c) && c != '?' && c != '[' && c != ']' && c != '#')
            return false;
        if (c == '#' && std::exchange(inFragment, true)) return false;
    }
    return !text.empty();
}

/// text with the placeholders of frame sequences in its path escaped ("[##]", "[@]"), which people write as
/// they are.
std::string escapePlaceholders(std::string_view text) {
    const std::size_t pathEnd = std::min(text.find('?'), text.size());
    std::string result;
    std::size_t done = 0;
    for (std::size_t open; (open = text.find_first_of("[#", done)) < pathEnd && text[open] == '[';) {
        const std::size_t close = std::min(text.find_first_not_of("#@", open + 1), text.size() - 1);
        const bool isPlaceholder = text[close] == ']' && close > open + 1;
        result += text.substr(done, open - done);
        result += isPlaceholder ? kestrel::detail::escapePath(text.substr(open, close + 1 - open)) : "[";
        done = isPlaceholder ? close + 1 : open + 1;
    }
    return result.append(text.substr(done));
}

/// The length of the scheme before its colon, 0 when the text is relative.
std::size_t schemeLength(std::string_view text) {
    const std::size_t end = text.find_first_of(":/?#");
    return end != std::string_view::npos && text[end] == ':' ? end : 0;
}

/// UTF-8 as text, with U+FFFD for each byte that belongs to no character.
CFStringRef createString(std::string_view bytes) {
    const auto make = [](std::string_view part) {
        return CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(part.data()),
                                       static_cast<CFIndex>(part.size()), kCFStringEncodingUTF8, false);
    };
    if (CFStringRef whole = make(bytes)) return whole;

    CFMutableStringRef text = CFStringCreateMutable(nullptr, 0);
    while (!bytes.empty()) {
        std::size_t length = std::min<std::size_t>(bytes.size(), 4);
        CFStringRef character = nullptr;
        while (length > 0 && !(character = make(bytes.substr(0, length)))) --length;
        constexpr UniChar replacement = 0xFFFD;
        if (character)
            CFStringAppend(text, character);
        else
            CFStringAppendCharacters(text, &replacement, 1);
        CFRelease(character);
        bytes.remove_prefix(character ? length : 1);
    }
    return text;
}

CFURLRef createURL(std::string text) { return new (std::nothrow) __CFURL(std::move(text)); }

/// path with its last segment apart; both without the slashes at their ends, but the root keeps its own.
struct SplitPath {
    explicit SplitPath(std::string_view path) {
        while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
        const std::size_t slash = path.size() > 1 ? path.rfind('/') : std::string_view::npos;
        const std::size_t start = slash == std::string_view::npos ? 0 : slash + 1;
        folder = path.substr(0, start);
        name = path.substr(start);
    }
    std::string_view folder;  ///< with its slash; empty for a single segment
    std::string_view name;
};

/// Where the dot of the extension stands in a name; npos without an extension.
std::size_t extensionDot(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    return dot == 0 || dot + 1 == name.size() ? std::string_view::npos : dot;
}

/// A relative path: a colon in its first segment would read as the end of a scheme, so it is escaped too.
std::string escapeRelativePath(std::string_view path) {
    const std::size_t firstEnd = std::min(path.find('/'), path.size());
    std::string text;
    for (const char c : kestrel::detail::escapePath(path.substr(0, firstEnd))) {
        if (c == ':')
            text += "%3A";
        else
            text += c;
    }
    return text + kestrel::detail::escapePath(path.substr(firstEnd));
}

std::string colonPath(std::string_view path) {
    std::string result;
    const bool absolute = path.starts_with('/');
    bool first = absolute;
    while (!path.empty()) {
        const std::size_t slash = path.find('/');
        std::string segment(path.substr(0, slash));
        path.remove_prefix(slash == std::string_view::npos ? path.size() : slash + 1);
        if (segment.empty() || segment == ".") continue;
        if (segment == "..") segment.clear();
        for (char& c : segment)
            if (c == ':') c = '/';
        if (!std::exchange(first, false)) result += ':';
        result += segment;
    }
    return result;
}

}  // namespace

__CFURL::__CFURL(std::string urlText) : text(std::move(urlText)), string(createString(text)) {
    const std::size_t scheme = schemeLength(text);
    pathStart = scheme ? scheme + 1 : 0;
    if (std::string_view(text).substr(pathStart).starts_with("//"))
        pathStart = text.find_first_of("/?#", pathStart + 2);
    if (pathStart == std::string::npos) pathStart = text.size();
    pathEnd = std::min(text.find_first_of("?#", pathStart), text.size());
}

bool __CFURL::isFile() const {
    const std::size_t scheme = schemeLength(text);
    if (!scheme) return !std::string_view(text).starts_with("//");
    std::string start = text.substr(0, pathStart);  // neither schemes nor hosts distinguish capitals
    for (char& c : start)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return start == "file:" || start == "file://" || start == "file://localhost";
}

namespace kestrel::detail {

std::string escapePath(std::string_view path) {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string escaped;
    escaped.reserve(path.size() + 16);
    for (const char c : path) {
        if (standsInPath(c)) {
            escaped += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            escaped += {'%', digits[byte >> 4], digits[byte & 15]};
        }
    }
    return escaped;
}

std::string unescape(std::string_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int byte = escapedByte(text.substr(i));
        bytes += byte < 0 ? text[i] : static_cast<char>(byte);
        if (byte >= 0) i += 2;
    }
    return bytes;
}

std::optional<std::string> fileSystemPath(CFURLRef url) {
    if (!url || !url->isFile()) return std::nullopt;
    std::string path = unescape(url->getPath());
    if (path.empty() || path.find('\0') != std::string::npos) return std::nullopt;
    return path;
}

}  // namespace kestrel::detail

using namespace kestrel::detail;

CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef, const UInt8* path, CFIndex length,
                                                 Boolean isDirectory) {
    if (!path || length <= 0) return nullptr;
    const std::string_view bytes(reinterpret_cast<const char*>(path), static_cast<std::size_t>(length));
    std::string text = bytes[0] == '/' ? escapePath(bytes) : escapeRelativePath(bytes);
    if (isDirectory && text.back() != '/') text += '/';
    return createURL(bytes[0] == '/' ? "file://" + text : text);
}

CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef allocator, CFStringRef path, CFURLPathStyle style,
                                       Boolean isDirectory) {
    if (!path || style != kCFURLPOSIXPathStyle) return nullptr;
    const std::string bytes = utf8Of(unitsOf(path));
    return CFURLCreateFromFileSystemRepresentation(allocator, reinterpret_cast<const UInt8*>(bytes.data()),
                                                   static_cast<CFIndex>(bytes.size()), isDirectory);
}

CFURLRef CFURLCreateWithString(CFAllocatorRef, CFStringRef text, CFURLRef base) {
    if (!text || base) return nullptr;
    std::string bytes = escapePlaceholders(utf8Of(unitsOf(text)));
    return isURLText(bytes) ? createURL(std::move(bytes)) : nullptr;
}

CFStringRef CFURLGetString(CFURLRef url) { return url ? url->string : nullptr; }

CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFURLPathStyle style) {
    if (!url) return nullptr;
    std::string path = unescape(url->getPath());
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    return createString(style == kCFURLHFSPathStyle ? colonPath(path) : path);
}

Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean /*resolveAgainstBase*/, UInt8* buffer,
                                         CFIndex size) {
    const std::optional<std::string> path = fileSystemPath(url);
    if (!path || !buffer || size <= 0 || path->size() >= static_cast<std::size_t>(size)) return false;
    std::memcpy(buffer, path->c_str(), path->size() + 1);
    return true;
}

Boolean CFURLHasDirectoryPath(CFURLRef url) { return url && url->getPath().ends_with('/'); }

CFStringRef CFURLCopyLastPathComponent(CFURLRef url) {
    return url ? createString(unescape(SplitPath(url->getPath()).name)) : nullptr;
}

CFStringRef CFURLCopyPathExtension(CFURLRef url) {
    if (!url) return nullptr;
    const std::string name = unescape(SplitPath(url->getPath()).name);
    const std::size_t dot = extensionDot(name);
    return dot == std::string::npos ? nullptr : createString(std::string_view(name).substr(dot + 1));
}

CFURLRef CFURLCreateCopyDeletingLastPathComponent(CFAllocatorRef, CFURLRef url) {
    if (!url) return nullptr;
    const SplitPath path(url->getPath());
    const std::string start = url->text.substr(0, url->pathStart);
    if (path.name == "/" || (path.name.empty() && !start.empty())) return createURL(start + "/");
    return createURL(start + (path.folder.empty() ? "./" : std::string(path.folder)));
}

CFURLRef CFURLCreateCopyDeletingPathExtension(CFAllocatorRef, CFURLRef url) {
    if (!url) return nullptr;
    const SplitPath path(url->getPath());
    // An escaped dot is a dot too, so the name is taken apart unescaped.
    std::string name = unescape(path.name);
    const std::size_t dot = extensionDot(name);
    if (dot == std::string::npos) {
        CFRetain(url);
        return url;
    }
    name.erase(dot);
    const bool isFirst = url->pathStart == 0 && path.folder.empty();
    const std::string escaped = isFirst ? escapeRelativePath(name) : escapePath(name);
    const bool isDirectory = url->getPath().ends_with('/');
    return createURL(url->text.substr(0, url->pathStart) + std::string(path.folder) + escaped +
                     (isDirectory ? "/" : "") + url->text.substr(url->pathEnd));
}

Boolean CFURLCreateDataAndPropertiesFromResource(CFAllocatorRef, CFURLRef url, CFDataRef* data,
                                                 const void** properties, const void* desiredProperties,
                                                 SInt32* error) {
    CFDataRef read = nullptr;
    errno = EINVAL;
    const std::optional<std::string> path = fileSystemPath(url);
    if (path && data && !properties && !desiredProperties) {
        const int descriptor = openForReading(path->c_str());
        if (descriptor >= 0) {
            read = readWholeFile(descriptor);
            const int reason = errno;
            ::close(descriptor);
            errno = reason;
        }
    }
    if (data) *data = read;
    if (error) *error = read ? 0 : errno;
    return read != nullptr;
}
