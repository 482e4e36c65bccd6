// kestrel/geometry/KSMatrix33.h - the transform of the plane.
#pragma once

#include <kestrel/geometry/KSVector2.h>
#include <kestrel/geometry/KSVector3.h>
#include <kestrel/geometry/detail/Arithmetic.h>
#include <kestrel/geometry/detail/GuardedTangent.h>
#include <kestrel/geometry/detail/Pair.h>
#include <kestrel/geometry/detail/Rotation.h>
#include <kestrel/platform/Export.h>

#include <span>
#include <type_traits>

/// A 3x3 matrix of doubles, for affine and projective transforms of points in the plane.
///
/// Shape      row-major; a point is the column (x, y, 1), so the third column is the translation and the
///            elementary operations (translate, scale, rotateZ, shear) act after what the matrix held before.
/// Units      angles in radians, lengths the caller's own.
/// Ownership  a plain value, trivially copyable.
/// Threads    as any plain value.
/// Errors     invert() answers false. NaN and infinities go through the arithmetic; where a result is an int,
///            the nearest limit stands for what int cannot hold, and 0 for NaN.
/// Example
///     KSMatrix33 m;
///     m.setTransformation(960, 540, 0.1, 2, 2, 0, 0, layerWidth / 2, layerHeight / 2, 1);
///     m.transform(corners);  // every point of a span, in place
class KESTREL_API KSMatrix33 {
public:
    double m00 = 1, m01 = 0, m02 = 0;
    double m10 = 0, m11 = 1, m12 = 0;
    double m20 = 0, m21 = 0, m22 = 1;

    constexpr KSMatrix33() noexcept = default;  ///< the identity
    /// The nine entries, row by row.
    constexpr KSMatrix33(double a00, double a01, double a02, double a10, double a11, double a12, double a20,
                         double a21, double a22) noexcept
        : m00(a00), m01(a01), m02(a02), m10(a10), m11(a11), m12(a12), m20(a20), m21(a21), m22(a22) {}

    constexpr KSMatrix33& identity() noexcept { return *this = KSMatrix33(); }
    /// All nine entries 0.
    constexpr void clear() noexcept { *this = KSMatrix33(0, 0, 0, 0, 0, 0, 0, 0, 0); }
    constexpr void transpose() noexcept { *this = KSMatrix33(m00, m10, m20, m01, m11, m21, m02, m12, m22); }

    constexpr double determinant() const noexcept {
        return m00 * (m11 * m22 - m12 * m21) + m01 * (m12 * m20 - m22 * m10) + m02 * (m21 * m10 - m11 * m20);
    }
    /// Every cofactor, transposed, divided by the determinant. False, and nothing changes, if the determinant
    /// is exactly 0; there is no tolerance.
    constexpr bool invert() noexcept;

    constexpr void translate(double tx, double ty) noexcept {
        m00 += tx * m20, m01 += tx * m21, m02 += tx * m22;
        m10 += ty * m20, m11 += ty * m21, m12 += ty * m22;
    }
    constexpr void scale(double sx, double sy) noexcept {
        m00 *= sx, m01 *= sx, m02 *= sx;
        m10 *= sy, m11 *= sy, m12 *= sy;
    }
    void rotateZ(double angle);
    /// Shears by the tangents of two angles, both from the rows as they were. The tangent of a right angle is
    /// taken as that of an angle 0.3 degrees less, about 190.98; an angle of exactly 0 gives 0.
    void shear(double ax, double ay);
    /// Does nothing: there is no axis to turn about in the plane. Kept for callers that treat both sizes of
    /// matrix alike.
    constexpr void rotate(KSVector3<double> /*axis*/, double /*angle*/, bool /*normalize*/) noexcept {}

    constexpr KSMatrix33& operator*=(const KSMatrix33& b) noexcept { return *this = *this * b; }
    constexpr KSMatrix33 operator*(const KSMatrix33& b) const noexcept;

