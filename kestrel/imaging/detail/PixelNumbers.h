// kestrel/imaging/detail/PixelNumbers.h - components to numbers and back, as KSBitmap's comment states them.
//
// This is the definition; the vector kernels give the same bits by shorter ways.
#pragma once

#include <Imath/half.h>

#include <cmath>
#include <cstdint>

namespace kestrel::detail {

/// The exact constants; their products with a component are formed in double.
inline constexpr double unit8 = 0.00392156862745098;
inline constexpr double unit16 = 1.5259021896696422e-5;

inline float toNumber(std::uint8_t v) { return static_cast<float>(v * unit8); }
inline float toNumber(std::uint16_t v) { return static_cast<float>(v * unit16); }
inline float toNumber(half v) { return v; }
inline float toNumber(float v) { return v; }

/// floor(x * S + 0.5 + 1e-7) clamped to 0..S; the product is formed by the caller, in float or double.
inline unsigned roundedProduct(double product, double scale) {
    const double value = std::floor(product + 0.5 + 1e-7);
    return value > 0 ? static_cast<unsigned>(value < scale ? value : scale) : 0;  // NaN becomes 0
}

/// The rounding store.
inline void store(std::uint8_t& v, float f) {
    v = static_cast<std::uint8_t>(roundedProduct(f * 255.0f, 255));
}
inline void store(std::uint16_t& v, float f) {
    v = static_cast<std::uint16_t>(roundedProduct(f * 65535.0f, 65535));
}
inline void store(half& v, float f) { v = half(f); }
inline void store(float& v, float f) { v = f; }

/// The truncating store, of a number that is clamped to 0..1.
inline std::uint8_t truncated(float f) {
    return static_cast<std::uint8_t>(f > 0 ? (f < 1 ? f : 1) * 255.0 : 0);
}

}  // namespace kestrel::detail
