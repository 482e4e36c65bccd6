// kestrel/platform/detail/AsciiRun.h - runs of ASCII, the fast part of every text conversion.
#pragma once

#include <kestrel/platform/CFBase.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kestrel::detail {

// Sixteen or more at a time: a few words tell whether all of them is ASCII, and the compiler makes vectors of
// a copy whose length is a multiple of that. Strings are short: choosing vectors at run time would cost more
// than it gains.
inline constexpr std::size_t asciiBlock = 16;

/// The bits of characters side by side that none of them has in ASCII.
template <typename From>
inline constexpr std::uint64_t notAscii = sizeof(From) == 1 ? 0x8080'8080'8080'8080 : 0xFF80'FF80'FF80'FF80;

/// The bits of count characters, a multiple of asciiBlock, side by side in one word.
template <std::size_t count = asciiBlock, typename From>
std::uint64_t bitsOf(const From* from) noexcept {
    std::uint64_t all = 0;
    for (std::size_t i = 0; i < count; i += sizeof all / sizeof(From)) {
        std::uint64_t word;
        std::memcpy(&word, from + i, sizeof word);
        all |= word;
    }
    return all;
}

template <typename From>
bool isAscii(const From* text, std::size_t count) noexcept {
    for (; count >= asciiBlock; text += asciiBlock, count -= asciiBlock)
        if (bitsOf(text) & notAscii<From>) return false;
    while (count > 0 && *text < 0x80) ++text, --count;
    return count == 0;
}

/// Copies whole blocks, up to the first one that is not all below 0x80; returns how many characters.
template <typename From, typename To>
std::size_t copyAsciiBlocks(const From* __restrict from, std::size_t count, To* __restrict to) noexcept {
    constexpr std::size_t many = 4 * asciiBlock;
    std::size_t done = 0;
    while (count - done >= many && !(bitsOf<many>(from + done) & notAscii<From>)) done += many;
    while (count - done >= asciiBlock && !(bitsOf(from + done) & notAscii<From>)) done += asciiBlock;
    for (std::size_t i = 0; i < done / asciiBlock * asciiBlock; ++i) to[i] = static_cast<To>(from[i]);
    return done;
}

template <typename From, typename To>
std::size_t copyAscii(const From* from, std::size_t count, To* to) noexcept {
    std::size_t done = copyAsciiBlocks(from, count, to);
    for (; done < count && from[done] < 0x80; ++done) to[done] = static_cast<To>(from[done]);
    return done;
}

/// Widens bytes into units up to the first byte from 0x80 up; returns how many were widened.
inline std::size_t widenAscii(const std::uint8_t* bytes, std::size_t count, UniChar* units) noexcept {
    return copyAscii(bytes, count, units);
}
/// Narrows units into bytes up to the first unit from 0x80 up; returns how many were narrowed.
inline std::size_t narrowAscii(const UniChar* units, std::size_t count, std::uint8_t* bytes) noexcept {
    return copyAscii(units, count, bytes);
}

}  // namespace kestrel::detail