    /// True if all entries lie within 1e-7 of each other, so this is not transitive; NaN is unequal.
    constexpr bool operator==(const KSMatrix33& b) const noexcept {
        return kestrel::detail::isNear(m00, b.m00) && kestrel::detail::isNear(m01, b.m01) &&
               kestrel::detail::isNear(m02, b.m02) && kestrel::detail::isNear(m10, b.m10) &&
               kestrel::detail::isNear(m11, b.m11) && kestrel::detail::isNear(m12, b.m12) &&
               kestrel::detail::isNear(m20, b.m20) && kestrel::detail::isNear(m21, b.m21) &&
               kestrel::detail::isNear(m22, b.m22);
    }
    constexpr bool isIdentity() const noexcept { return *this == KSMatrix33(); }

    /// Affine: the third row is ignored.
    constexpr void transform(KSVector2<double>& point) const noexcept { transform(&point.x, &point.y); }
    constexpr void transform(double* x, double* y) const noexcept {
        const double px = *x, py = *y;
        *x = kestrel::detail::dot(m00, m01, px, py) + m02;
        *y = kestrel::detail::dot(m10, m11, px, py) + m12;
    }
    /// The full product.
    constexpr void transform(KSVector3<double>& v) const noexcept {
        v = {kestrel::detail::dot(m00, m01, m02, v.x, v.y, v.z),
             kestrel::detail::dot(m10, m11, m12, v.x, v.y, v.z),
             kestrel::detail::dot(m20, m21, m22, v.x, v.y, v.z)};
    }
    /// Affine, then each coordinate as floor(v + 0.5 + 1e-7).
    constexpr void transform(double x, double y, int* ix, int* iy) const noexcept {
        transform(&x, &y);
        *ix = kestrel::detail::roundToPixel(x);
        *iy = kestrel::detail::roundToPixel(y);
    }

    /// Whole arrays, in vectors of whatever width the processor has; bit for bit what the functions for one
    /// point give. The copying forms transform as many as both spans hold; from and to may be the same array
    /// but must not overlap otherwise.
    void transform(std::span<KSVector2<double>> points) const noexcept;
    void transform(std::span<const KSVector2<double>> from, std::span<KSVector2<double>> to) const noexcept;
    void transform(std::span<KSVector3<double>> vectors) const noexcept;
    void transform(std::span<const KSVector3<double>> from, std::span<KSVector3<double>> to) const noexcept;

    /// Projective, before the division: x', y' and w' for the point (*x, *y). What *w held is not read.
    constexpr void perspectiveTransform(double* x, double* y, double* w) const noexcept {
        KSVector3<double> v(*x, *y, 1);
        transform(v);
        *x = v.x, *y = v.y, *w = v.z;
    }
    /// Projective: x' / w' and y' / w', without a check of w'.
    constexpr void perspectiveTransform(double* x, double* y) const noexcept {
        double w = 1;
        perspectiveTransform(x, y, &w);
        *x /= w, *y /= w;
    }
    /// Projective, then each coordinate as floor(v + 0.5 + 1e-7).
    constexpr void perspectiveTransform(double x, double y, int* ix, int* iy) const noexcept {
        perspectiveTransform(&x, &y);
        *ix = kestrel::detail::roundToPixel(x);
        *iy = kestrel::detail::roundToPixel(y);
    }

    /// Three lines through KSPrint, one a row: "[%f] [%f] [%f]\n".
    void print() const;

