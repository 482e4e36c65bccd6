// kestrel/geometry/detail/Arithmetic.h - the few rounding rules that the geometry classes share.
#pragma once

#include <limits>

namespace kestrel::detail {

/// a * b, rounded before anything is added to it. A caller's compiler that fuses a multiply and an add
/// (the default of some, once the processor can) would otherwise give inline functions other bits than the
/// library's own vector code gives. T is double, or a vector of doubles.
template <class T>
constexpr T product(T a, T b) noexcept {
#if defined(__clang__)
#pragma clang fp contract(off)
    return a * b;
#else
    return __builtin_assoc_barrier(a * b);
#endif
}

/// Sums of products, from left to right.
constexpr double dot(double a, double b, double x, double y) noexcept {
    return product(a, x) + product(b, y);
}
constexpr double dot(double a, double b, double c, double x, double y, double z) noexcept {
    return dot(a, b, x, y) + product(c, z);
}
constexpr double dot(double a, double b, double c, double d, double x, double y, double z,
                     double w) noexcept {
    return dot(a, b, c, x, y, z) + product(d, w);
}

/// Entries of a matrix count as equal when they differ by less than this.
inline constexpr double matrixTolerance = 1e-7;

constexpr bool isNear(double a, double b) noexcept {
    const double difference = a - b;
    return difference < matrixTolerance && difference > -matrixTolerance;  // false for NaN
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
