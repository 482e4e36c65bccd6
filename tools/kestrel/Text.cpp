#include "Text.h"

#include <kestrel/platform/CoreFoundation.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace kestrel::tools {

std::string utf8(const KSString& text) {
    const std::unique_ptr<char, decltype(&std::free)> buffer(text.createUTF8Str(), &std::free);
    return buffer ? buffer.get() : "";
}

KSString fromUTF8(std::string_view text) {
    CFStringRef string =
        CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text.data()),
                                static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8, false);
    KSString result(string);
    CFRelease(string);
    return result;
}

std::string printable(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool lateControl =  // U+0080 to U+009F
            byte == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0;
        if (lateControl) ++i;
        result += byte < 0x20 || byte == 0x7F || lateControl ? '?' : static_cast<char>(byte);
    }
    return result;
}

std::string inQuotes(std::string_view text) {
    constexpr std::size_t longest = 100;
    if (text.size() <= longest) return '"' + printable(text) + '"';
    std::size_t end = longest;
    while (end > longest - 4 && (text[end] & 0xC0) == 0x80) --end;  // not within a character
    return '"' + printable(text.substr(0, end)) + "...\"";
}

std::string filePath(const KSURL& url) {
    std::string path(4096, '\0');
    if (!CFURLGetFileSystemRepresentation(url.cf_url(), true, reinterpret_cast<UInt8*>(path.data()),
                                          static_cast<CFIndex>(path.size())))
        return "";
    path.resize(path.find('\0'));
    return path;
}

std::string text(const KSUUID& identifier) {
    char digits[33];
    std::snprintf(digits, sizeof digits, "%08x%08x%08x%08x", identifier.words[0], identifier.words[1],
                  identifier.words[2], identifier.words[3]);
    return digits;
}

std::string text(double number) {
    char digits[32];
    return {digits,
            std::to_chars(digits, digits + sizeof digits, number, std::chars_format::general, 10).ptr};
}

std::string text(std::span<const double> numbers) {
    std::string result;
    for (const double number : numbers) {
        if (!result.empty()) result += ' ';
        result += text(number);
    }
    return result;
}

std::optional<std::vector<double>> parseNumbers(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    std::vector<double> result;
    while (!(text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size())), text.empty())) {
        const auto piece = text.substr(0, text.find_first_of(blanks));
        const auto value = parseNumber<double>(piece);
        if (!value) return std::nullopt;
        result.push_back(*value);
        text.remove_prefix(piece.size());
    }
    return result;
}

}  // namespace kestrel::tools
