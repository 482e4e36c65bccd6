// kestrel/imaging/detail/AlphaKernels.h - colours multiplied by alpha, and divided by it.
#pragma once

#include <Imath/half.h>

#include <cstddef>
#include <cstdint>

namespace kestrel::detail {

struct Matte {
    float red, green, blue;
};

#define KESTREL_ALPHA_KERNELS                                                                            \
    /* colour = floor(colour * alpha / 255), alpha being byte 0 or byte 3 of a pixel */                  \
    void preMultiply8(std::uint8_t* pixels, std::size_t count, bool alphaFirst);                         \
    /* KSBitmap::unPreMult */                                                                            \
    void unPreMultiplyTruncated8(std::uint8_t* pixels, std::size_t count);                               \
    /* KSBitmap::copyWithUnPreMult; may be in place */                                                   \
    void unPreMultiplyCopy8(std::uint8_t* to, const std::uint8_t* from, std::size_t count, Matte matte); \
    /* KSBitmap::unpremultiply */                                                                        \
    void unpremultiplyRGBA8(std::uint8_t* pixels, std::size_t count, Matte matte);                       \
    void unpremultiplyARGB8(std::uint8_t* pixels, std::size_t count, Matte matte);                       \
    void unpremultiplyRGBA16(std::uint16_t* pixels, std::size_t count, Matte matte);                     \
    void unpremultiplyRGBAHalf(half* pixels, std::size_t count, Matte matte);                            \
    void unpremultiplyRGBAFloat(float* pixels, std::size_t count, Matte matte);                          \
    /* alpha = 1 - alpha, in float, alpha being component 3 */                                           \
    void invertAlphaHalf(half* pixels, std::size_t count);                                               \
    void invertAlphaFloat(float* pixels, std::size_t count);

// The kernels, and their plain twins, which define the right bytes.
KESTREL_ALPHA_KERNELS
namespace reference {
KESTREL_ALPHA_KERNELS
}
#undef KESTREL_ALPHA_KERNELS

}  // namespace kestrel::detail
