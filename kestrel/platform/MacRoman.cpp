#include <kestrel/platform/detail/MacRoman.h>

#include <kestrel/platform/detail/AsciiRun.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

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

/// All 256 bytes, and the way back for the units below directUnits: those of all bytes but the few rare ones,
/// the logo and two ligatures. A 0 is no character, except for the unit 0.
constexpr std::size_t directUnits = 0x4000;
struct Tables {
    std::array<UniChar, 256> units{};
    std::array<std::uint8_t, directUnits> bytes{};

    constexpr Tables() {
        for (std::size_t byte = 0; byte < units.size(); ++byte) {
            units[byte] = byte < 0x80 ? static_cast<UniChar>(byte) : upperHalf[byte - 0x80];
            if (units[byte] < directUnits) bytes[units[byte]] = static_cast<std::uint8_t>(byte);
        }
    }
};
constexpr Tables tables;

// Not part of their callers, whose way through pure ASCII stays short.

[[gnu::noinline]] void decodeMixed(const std::uint8_t* __restrict bytes, std::size_t count,
                                   UniChar* __restrict units) noexcept {
    std::size_t i = 0;
    while (count - i >= asciiBlock) {
        if (bitsOf(bytes + i) & notAscii<std::uint8_t>)
            for (const std::size_t end = i + asciiBlock; i < end; ++i) units[i] = tables.units[bytes[i]];
        else
            i += copyAsciiBlocks(bytes + i, count - i, units + i);
    }
    for (; i < count; ++i) units[i] = tables.units[bytes[i]];
}

/// Encodes unit by unit.
std::size_t encodeEach(const UniChar* units, std::size_t count, std::uint8_t* bytes) noexcept {
    for (std::size_t i = 0; i < count; ++i) {
        const auto byte = units[i] < directUnits
                              ? std::ptrdiff_t{tables.bytes[units[i]]}
                              : (std::ranges::find(tables.units, units[i]) - tables.units.begin()) % 256;
        if (byte == 0 && units[i] != 0) return i;
        bytes[i] = static_cast<std::uint8_t>(byte);
    }
    return count;
}

[[gnu::noinline]] std::size_t encodeMixed(const UniChar* units, std::size_t count,
                                          std::uint8_t* bytes) noexcept {
    constexpr std::uint64_t notDirect = 0xC000'C000'C000'C000;
    std::size_t i = 0;
    while (count - i >= asciiBlock) {
        const std::uint64_t bits = bitsOf(units + i);
        if (bits & notDirect) break;
        if (bits & notAscii<UniChar>)
            for (const std::size_t end = i + asciiBlock; i < end; ++i) bytes[i] = tables.bytes[units[i]];
        else
            i += copyAsciiBlocks(units + i, count - i, bytes + i);
    }
    // A 0 stands for a zero unit, or for one that cannot be held: that is looked at closely.
    if (std::memchr(bytes, 0, i)) i = 0;
    return i + encodeEach(units + i, count - i, bytes + i);
}

}  // namespace

void utf16FromMacRoman(const std::uint8_t* bytes, std::size_t count, UniChar* units) noexcept {
    const std::size_t i = copyAsciiBlocks(bytes, count, units);
    if (i < count) decodeMixed(bytes + i, count - i, units + i);
}

std::size_t macRomanFromUtf16(const UniChar* units, std::size_t count, std::uint8_t* bytes) noexcept {
    const std::size_t i = copyAsciiBlocks(units, count, bytes);
    return i < count ? i + encodeMixed(units + i, count - i, bytes + i) : count;
}

}  // namespace kestrel::detail
