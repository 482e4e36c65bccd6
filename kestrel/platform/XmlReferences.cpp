// References in text, replaced by what they stand for.
#include <kestrel/platform/CFXMLParser.h>
#include <kestrel/platform/detail/StringObject.h>
#include <kestrel/platform/detail/XmlReferences.h>
#include <kestrel/platform/detail/XmlScan.h>

#include <algorithm>
#include <array>
#include <vector>

namespace kestrel::detail {
namespace {

struct Predefined {
    std::string_view name;
    char character;
};
// XML 1.0, fifth edition, 4.6
constexpr auto predefined =
    std::to_array<Predefined>({{"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}});

// The character that a reference by this name stands for, 0 if none.
char32_t characterOf(std::string_view name) {
    if (name.starts_with('#')) return xmlReferencedCharacter(name);
    for (const Predefined& entity : predefined)
        if (entity.name == name) return static_cast<unsigned char>(entity.character);
    return 0;
}

void append(std::string& text, char32_t c) {
    const auto add = [&](char32_t byte) { text += static_cast<char>(byte); };
    const auto tail = [&](int shift) { add(0x80 | ((c >> shift) & 0x3F)); };
    if (c < 0x80) {
        add(c);
    } else if (c < 0x800) {
        add(0xC0 | c >> 6), tail(0);
    } else if (c < 0x10000) {
        add(0xE0 | c >> 12), tail(6), tail(0);
    } else {
        add(0xF0 | c >> 18), tail(12), tail(6), tail(0);
    }
}

void append(std::u16string& text, char32_t c) {
    if (c >= 0x10000) {
        text += static_cast<char16_t>(0xD7C0 + (c >> 10));
        c = 0xDC00 | (c & 0x3FF);
    }
    text += static_cast<char16_t>(c);
}

// Copies text, giving each name between "&" and ";" to replace(name, result), which appends what it stands
// for; where it returns false, the reference stays as it stands.
template <typename Char, typename Replace>
std::basic_string<Char> unescape(std::basic_string_view<Char> text, Replace replace) {
    constexpr Char ends[] = {'&', ';', 0};
    std::basic_string<Char> result;
    std::size_t copied = 0;
    std::size_t ampersand = text.find(Char{'&'});
    while (ampersand != text.npos) {
        const std::size_t end = std::min(text.find_first_of(ends, ampersand + 1), text.size());
        if (end < text.size() && text[end] == Char{';'}) {
            result.append(text, copied, ampersand - copied);
            const bool known = replace(text.substr(ampersand + 1, end - ampersand - 1), result);
            copied = known ? end + 1 : ampersand;
        }
        ampersand = text.find(Char{'&'}, end);
    }
    result.append(text, copied);
    return result;
}

}  // namespace

char32_t xmlReferencedCharacter(std::string_view name) {
    const bool hexadecimal = name.starts_with("#x");
    if (!name.starts_with('#') || name.size() == (hexadecimal ? 2u : 1u)) return 0;
    char32_t character = 0;
    for (const char c : name.substr(hexadecimal ? 2 : 1)) {
        const char lower = static_cast<char>(c | 0x20);
        unsigned digit = 16;
        if (c >= '0' && c <= '9') digit = static_cast<unsigned>(c - '0');
        if (hexadecimal && lower >= 'a' && lower <= 'f') digit = static_cast<unsigned>(lower - 'a') + 10;
        if (digit == 16) return 0;
        character = std::min<char32_t>(character * (hexadecimal ? 16 : 10) + digit, 0x110000);
    }
    return isXmlCharacter(character) ? character : 0;
}

std::string unescapeXml(std::string_view text) {
    return unescape(text, [](std::string_view name, std::string& result) {
        const char32_t character = characterOf(name);
        if (character) append(result, character);
        return character != 0;
    });
}

}  // namespace kestrel::detail

CFStringRef CFXMLCreateStringByUnescapingEntities(CFAllocatorRef allocator, CFStringRef text,
                                                  CFDictionaryRef entities) {
    if (!text) return nullptr;
    const auto units = kestrel::detail::unitsOf(text);
    const std::u16string escaped(units.begin(), units.end());
    const auto replace = [&](std::u16string_view name, std::u16string& result) {
        if (entities) {
            const std::vector<UniChar> copy(name.begin(), name.end());
            CFStringRef key =
                CFStringCreateWithCharacters(allocator, copy.data(), static_cast<CFIndex>(copy.size()));
            const auto* value = static_cast<CFStringRef>(CFDictionaryGetValue(entities, key));
            CFRelease(key);
            const auto replacement = kestrel::detail::unitsOf(value);
            result.append(replacement.begin(), replacement.end());
            if (value) return true;
        }
        std::string ascii;
        for (const char16_t unit : name) ascii += unit < 0x80 ? static_cast<char>(unit) : '?';
        const char32_t character = kestrel::detail::characterOf(ascii);
        if (character) kestrel::detail::append(result, character);
        return character != 0;
    };
    const std::u16string plain = kestrel::detail::unescape(std::u16string_view(escaped), replace);
    const std::vector<UniChar> result(plain.begin(), plain.end());
    return CFStringCreateWithCharacters(allocator, result.data(), static_cast<CFIndex>(result.size()));
}
