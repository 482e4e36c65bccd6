// The plain twins of the kernels in AlphaKernels.cpp.
#include <kestrel/imaging/detail/AlphaKernels.h>
#include <kestrel/imaging/detail/PixelNumbers.h>

namespace kestrel::detail::reference {
namespace {

/// Colours from component firstColor on; alpha is the one that is left.
template <std::size_t firstColor, typename Component>
void unpremultiply(Component* pixel, std::size_t count, Matte matte) {
    const float color[3] = {matte.red, matte.green, matte.blue};
    for (; count; --count, pixel += 4) {
        const float a = toNumber(pixel[firstColor ? 0 : 3]);
        for (std::size_t i = 0; i < 3; ++i) {
            Component& c = pixel[firstColor + i];
            store(c, a > 0 ? (toNumber(c) - color[i] * (1 - a)) * (1 / a) : color[i]);
        }
    }
}

template <typename Component>
void invertAlpha(Component* pixel, std::size_t count) {
    for (; count; --count, pixel += 4) store(pixel[3], 1.0f - toNumber(pixel[3]));
}

}  // namespace

void preMultiply8(std::uint8_t* pixel, std::size_t count, bool alphaFirst) {
    for (; count; --count, pixel += 4) {
        const unsigned a = pixel[alphaFirst ? 0 : 3];
        std::uint8_t* color = pixel + (alphaFirst ? 1 : 0);
        for (std::size_t i = 0; i < 3; ++i) color[i] = static_cast<std::uint8_t>(color[i] * a / 255);
    }
}

void unPreMultiplyTruncated8(std::uint8_t* pixel, std::size_t count) {
    for (; count; --count, pixel += 4) {
        const float a = toNumber(pixel[0]);
        if (!(a > 0)) continue;
        const auto inverse = static_cast<float>(1 / static_cast<double>(a));
        for (std::size_t i = 1; i < 4; ++i) pixel[i] = truncated(toNumber(pixel[i]) * inverse);
    }
}

void unPreMultiplyCopy8(std::uint8_t* to, const std::uint8_t* from, std::size_t count, Matte matte) {
    const float color[3] = {matte.red, matte.green, matte.blue};
    for (; count; --count, to += 4, from += 4) {
        const float a = toNumber(from[0]);
        to[0] = truncated(a);
        for (std::size_t i = 0; i < 3; ++i)
            to[i + 1] = truncated(a > 0 ? (toNumber(from[i + 1]) - color[i] * (1 - a)) / a : color[i]);
    }
}

void unpremultiplyRGBA8(std::uint8_t* pixels, std::size_t count, Matte matte) {
    unpremultiply<0>(pixels, count, matte);
}

void unpremultiplyARGB8(std::uint8_t* pixels, std::size_t count, Matte matte) {
    unpremultiply<1>(pixels, count, matte);
}

void unpremultiplyRGBA16(std::uint16_t* pixels, std::size_t count, Matte matte) {
    unpremultiply<0>(pixels, count, matte);
}

void unpremultiplyRGBAHalf(half* pixels, std::size_t count, Matte matte) {
    unpremultiply<0>(pixels, count, matte);
}

void unpremultiplyRGBAFloat(float* pixels, std::size_t count, Matte matte) {
    unpremultiply<0>(pixels, count, matte);
}

void invertAlphaHalf(half* pixels, std::size_t count) { invertAlpha(pixels, count); }

void invertAlphaFloat(float* pixels, std::size_t count) { invertAlpha(pixels, count); }

}  // namespace kestrel::detail::reference
