// kestrel/platform/detail/XmlNames.h - which characters make a name, a blank, a public identifier.
#pragma once

#include <array>
#include <cstdint>

namespace kestrel::detail {

enum XmlByteKind : std::uint8_t {
    xmlNameStart = 1,
    xmlName = 2,      ///< inside a name
    xmlBlank = 4,     ///< production [3]
    xmlPublicId = 8,  ///< production [13], without the quotes around it
    xmlHexDigit = 16,
};

/// The kinds of each ASCII byte; bytes from 0x80 up have none here.
inline constexpr auto xmlByteKinds = [] {
    std::array<std::uint8_t, 256> kinds{};
    const auto add = [&](const char* bytes, int kind) {
        for (; *bytes; ++bytes) {
            auto& entry = kinds[static_cast<unsigned char>(*bytes)];
            entry = static_cast<std::uint8_t>(entry | kind);
        }
    };
    add("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz", xmlNameStart | xmlName | xmlPublicId);
    add(":_", xmlNameStart | xmlName | xmlPublicId);
    add("-.0123456789", xmlName | xmlPublicId);
    add("'()+,/=?;!*#@$% \r\n", xmlPublicId);
    add(" \t\r\n", xmlBlank);
    add("0123456789abcdefABCDEF", xmlHexDigit);
    return kinds;
}();

constexpr bool isXmlByte(char c, int kinds) {
    return (xmlByteKinds[static_cast<unsigned char>(c)] & kinds) != 0;
}

/// NameStartChar, production [4], above ASCII.
constexpr bool isXmlNameStart(char32_t c) {
    struct Range {
        char32_t first, last;
    };
    constexpr Range ranges[] = {
        {0xC0, 0xD6},     {0xD8, 0xF6},     {0xF8, 0x2FF},    {0x370, 0x37D},
        {0x37F, 0x1FFF},  {0x200C, 0x200D}, {0x2070, 0x218F}, {0x2C00, 0x2FEF},
        {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF},
    };
    for (const Range& range : ranges)
        if (c <= range.last) return c >= range.first;
    return false;
}

/// NameChar, production [4a], above ASCII.
constexpr bool isXmlNameCharacter(char32_t c) {
    return isXmlNameStart(c) || c == 0xB7 || (c >= 0x300 && c <= 0x36F) || c == 0x203F || c == 0x2040;
}

}  // namespace kestrel::detail
