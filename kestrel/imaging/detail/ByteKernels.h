// kestrel/imaging/detail/ByteKernels.h - moving and masking bytes, mostly in a pattern that repeats every 16.
//
// All changes of channel order, all copies of alpha into colours and all writes of a constant alpha are
// shuffleBytes or maskBytes. Every pixel size (1, 2, 4, 8, 16 bytes) divides the pattern.
#pragma once

#include <kestrel/imaging/detail/Stores.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace kestrel::detail {

using BytePattern = std::array<std::uint8_t, 16>;

/// to[16 k + i] = from[16 k + order[i]]. In place when to == from, otherwise without overlap. The order must
/// stay within a pixel, so that a last incomplete block of whole pixels is complete in itself.
void shuffleBytes(std::uint8_t* to, const std::uint8_t* from, std::size_t bytes, const BytePattern& order,
                  Stores stores = Stores::cached);
/// to[i] = from[i], in place or without overlap.
void copyBytes(std::uint8_t* to, const std::uint8_t* from, std::size_t bytes, Stores stores);
/// bytes[16 k + i] = (bytes[16 k + i] & keep[i]) ^ flip[i].
void maskBytes(std::uint8_t* bytes, std::size_t count, const BytePattern& keep, const BytePattern& flip);

/// to[x] = from[columns[x]], 32-bit pixels; columns do not fall and lie below available, the pixels at from.
void samplePixels(std::uint32_t* to, const std::uint32_t* from, std::size_t available,
                  const std::uint32_t* columns, std::size_t count);

/// to[x] = from[2 x] and to[x] = from[x / 2], pixels of 32 or 64 bits.
void halvePixels(std::uint32_t* to, const std::uint32_t* from, std::size_t count);
void halvePixels(std::uint64_t* to, const std::uint64_t* from, std::size_t count);
void doublePixels(std::uint32_t* to, const std::uint32_t* from, std::size_t count);
void doublePixels(std::uint64_t* to, const std::uint64_t* from, std::size_t count);

namespace reference {
void samplePixels(std::uint32_t* to, const std::uint32_t* from, std::size_t available,
                  const std::uint32_t* columns, std::size_t count);
template <typename Pixel>
void halvePixels(Pixel* to, const Pixel* from, std::size_t count) {
    for (std::size_t x = 0; x < count; ++x) to[x] = from[2 * x];
}
template <typename Pixel>
void doublePixels(Pixel* to, const Pixel* from, std::size_t count) {
    for (std::size_t x = 0; x < count; ++x) to[x] = from[x / 2];
}
void shuffleBytes(std::uint8_t* to, const std::uint8_t* from, std::size_t bytes, const BytePattern& order);
void maskBytes(std::uint8_t* bytes, std::size_t count, const BytePattern& keep, const BytePattern& flip);
}  // namespace reference

/// The order of bytes in which component k of each pixel comes from component source[k].
template <typename Component, std::size_t channels>
constexpr BytePattern componentOrder(const std::array<unsigned, channels>& source) {
    constexpr std::size_t size = sizeof(Component), pixel = size * channels;
    BytePattern order{};
    for (std::size_t i = 0; i < order.size(); ++i)
        order[i] = static_cast<std::uint8_t>(i - i % pixel + source[i % pixel / size] * size + i % size);
    return order;
}

/// The bytes of one component of each pixel, repeated; 0 elsewhere.
template <typename Component>
constexpr BytePattern componentBytes(std::size_t channels, std::size_t index, std::uint64_t bits) {
    const std::size_t pixel = sizeof(Component) * channels;
    BytePattern pattern{};
    for (std::size_t i = 0; i < pattern.size(); ++i)
        if (i % pixel / sizeof(Component) == index)
            pattern[i] = static_cast<std::uint8_t>(bits >> (8 * (i % sizeof(Component))));  // little-endian
    return pattern;
}

constexpr BytePattern complement(BytePattern pattern) {
    for (auto& byte : pattern) byte = static_cast<std::uint8_t>(~byte);
    return pattern;
}

}  // namespace kestrel::detail
