#include <kestrel/platform/detail/AsciiRun.h>

#include <cstring>

namespace kestrel::detail {

namespace {

// Sixteen at a time: a few words tell whether all of them is ASCII, and the copy of a fixed length is one the
// compiler makes of vectors. Strings are short: choosing vectors at run time would cost more than it gains.
constexpr std::size_t block = 16;

/// True when no bit of mask is set in any 64-bit word of the block.
template <typename Unit>
bool isClear(const Unit* start, std::uint64_t mask) {
    std::uint64_t words[block * sizeof(Unit) / sizeof(std::uint64_t)];
    std::memcpy(words, start, sizeof words);
    std::uint64_t all = 0;
    for (const std::uint64_t word : words) all |= word;
    return (all & mask) == 0;
}

template <typename From, typename To>
std::size_t copyAscii(const From* from, std::size_t count, To* to, std::uint64_t notAscii) {
    std::size_t done = 0;
    for (; done + block <= count && isClear(from + done, notAscii); done += block)
        for (std::size_t i = 0; i < block; ++i) to[done + i] = static_cast<To>(from[done + i]);
    for (; done < count && from[done] < 0x80; ++done) to[done] = static_cast<To>(from[done]);
    return done;
}

}  // namespace

std::size_t widenAscii(const std::uint8_t* bytes, std::size_t count, UniChar* units) noexcept {
    return copyAscii(bytes, count, units, 0x8080'8080'8080'8080);
}

std::size_t narrowAscii(const UniChar* units, std::size_t count, std::uint8_t* bytes) noexcept {
    return copyAscii(units, count, bytes, 0xFF80'FF80'FF80'FF80);
}

}  // namespace kestrel::detail
