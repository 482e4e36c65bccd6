// kestrel/geometry/KSVector2.h - 2 coordinates.
#pragma once

/// A point or a direction in the plane.
///
/// Units      the caller's own; T is double, float or int.
/// Ownership  a plain value: trivially copyable, no memory of its own; arrays of it are arrays of T.
/// Threads    as any plain value.
/// Example
///     KSVector2<double> p(3, 4);
///     matrix.transform(p);
template <class T>
struct KSVector2 {
    T x{}, y{};

    constexpr KSVector2() noexcept = default;  ///< all zero
    constexpr KSVector2(T xValue, T yValue) noexcept : x(xValue), y(yValue) {}

    /// Exact; a NaN equals nothing.
    friend constexpr bool operator==(const KSVector2&, const KSVector2&) noexcept = default;
};