    /// The transform of a layer: M = T(tx, ty) D R Sh S D^-1 T(-px, -py) with D = diag(1, aspect), R the
    /// rotation, Sh the shear by the tangents of shearX and shearY (as shear() takes them) and S the scale.
    /// The pivot (px, py) lands on (tx, ty). An aspect of 0 divides by zero without a check.
    void setTransformation(double tx, double ty, double rotation, double sx, double sy, double shearX,
                           double shearY, double px, double py, double aspect);
    /// The inverse mapping, built directly; the same arguments. Exact for an aspect of 1. Deliberate: for
    /// others the second row carries the aspect on m11 and not on m10. Zero scales, and shears whose tangents
    /// have the product 1, divide by zero without a check.
    void setInvTransformation(double tx, double ty, double rotation, double sx, double sy, double shearX,
                              double shearY, double px, double py, double aspect);
    /// Position, rotation, scale and shear (the factor along x, over sy) of an affine matrix; null pointers
    /// are skipped. A first column of exactly 0 gives sx = 0 and shear = 0.
    void decompose(double* tx, double* ty, double* rotation, double* sx, double* sy, double* shear) const;

private:
    template <class Pair>
    constexpr KSMatrix33 timesBy(const KSMatrix33& b) const noexcept;
    constexpr KSMatrix33 over(double f) const noexcept {
        return {m00 / f, m01 / f, m02 / f, m10 / f, m11 / f, m12 / f, m20 / f, m21 / f, m22 / f};
    }
};

constexpr bool KSMatrix33::invert() noexcept {
    const double c00 = m11 * m22 - m21 * m12, c01 = m12 * m20 - m22 * m10, c02 = m21 * m10 - m11 * m20;
    const double det = m00 * c00 + m01 * c01 + m02 * c02;
    if (det == 0) return false;
    const KSMatrix33 cofactors(c00, (m02 * m21 - m01 * m22), (m01 * m12 - m02 * m11),  //
                               c01, (m00 * m22 - m02 * m20), (m02 * m10 - m00 * m12),  //
                               c02, (m01 * m20 - m00 * m21), (m00 * m11 - m01 * m10));
    *this = cofactors.over(det);
    return true;
}

template <class Pair>
constexpr KSMatrix33 KSMatrix33::timesBy(const KSMatrix33& b) const noexcept {
    const Pair low0(b.m00, b.m01), low1(b.m10, b.m11), low2(b.m20, b.m21);
    KSMatrix33 result(*this);
    const auto row = [&](double a0, double a1, double a2, double& m0, double& m1, double& m2) {
        // Stored at once: compilers would shuffle the halves and m2 into other pairs first.
        (Pair(a0, a0) * low0 + Pair(a1, a1) * low1 + Pair(a2, a2) * low2).store(m0, m1);
        m2 = kestrel::detail::dot(a0, a1, a2, b.m02, b.m12, b.m22);
    };
    row(m00, m01, m02, result.m00, result.m01, result.m02);
    row(m10, m11, m12, result.m10, result.m11, result.m12);
    row(m20, m21, m22, result.m20, result.m21, result.m22);
    return result;
}

constexpr KSMatrix33 KSMatrix33::operator*(const KSMatrix33& b) const noexcept {
    return std::is_constant_evaluated() ? timesBy<kestrel::detail::PlainPair>(b)
                                        : timesBy<kestrel::detail::VectorPair>(b);
}

inline void KSMatrix33::setTransformation(double tx, double ty, double rotation, double sx, double sy,
                                          double shearX, double shearY, double px, double py, double aspect) {
    const auto [c, s] = kestrel::detail::Rotation(rotation);
    const double kx = kestrel::detail::guardedTangent(shearX), ky = kestrel::detail::guardedTangent(shearY);
    // Rotation and shear. Without shear the products are zeros, which change nothing (0 - s is never -0).
    double r00 = c, r01 = 0 - s, r10 = s, r11 = c;
    if (kx != 0 || ky != 0) r00 = c - s * ky, r01 = c * kx - s, r10 = c * ky + s, r11 = c + s * kx;
    m00 = r00 * sx;
    m01 = r01 * sy;
    if (aspect != 1) m01 /= aspect;
    m02 = tx - px * m00 - py * m01;
    m10 = aspect * r10 * sx;
    m11 = r11 * sy;
    m12 = ty - px * m10 - py * m11;
    m20 = m21 = 0;
    m22 = 1;
}
