// UTF-16 and UTF-8: runs of ASCII go by vectors, everything else character by character.
#include <kestrel/platform/detail/AsciiRun.h>
#include <kestrel/platform/detail/TextEncoding.h>

#include <cstdint>
#include <cstring>

namespace kestrel::detail {

std::size_t utf8FromUtf16(std::span<const UniChar> units, char* bytes) noexcept {
    const UniChar* unit = units.data();
    const UniChar* const end = unit + units.size();
    auto* const start = reinterpret_cast<std::uint8_t*>(bytes);
    std::uint8_t* byte = start;
    while (unit != end) {
        const unsigned first = *unit;
        if (first < 0x80) {
            const std::size_t run = narrowAscii(unit, static_cast<std::size_t>(end - unit), byte);
            unit += run;
            byte += run;
            continue;
        }
        ++unit;
        if (first < 0x800) {
            *byte++ = static_cast<std::uint8_t>(0xC0 | first >> 6);
        } else {
            unsigned character = first;
            if (first >= 0xD800 && first < 0xE000) {
                if (first < 0xDC00 && unit != end && *unit >= 0xDC00 && *unit < 0xE000) {
                    character = 0x10000 + ((first - 0xD800) << 10) + (*unit++ - 0xDC00u);
                    *byte++ = static_cast<std::uint8_t>(0xF0 | character >> 18);
                    *byte++ = static_cast<std::uint8_t>(0x80 | (character >> 12 & 0x3F));
                    *byte++ = static_cast<std::uint8_t>(0x80 | (character >> 6 & 0x3F));
                    *byte++ = static_cast<std::uint8_t>(0x80 | (character & 0x3F));
                    continue;
                }
                character = 0xFFFD;
            }
            *byte++ = static_cast<std::uint8_t>(0xE0 | character >> 12);
            *byte++ = static_cast<std::uint8_t>(0x80 | (character >> 6 & 0x3F));
            *byte++ = static_cast<std::uint8_t>(0x80 | (character & 0x3F));
            continue;
        }
        *byte++ = static_cast<std::uint8_t>(0x80 | (first & 0x3F));
    }
    return static_cast<std::size_t>(byte - start);
}

std::size_t utf16FromUtf8(std::span<const char> bytes, UniChar* units) noexcept {
    const auto* byte = reinterpret_cast<const std::uint8_t*>(bytes.data());
    const auto* const end = byte + bytes.size();
    UniChar* unit = units;
    while (byte != end) {
        const unsigned first = *byte;
        if (first < 0x80) {
            const std::size_t run = widenAscii(byte, static_cast<std::size_t>(end - byte), unit);
            byte += run;
            unit += run;
            continue;
        }
        // The well-formed sequences of the Unicode standard, table 3-7: the second byte's range depends on
        // the first, so that no character has two forms and no surrogate has any.
        const std::size_t left = static_cast<std::size_t>(end - byte);
        const auto trails = [&](std::size_t i) { return (byte[i] & 0xC0) == 0x80; };
        if (first >= 0xC2 && first < 0xE0 && left >= 2 && trails(1)) {
            *unit++ = static_cast<UniChar>((first & 0x1F) << 6 | (byte[1] & 0x3F));
            byte += 2;
        } else if (first >= 0xE0 && first < 0xF0 && left >= 3 && trails(1) && trails(2)) {
            const unsigned character = (first & 0x0F) << 12 | (byte[1] & 0x3Fu) << 6 | (byte[2] & 0x3Fu);
            if (character < 0x800 || (character >= 0xD800 && character < 0xE000)) return invalidText;
            *unit++ = static_cast<UniChar>(character);
            byte += 3;
        } else if (first >= 0xF0 && first < 0xF5 && left >= 4 && trails(1) && trails(2) && trails(3)) {
            const unsigned character =
                (first & 0x07) << 18 | (byte[1] & 0x3Fu) << 12 | (byte[2] & 0x3Fu) << 6 | (byte[3] & 0x3Fu);
            if (character < 0x10000 || character > 0x10FFFF) return invalidText;
            *unit++ = static_cast<UniChar>(0xD7C0 + (character >> 10));
            *unit++ = static_cast<UniChar>(0xDC00 | (character & 0x3FF));
            byte += 4;
        } else {
            return invalidText;
        }
    }
    return static_cast<std::size_t>(unit - units);
}

std::string utf8Of(std::span<const UniChar> units) {
    std::string text(units.size() * maximumUtf8PerUnit, '\0');
    text.resize(utf8FromUtf16(units, text.data()));
    return text;
}

}  // namespace kestrel::detail
