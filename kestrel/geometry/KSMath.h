// kestrel/geometry/KSMath.h - an orientation test, a byte swap, and two special functions.
#pragma once

#include <kestrel/platform/Export.h>

#include <bit>
#include <cstdint>

/// Numeric functions that the standard library lacks or that must give the same values everywhere.
///
/// Threads    every function depends on its argument alone.
/// Errors     none; NaN goes through the arithmetic.
/// Source     gammaln after Lanczos, "A Precision Approximation of the Gamma Function", 1964; erf through the
///            incomplete gamma function, by its series and by its continued fraction (Lentz's method).
/// Example
///     bool left = KSMath::areCounterClockWise(0, 0, 1, 0, 1, 1);  // true
class KESTREL_API KSMath {
public:
    /// Whether the way from point 0 by point 1 to point 2 turns left where y grows upwards. Collinear points
    /// count as such only if point 2 lies on the same ray from point 0, strictly beyond point 1. NaN counts
    /// unless one of these comparisons holds without it.
    static constexpr bool areCounterClockWise(float x0, float y0, float x1, float y1, float x2,
                                              float y2) noexcept {
        const float dx1 = x1 - x0, dy1 = y1 - y0, dx2 = x2 - x0, dy2 = y2 - y0;
        const float a = dx1 * dy2, b = dy1 * dx2;
        if (a > b) return true;
        if (b > a) return false;
        return !(dx1 * dx2 < 0 || dy1 * dy2 < 0 || dx1 * dx1 + dy1 * dy1 >= dx2 * dx2 + dy2 * dy2);
    }

    /// The value whose four bytes stand in the opposite order.
    static constexpr float byteSwap(float value) noexcept {
        const std::uint32_t bits = std::bit_cast<std::uint32_t>(value);
        return std::bit_cast<float>(bits >> 24 | (bits >> 8 & 0xFF00u) | (bits & 0xFF00u) << 8 | bits << 24);
    }

    /// The natural logarithm of the gamma function, for x > 0; relative error about 2e-10.
    static double gammaln(double x);

    /// The error function; error about 3e-7, and the sign of x, that of -0 included. Squares are formed, so
    /// an infinite x (or one beyond 1.3e154) gives NaN, and one below 1.5e-162 gives 0.
    static double erf(double x);
};
