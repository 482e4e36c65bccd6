// kestrel/platform/detail/AsciiRun.h - runs of ASCII, the fast part of every text conversion.
#pragma once

#include <kestrel/platform/CFBase.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kestrel::detail {

// Sixteen at a time: a few words tell whether all of them is ASCII, and the copy of a fixed length is one the
// compiler makes of vectors. Strings are short: choosing vectors at run time would cost more than it gains.
inline constexpr std::size_t asciiBlock = 16;

/// Copies a block when all of it is below 0x80. By way of arrays of its own, since the compiler must fear
/// elsewhere that the one end is written over the other.
template <typename From, typename To>
bool copyAsciiBlock(const From* from, To* to) {
    constexpr std::uint64_t notAscii = sizeof(From) == 1 ? 0x8080'8080'8080'8080 : 0xFF80'FF80'FF80'FF80;
    constexpr std::size_t unitsAWord = sizeof(std::uint64_t) / sizeof(From);
    std::uint64_t all = 0;
    for (std::size_t i = 0; i < asciiBlock; i += unitsAWord) {
        std::uint64_t word;
        std::memcpy(&word, from + i, sizeof word);
        all |= word;
    }
    if (all & notAscii) return false;
    std::array<From, asciiBlock> in;
    std::memcpy(in.data(), from, sizeof in);
    std::array<To, asciiBlock> out;
    for (std::size_t i = 0; i < asciiBlock; ++i) out[i] = static_cast<To>(in[i]);
    std::memcpy(to, out.data(), sizeof out);
    return true;
}

template <typename From, typename To>
std::size_t copyAscii(const From* from, std::size_t count, To* to) {
    std::size_t done = 0;
    while (done + asciiBlock <= count && copyAsciiBlock(from + done, to + done)) done += asciiBlock;
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
