// kestrel/geometry/KSVector3.h - 3 coordinates.
#pragma once

/// A point or a direction in space.
///
/// Units      the caller's own; T is double, float or int.
/// Ownership  a plain value: trivially copyable, no memory of its own; arrays of it are arrays of T.
/// Threads    as any plain value.
/// Example
///     KSVector3<double> p(3, 4, 5);
///     matrix.transform(p);
template <class T>
struct KSVector3 {
    T x{}, y{}, z{};

    constexpr KSVector3() noexcept = default;  ///< all zero
    constexpr KSVector3(T xValue, T yValue, T zValue) noexcept : x(xValue), y(yValue), z(zValue) {}

    /// Exact; a NaN equals nothing.
    friend constexpr bool operator==(const KSVector3&, const KSVector3&) noexcept = default;
};
