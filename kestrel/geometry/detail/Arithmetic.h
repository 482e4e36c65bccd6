// kestrel/geometry/detail/Arithmetic.h - the few rounding rules that the geometry classes share.
//
// Every product is rounded before anything is added to it. A compiler that fused the two (the default of
// some, once the processor can) would give the inline functions other bits than the library's own code gives,
// and an inverse to a singular matrix. Therefore whoever links Kestrel::kestrel is compiled with
// -ffp-contract=off.
#pragma once

#include <limits>

namespace kestrel::detail {

/// Sums of products, from left to right.
constexpr double dot(double a, double b, double x, double y) noexcept { return a * x + b * y; }
constexpr double dot(double a, double b, double c, double x, double y, double z) noexcept {
    return dot(a, b, x, y) + c * z;
}
constexpr double dot(double a, double b, double c, double d, double x, double y, double z,
                     double w) noexcept {
    return dot(a, b, c, x, y, z) + d * w;
}

/// Entries of a matrix count as equal when they differ by less than this.
inline constexpr double matrixTolerance = 1e-7;

constexpr bool isNear(double a, double b) noexcept {
    const double difference = a - b;
    return difference < matrixTolerance && difference > -matrixTolerance;  // false for NaN
}

/// Whether 1 / v is neither infinite nor denormal nor NaN.
constexpr bool hasReciprocal(double v) noexcept {
    const double size = __builtin_fabs(v);
    return size >= 0x1p-1022 && size <= 0x1p1022;
}

/// floor(v + 0.5 + 1e-7): the pixel that a coordinate rounds to. Beyond the range of int the nearest limit,
/// for NaN 0.
constexpr int roundToPixel(double v) noexcept {
    const double shifted = v + 0.5 + 1e-7;
    if (shifted != shifted) return 0;
    if (shifted >= std::numeric_limits<int>::max()) return std::numeric_limits<int>::max();
    if (shifted <= std::numeric_limits<int>::min()) return std::numeric_limits<int>::min();
    const int truncated = static_cast<int>(shifted);
    return truncated > shifted ? truncated - 1 : truncated;
}

}  // namespace kestrel::detail
