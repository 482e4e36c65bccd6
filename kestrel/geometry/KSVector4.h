// kestrel/geometry/KSVector4.h - 4 coordinates.
#pragma once

/// A point in space with its weight, an axis, or a quaternion (x, y, z, w).
///
/// Units      the caller's own; T is double, float or int.
/// Ownership  a plain value: trivially copyable, no memory of its own; arrays of it are arrays of T.
/// Threads    as any plain value.
/// Example
///     KSVector4<double> p(3, 4, 5, 1);
///     p = matrix * p;
template <class T>
struct KSVector4 {
    T x{}, y{}, z{}, w{};

    constexpr KSVector4() noexcept = default;  ///< all zero
    constexpr KSVector4(T xValue, T yValue, T zValue, T wValue) noexcept
        : x(xValue), y(yValue), z(zValue), w(wValue) {}

    /// Exact; a NaN equals nothing.
    friend constexpr bool operator==(const KSVector4&, const KSVector4&) noexcept = default;
};
