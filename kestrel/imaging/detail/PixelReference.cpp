// The plain twins of the kernels in ByteKernels.cpp, DepthKernels.cpp and YUVKernels.cpp.
#include <kestrel/imaging/detail/ByteKernels.h>
#include <kestrel/imaging/detail/DepthKernels.h>
#include <kestrel/imaging/detail/PixelNumbers.h>
#include <kestrel/imaging/detail/YUVKernels.h>

#include <algorithm>
#include <cstring>

namespace kestrel::detail::reference {
namespace {

std::uint8_t clamped(int value) { return static_cast<std::uint8_t>(std::clamp(value, 0, 255)); }

/// Shifts of negative values are arithmetic.
void storeARGB(std::uint8_t* to, int y, int u, int v) {
    const int c = y - 16, d = u - 128, e = v - 128;
    to[0] = 255;
    to[1] = clamped((298 * c + 409 * e) >> 8);
    to[2] = clamped((298 * c - 100 * d - 208 * e) >> 8);
    to[3] = clamped((298 * c + 516 * d) >> 8);
}

std::uint8_t luma(const std::uint8_t* argb) {
    return static_cast<std::uint8_t>(((66 * argb[1] + 129 * argb[2] + 25 * argb[3]) >> 8) + 16);
}

template <typename To, typename From>
void convert(To* to, const From* from, std::size_t components) {
    for (std::size_t i = 0; i < components; ++i) store(to[i], toNumber(from[i]));
}

template <typename From>
void convertPixels(std::uint8_t* to, const From* from, std::size_t pixels) {
    for (; pixels; --pixels, to += 4, from += 4)
        for (std::size_t i = 0; i < 4; ++i) store(to[(i + 1) % 4], toNumber(from[i]));
}

}  // namespace

void shuffleBytes(std::uint8_t* to, const std::uint8_t* from, std::size_t bytes, const BytePattern& order) {
    for (std::size_t start = 0; start < bytes; start += order.size()) {
        const std::size_t count = std::min(order.size(), bytes - start);
        std::uint8_t block[16] = {};
        std::memcpy(block, from + start, count);
        for (std::size_t i = 0; i < count; ++i) to[start + i] = block[order[i]];
    }
}

void maskBytes(std::uint8_t* bytes, std::size_t count, const BytePattern& keep, const BytePattern& flip) {
    for (std::size_t i = 0; i < count; ++i)
        bytes[i] = static_cast<std::uint8_t>((bytes[i] & keep[i % 16]) ^ flip[i % 16]);
}

void samplePixels(std::uint32_t* to, const std::uint32_t* from, std::size_t /*available*/,
                  const std::uint32_t* columns, std::size_t count) {
    for (std::size_t x = 0; x < count; ++x) to[x] = from[columns[x]];
}

void convert422ToARGB(std::uint8_t* to, const std::uint8_t* from, std::size_t pixels) {
    for (std::size_t x = 0; x < pixels; ++x) {
        const std::uint8_t* pair = from + x / 2 * 4;
        storeARGB(to + 4 * x, pair[x % 2 * 2 + 1], pair[0], pair[2]);
    }
}

void convertARGBTo422(std::uint8_t* to, const std::uint8_t* from, std::size_t pairs) {
    for (; pairs; --pairs, to += 4, from += 8) {
        const int r = (from[1] + from[5]) >> 1, g = (from[2] + from[6]) >> 1, b = (from[3] + from[7]) >> 1;
        to[0] = static_cast<std::uint8_t>(((-38 * r - 74 * g + 112 * b) >> 8) + 128);
        to[1] = luma(from);
        to[2] = static_cast<std::uint8_t>(((112 * r - 94 * g - 18 * b) >> 8) + 128);
        to[3] = luma(from + 4);
    }
}

void convertDepth(std::uint16_t* to, const std::uint8_t* from, std::size_t n) { convert(to, from, n); }
void convertDepth(std::uint16_t* to, const std::uint16_t* from, std::size_t n) { convert(to, from, n); }
void convertDepth(std::uint16_t* to, const half* from, std::size_t n) { convert(to, from, n); }
void convertDepth(std::uint16_t* to, const float* from, std::size_t n) { convert(to, from, n); }
void convertDepth(float* to, const std::uint8_t* from, std::size_t n) { convert(to, from, n); }
void convertDepth(float* to, const std::uint16_t* from, std::size_t n) { convert(to, from, n); }
void convertDepth(float* to, const half* from, std::size_t n) { convert(to, from, n); }
void convertDepth(float* to, const float* from, std::size_t n) { convert(to, from, n); }
void convertToARGB(std::uint8_t* to, const std::uint16_t* from, std::size_t n) { convertPixels(to, from, n); }
void convertToARGB(std::uint8_t* to, const half* from, std::size_t n) { convertPixels(to, from, n); }
void convertToARGB(std::uint8_t* to, const float* from, std::size_t n) { convertPixels(to, from, n); }

}  // namespace kestrel::detail::reference
