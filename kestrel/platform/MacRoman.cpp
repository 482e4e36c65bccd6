#include <kestrel/platform/detail/MacRoman.h>

#include <kestrel/platform/detail/AsciiRun.h>

#include <array>

namespace kestrel::detail {

namespace {

// The characters of the bytes 0x80 to 0xFF; the lower half is ASCII. The table of the character set's
// maker in its form since 1998, with the euro sign at 0xDB and the private-use logo at 0xF0.
constexpr auto upperHalf = std::to_array<UniChar>({
    0x00C4, 0x00C5, 0x00C7, 0x00C9, 0x00D1, 0x00D6, 0x00DC, 0x00E1,  // 80
    0x00E0, 0x00E2, 0x00E4, 0x00E3, 0x00E5, 0x00E7, 0x00E9, 0x00E8,  // 88
    0x00EA, 0x00EB, 0x00ED, 0x00EC, 0x00EE, 0x00EF, 0x00F1, 0x00F3,  // 90
    0x00F2, 0x00F4, 0x00F6, 0x00F5, 0x00FA, 0x00F9, 0x00FB, 0x00FC,  // 98
    0x2020, 0x00B0, 0x00A2, 0x00A3, 0x00A7, 0x2022, 0x00B6, 0x00DF,  // A0
    0x00AE, 0x00A9, 0x2122, 0x00B4, 0x00A8, 0x2260, 0x00C6, 0x00D8,  // A8
    0x221E, 0x00B1, 0x2264, 0x2265, 0x00A5, 0x00B5, 0x2202, 0x2211,  // B0
    0x220F, 0x03C0, 0x222B, 0x00AA, 0x00BA, 0x03A9, 0x00E6, 0x00F8,  // B8
    0x00BF, 0x00A1, 0x00AC, 0x221A, 0x0192, 0x2248, 0x2206, 0x00AB,  // C0
    0x00BB, 0x2026, 0x00A0, 0x00C0, 0x00C3, 0x00D5, 0x0152, 0x0153,  // C8
    0x2013, 0x2014, 0x201C, 0x201D, 0x2018, 0x2019, 0x00F7, 0x25CA,  // D0
    0x00FF, 0x0178, 0x2044, 0x20AC, 0x2039, 0x203A, 0xFB01, 0xFB02,  // D8
    0x2021, 0x00B7, 0x201A, 0x201E, 0x2030, 0x00C2, 0x00CA, 0x00C1,  // E0
    0x00CB, 0x00C8, 0x00CD, 0x00CE, 0x00CF, 0x00CC, 0x00D3, 0x00D4,  // E8
    0xF8FF, 0x00D2, 0x00DA, 0x00DB, 0x00D9, 0x0131, 0x02C6, 0x02DC,  // F0
    0x00AF, 0x02D8, 0x02D9, 0x02DA, 0x00B8, 0x02DD, 0x02DB, 0x02C7,  // F8
});
static_assert(upperHalf.size() == 128);

/// All 256 bytes, and the way back in two steps: the high byte of a unit chooses a page, the low byte the
/// character in it. Page 0 is empty; a 0 in a page is no character, except for the unit 0.
struct Tables {
    std::array<UniChar, 256> units{};
    std::array<std::uint8_t, 256> pageOf{};
    std::array<std::array<std::uint8_t, 256>, 14> pages{};

    constexpr Tables() {
        std::uint8_t used = 0;
        for (std::size_t byte = 0; byte < units.size(); ++byte) {
            units[byte] = byte < 0x80 ? static_cast<UniChar>(byte) : upperHalf[byte - 0x80];
            std::uint8_t& page = pageOf[units[byte] >> 8];
            if (page == 0) page = ++used;
            pages[page][units[byte] & 0xFF] = static_cast<std::uint8_t>(byte);
        }
    }
};
constexpr Tables tables;

}  // namespace

void utf16FromMacRoman(const std::uint8_t* bytes, std::size_t count, UniChar* units) noexcept {
    for (std::size_t i = widenAscii(bytes, count, units); i < count; ++i) units[i] = tables.units[bytes[i]];
}

std::size_t macRomanFromUtf16(const UniChar* units, std::size_t count, std::uint8_t* bytes) noexcept {
    std::size_t i = narrowAscii(units, count, bytes);
    for (; i < count; ++i) {
        const unsigned unit = units[i];
        const std::uint8_t byte = tables.pages[tables.pageOf[unit >> 8]][unit & 0xFF];
        if (byte == 0 && unit != 0) break;
        bytes[i] = byte;
    }
    return i;
}

}  // namespace kestrel::detail
