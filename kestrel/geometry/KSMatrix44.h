// kestrel/geometry/KSMatrix44.h - the transform of space.
#pragma once

#include <kestrel/geometry/KSVector2.h>
#include <kestrel/geometry/KSVector3.h>
#include <kestrel/geometry/KSVector4.h>
#include <kestrel/geometry/detail/Arithmetic.h>
#include <kestrel/geometry/detail/GuardedTangent.h>
#include <kestrel/geometry/detail/Pair.h>
#include <kestrel/geometry/detail/Rotation.h>
#include <kestrel/platform/Export.h>

#include <functional>
#include <span>
#include <type_traits>

/// A 4x4 matrix of doubles, for affine and projective transforms of points in space.
///
/// Shape      row-major; a point is the column (x, y, z, 1), so the fourth column is the translation, the
///            fourth row the projective part, and the elementary operations act after what the matrix held
///            before (except rotate about an axis vector, which acts before it).
/// Units      angles in radians, lengths the caller's own.
/// Ownership  a plain value, trivially copyable.
/// Threads    as any plain value.
/// Errors     invert() and getTransformation() answer false. NaN and infinities go through the arithmetic;
///            where a result is an int, the nearest limit stands for what int cannot hold, and 0 for NaN.
/// Source     the inverse by Laplace's expansion in 2x2 minors; getTransformation after Thomas,
///            "Decomposing a Matrix into Simple Transformations", 1991.
/// Example
///     KSMatrix44 m(0, 0, 500, 0, 0.5, 0, 1, 1, 1, 0, 0, 960, 540, 0, 1);
///     m.transform(points);  // every point of a span, in place
class KESTREL_API KSMatrix44 {
public:
    enum axis { X_AXIS = 0, Y_AXIS = 1, Z_AXIS = 2 };

    double m00 = 1, m01 = 0, m02 = 0, m03 = 0;
    double m10 = 0, m11 = 1, m12 = 0, m13 = 0;
    double m20 = 0, m21 = 0, m22 = 1, m23 = 0;
    double m30 = 0, m31 = 0, m32 = 0, m33 = 1;

    constexpr KSMatrix44() noexcept = default;  ///< the identity
    /// The sixteen entries, row by row.
    constexpr KSMatrix44(double a00, double a01, double a02, double a03, double a10, double a11, double a12,
                         double a13, double a20, double a21, double a22, double a23, double a30, double a31,
                         double a32, double a33) noexcept
        : m00(a00),
          m01(a01),
          m02(a02),
          m03(a03),
          m10(a10),
          m11(a11),
          m12(a12),
          m13(a13),  //
          m20(a20),
          m21(a21),
          m22(a22),
          m23(a23),
          m30(a30),
          m31(a31),
          m32(a32),
          m33(a33) {}
    /// The transform of a layer, as setTransformation.
    KSMatrix44(double tx, double ty, double tz, double rx, double ry, double rz, double sx, double sy,
               double sz, double shearX, double shearY, double px, double py, double pz, double aspect) {
        setTransformation(tx, ty, tz, rx, ry, rz, sx, sy, sz, shearX, shearY, px, py, pz, aspect);
    }

    constexpr KSMatrix44& identity() noexcept { return *this = KSMatrix44(); }
    /// All sixteen entries 0.
    constexpr void clear() noexcept { *this = KSMatrix44(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0); }
    constexpr void transpose() noexcept {
        *this = KSMatrix44(m00, m10, m20, m30, m01, m11, m21, m31, m02, m12, m22, m32, m03, m13, m23, m33);
    }

    /// By the cofactors of the first row.
    constexpr double determinant() const noexcept;
    /// Every cofactor, transposed, times the reciprocal of the determinant; divided by the determinant where
    /// its reciprocal would not be a normal number. False, and nothing changes, if the determinant is exactly
    /// 0; there is no tolerance. Always inline: a call, which keeps the matrix in memory, takes half as long
    /// again.
    [[gnu::always_inline]] constexpr bool invert() noexcept;

    /// An amount of exactly 0 is skipped, which shows where the fourth row is not finite.
    constexpr void translate(double tx, double ty, double tz) noexcept {
        if (tx != 0) m00 += tx * m30, m01 += tx * m31, m02 += tx * m32, m03 += tx * m33;
        if (ty != 0) m10 += ty * m30, m11 += ty * m31, m12 += ty * m32, m13 += ty * m33;
        if (tz != 0) m20 += tz * m30, m21 += tz * m31, m22 += tz * m32, m23 += tz * m33;
    }
    constexpr void scale(double sx, double sy, double sz) noexcept {
        m00 *= sx, m01 *= sx, m02 *= sx, m03 *= sx;  // a factor of exactly 1 changes nothing
        m10 *= sy, m11 *= sy, m12 *= sy, m13 *= sy;
        m20 *= sz, m21 *= sz, m22 *= sz, m23 *= sz;
    }
    /// Turns about a coordinate axis, after what the matrix held before. An angle of exactly 0, or an axis
    /// that is none of the three, does nothing.
    void rotate(double angle, axis about);
    /// Turns the upper three rows, seen as vectors of their first three entries, about z, then y, then x; the
    /// fourth column and row stay. Deliberate: the second row is turned twice.
    void rotate(double ax, double ay, double az);
    /// Turns by angle about a vector, before what the matrix holds. The vector must have length 1, or
    /// normalize makes it so; its fourth component then counts in the length (a null vector gives NaN).
    void rotate(const KSVector4<double>& about, double angle, bool normalize);
    /// The rotation of a quaternion of any length, and nothing else; a null quaternion gives the identity.
    void setRotationFromQuaternion(const KSVector4<double>& q);
    /// Shears x and y by the tangents of two angles, both from the rows as they were; see KSMatrix33::shear.
    void shear(double ax, double ay);
    /// A perspective frustum. Nothing changes if two opposite planes are the same. Deliberate: the first two
    /// diagonal entries are 2 / (right - left) and 2 / (top - bottom), without the near distance.
    void setFrustum(double left, double right, double bottom, double top, double near, double far);

    constexpr KSMatrix44& operator*=(const KSMatrix44& b) noexcept { return *this = *this * b; }
    constexpr KSMatrix44 operator*(const KSMatrix44& b) const noexcept;
    constexpr KSVector4<double> operator*(KSVector4<double> v) const noexcept {
        transform(v);
        return v;
    }

    /// True if all entries lie within 1e-7 of each other, so this is not transitive; NaN is unequal.
    constexpr bool operator==(const KSMatrix44& b) const noexcept {
        return kestrel::detail::isNear(m00, b.m00) && kestrel::detail::isNear(m01, b.m01) &&
               kestrel::detail::isNear(m02, b.m02) && kestrel::detail::isNear(m03, b.m03) &&
               kestrel::detail::isNear(m10, b.m10) && kestrel::detail::isNear(m11, b.m11) &&
               kestrel::detail::isNear(m12, b.m12) && kestrel::detail::isNear(m13, b.m13) &&
               kestrel::detail::isNear(m20, b.m20) && kestrel::detail::isNear(m21, b.m21) &&
               kestrel::detail::isNear(m22, b.m22) && kestrel::detail::isNear(m23, b.m23) &&
               kestrel::detail::isNear(m30, b.m30) && kestrel::detail::isNear(m31, b.m31) &&
               kestrel::detail::isNear(m32, b.m32) && kestrel::detail::isNear(m33, b.m33);
    }
    constexpr bool isIdentity() const noexcept { return *this == KSMatrix44(); }

    /// Affine: the fourth row is ignored, and z is 0.
    constexpr void transform(KSVector2<double>& point) const noexcept { transform(&point.x, &point.y); }
    constexpr void transform(double* x, double* y) const noexcept {
        const double px = *x, py = *y;
        *x = kestrel::detail::dot(m00, m01, px, py) + m03;
        *y = kestrel::detail::dot(m10, m11, px, py) + m13;
    }
    /// Affine: the fourth row is ignored.
    constexpr void transform(KSVector3<double>& point) const noexcept {
        transform(&point.x, &point.y, &point.z);
    }
    constexpr void transform(double* x, double* y, double* z) const noexcept {
        const double px = *x, py = *y, pz = *z;
        *x = kestrel::detail::dot(m00, m01, m02, px, py, pz) + m03;
        *y = kestrel::detail::dot(m10, m11, m12, px, py, pz) + m13;
        *z = kestrel::detail::dot(m20, m21, m22, px, py, pz) + m23;
    }
    /// The full product.
    constexpr void transform(KSVector4<double>& v) const noexcept {
        const auto row = [&v](double a, double b, double c, double d) {
            return kestrel::detail::dot(a, b, c, d, v.x, v.y, v.z, v.w);
        };
        v = {row(m00, m01, m02, m03), row(m10, m11, m12, m13), row(m20, m21, m22, m23),
             row(m30, m31, m32, m33)};
    }
    /// Affine, then each coordinate as floor(v + 0.5 + 1e-7).
    constexpr void transform(double x, double y, double z, int* ix, int* iy, int* iz) const noexcept {
        transform(&x, &y, &z);
        *ix = kestrel::detail::roundToPixel(x);
        *iy = kestrel::detail::roundToPixel(y);
        *iz = kestrel::detail::roundToPixel(z);
    }

    /// Whole arrays, in vectors of whatever width the processor has; bit for bit what the functions for one
    /// point give. The copying forms transform as many as both spans hold; from and to may be the same array
    /// but must not overlap otherwise.
    void transform(std::span<KSVector2<double>> points) const noexcept;
    void transform(std::span<const KSVector2<double>> from, std::span<KSVector2<double>> to) const noexcept;
    void transform(std::span<KSVector3<double>> points) const noexcept;
    void transform(std::span<const KSVector3<double>> from, std::span<KSVector3<double>> to) const noexcept;
    void transform(std::span<KSVector4<double>> vectors) const noexcept;
    void transform(std::span<const KSVector4<double>> from, std::span<KSVector4<double>> to) const noexcept;

    /// Four lines through KSPrint, one a row: "[%f] [%f] [%f] [%f]\n".
    void print() const;

    /// The transform of a layer: scale, shear by the tangents of shearX and shearY (as shear() takes them),
    /// then the rotations about x, y and z; the pivot (px, py, pz) lands on (tx, ty, tz). Deliberate: the
    /// aspect divides m01 and multiplies m10 only. An aspect of 0 divides by zero without a check.
    void setTransformation(double tx, double ty, double tz, double rx, double ry, double rz, double sx,
                           double sy, double sz, double shearX, double shearY, double px, double py,
                           double pz, double aspect);
    /// The inverse mapping, built directly; the same arguments. It is the inverse without shear and with an
    /// aspect of 1. Deliberate: with shear or another aspect it differs, as 1 / (1 - kx ky) enters the first
    /// row twice and the aspect stands on single terms. Zero scales divide by zero without a check.
    void setInvTransformation(double tx, double ty, double tz, double rx, double ry, double rz, double sx,
                              double sy, double sz, double shearX, double shearY, double px, double py,
                              double pz, double aspect);
    /// Position, angles, scales and two shears. False, and nothing is written, if m33 is exactly 0 or the
    /// matrix without its perspective part is exactly singular. Null pointers are skipped. A left-handed
    /// basis gives negative scales. Deliberate: this reads the position from the fourth row and takes the
    /// fourth column for the perspective part, so pass the transpose of what setTransformation makes to get
    /// position, scales and shears. The three angles are then those of the opposite rotation; without shear
    /// and with equal scales the matrix itself gives the right ones.
    bool getTransformation(double* tx, double* ty, double* tz, double* rx, double* ry, double* rz, double* sx,
                           double* sy, double* sz, double* shearXZ, double* shearYZ) const;

private:
    /// A row by its columns: 0 and 1, 2 and 3, and each of them twice.
    template <class Pair>
    struct Row {
        Pair low, high, all0, all1, all2, all3;
        constexpr Row(double a0, double a1, double a2, double a3) noexcept
            : low(a0, a1),
              high(a2, a3),
              all0(firsts(low, low)),
              all1(seconds(low, low)),
              all2(firsts(high, high)),
              all3(seconds(high, high)) {}
    };

    /// The 2x2 minors of two rows by their columns, in the pairs that cofactors want.
    template <class Pair>
    struct Minors {
        Pair n02n12, n03n13, n02n03, n12n13, n01, n23;
        constexpr Minors(const Row<Pair>& p, const Row<Pair>& q) noexcept
            : Minors(p.low * q.all2 - p.all2 * q.low, p.low * q.all3 - p.all3 * q.low,
                     firsts(p.low, p.high) * seconds(q.low, q.high) -
                         seconds(p.low, p.high) * firsts(q.low, q.high)) {}

    private:
        constexpr Minors(const Pair& with2, const Pair& with3, const Pair& n01n23) noexcept
            : n02n12(with2),
              n03n13(with3),
              n02n03(firsts(with2, with3)),
              n12n13(seconds(with2, with3)),
              n01(firsts(n01n23, n01n23)),
              n23(seconds(n01n23, n01n23)) {}
    };

    /// The 3x3 minors of a row and two more by the column left out: what cofactors are but for the sign.
    template <class Pair>
    struct Cofactors {
        Pair k1k0, k3k2;
        constexpr Cofactors(const Row<Pair>& r, const Minors<Pair>& m) noexcept
            : k1k0(r.low * m.n23 - r.all2 * m.n03n13 + r.all3 * m.n02n12),
              k3k2(r.all0 * m.n12n13 - r.all1 * m.n02n03 + r.high * m.n01) {}
        /// Of the matrix whose first row, r, is missing here.
        constexpr double determinant(const Row<Pair>& r) const noexcept {
            const Pair halves =
                firsts(r.low, r.high) * seconds(k1k0, k3k2) - seconds(r.low, r.high) * firsts(k1k0, k3k2);
            return halves.first() + halves.second();
        }
    };

    template <class Pair>
    constexpr double determinantBy() const noexcept;
    template <class Pair>
    [[gnu::always_inline]] constexpr bool invertBy() noexcept;
    template <class Pair>
    constexpr KSMatrix44 timesBy(const KSMatrix44& b) const noexcept;
};

template <class Pair>
constexpr double KSMatrix44::determinantBy() const noexcept {
    const Row<Pair> r0(m00, m01, m02, m03), r1(m10, m11, m12, m13);
    const Row<Pair> r2(m20, m21, m22, m23), r3(m30, m31, m32, m33);
    return Cofactors<Pair>(r1, Minors<Pair>(r2, r3)).determinant(r0);
}

constexpr double KSMatrix44::determinant() const noexcept {
    return std::is_constant_evaluated() ? determinantBy<kestrel::detail::PlainPair>()
                                        : determinantBy<kestrel::detail::VectorPair>();
}

template <class Pair>
constexpr bool KSMatrix44::invertBy() noexcept {
    // One column each: rows 0 and 2, rows 1 and 3. Of both the 2x2 minors by their columns, so those of rows
    // 0 and 1 come first, those of rows 2 and 3 second.
    const Pair p0(m00, m20), p1(m01, m21), p2(m02, m22), p3(m03, m23);
    const Pair q0(m10, m30), q1(m11, m31), q2(m12, m32), q3(m13, m33);
    const Pair n01 = p0 * q1 - p1 * q0, n02 = p0 * q2 - p2 * q0, n03 = p0 * q3 - p3 * q0;
    const Pair n12 = p1 * q2 - p2 * q1, n13 = p1 * q3 - p3 * q1, n23 = p2 * q3 - p3 * q2;
    // The 3x3 minors by the column left out, of two rows a with the two rows whose 2x2 minors half takes.
    // They grow minor by minor: taken one after the other, they cost a sixth more.
    struct Minors3 {
        Pair by0, by1, by2, by3;
    };
    const auto minors3 = [&](const Pair& a0, const Pair& a1, const Pair& a2, const Pair& a3, auto half) {
        Pair n = half(n23);
        Pair k0 = a1 * n, k1 = a0 * n;
        n = half(n13), k0 = k0 - a2 * n;
        Pair k2 = a0 * n;
        n = half(n12), k0 = k0 + a3 * n;
        Pair k3 = a0 * n;
        n = half(n03), k1 = k1 - a2 * n, k2 = k2 - a1 * n;
        n = half(n02), k1 = k1 + a3 * n, k3 = k3 - a1 * n;
        n = half(n01), k2 = k2 + a3 * n, k3 = k3 + a2 * n;
        return Minors3{k0, k1, k2, k3};
    };
    const auto upper = [](const Pair& n) { return firsts(n, n); };
    const auto lower = [](const Pair& n) { return seconds(n, n); };

    const Minors3 k = minors3(Pair(m10, m00), Pair(m11, m01), Pair(m12, m02), Pair(m13, m03), lower);
    const double det =
        (m00 * k.by0.first() - m01 * k.by1.first()) + (m02 * k.by2.first() - m03 * k.by3.first());
    const bool divide = !kestrel::detail::hasReciprocal(det);
    if (divide && det == 0) return false;
    const Minors3 l = minors3(Pair(m30, m20), Pair(m31, m21), Pair(m32, m22), Pair(m33, m23), upper);
    const auto scaled = [&](const Pair& even, const Pair& odd, auto by) {  // with the signs of the cofactors
        const Pair i00 = by(k.by0, even), i02 = by(l.by0, even), i10 = by(k.by1, odd), i12 = by(l.by1, odd);
        const Pair i20 = by(k.by2, even), i22 = by(l.by2, even), i30 = by(k.by3, odd), i32 = by(l.by3, odd);
        return KSMatrix44(i00.first(), i00.second(), i02.first(), i02.second(),  //
                          i10.first(), i10.second(), i12.first(), i12.second(),  //
                          i20.first(), i20.second(), i22.first(), i22.second(),  //
                          i30.first(), i30.second(), i32.first(), i32.second());
    };
    if (divide) [[unlikely]] {
        *this = scaled(Pair(det, -det), Pair(-det, det), std::divides<Pair>());
    } else {
        const double r = 1 / det;
        *this = scaled(Pair(r, -r), Pair(-r, r), std::multiplies<Pair>());
    }
    return true;
}

constexpr bool KSMatrix44::invert() noexcept {
    return std::is_constant_evaluated() ? invertBy<kestrel::detail::PlainPair>()
                                        : invertBy<kestrel::detail::VectorPair>();
}

template <class Pair>
constexpr KSMatrix44 KSMatrix44::timesBy(const KSMatrix44& b) const noexcept {
    const Pair low0(b.m00, b.m01), low1(b.m10, b.m11), low2(b.m20, b.m21), low3(b.m30, b.m31);
    const Pair high0(b.m02, b.m03), high1(b.m12, b.m13), high2(b.m22, b.m23), high3(b.m32, b.m33);
    struct Halves {
        Pair low, high;
    };
    const auto row = [&](double a0, double a1, double a2, double a3) {
        const Pair x(a0, a0), y(a1, a1), z(a2, a2), w(a3, a3);
        return Halves{x * low0 + y * low1 + z * low2 + w * low3,
                      x * high0 + y * high1 + z * high2 + w * high3};
    };
    const Halves r0 = row(m00, m01, m02, m03), r1 = row(m10, m11, m12, m13);
    const Halves r2 = row(m20, m21, m22, m23), r3 = row(m30, m31, m32, m33);
    return {r0.low.first(), r0.low.second(), r0.high.first(), r0.high.second(),  //
            r1.low.first(), r1.low.second(), r1.high.first(), r1.high.second(),  //
            r2.low.first(), r2.low.second(), r2.high.first(), r2.high.second(),  //
            r3.low.first(), r3.low.second(), r3.high.first(), r3.high.second()};
}

constexpr KSMatrix44 KSMatrix44::operator*(const KSMatrix44& b) const noexcept {
    return std::is_constant_evaluated() ? timesBy<kestrel::detail::PlainPair>(b)
                                        : timesBy<kestrel::detail::VectorPair>(b);
}

inline void KSMatrix44::setTransformation(double tx, double ty, double tz, double rx, double ry, double rz,
                                          double sx, double sy, double sz, double shearX, double shearY,
                                          double px, double py, double pz, double aspect) {
    const auto [cX, sX] = kestrel::detail::Rotation(rx);
    const auto [cY, sY] = kestrel::detail::Rotation(ry);
    const auto [cZ, sZ] = kestrel::detail::Rotation(rz);
    const double r00 = cY * cZ, r01 = sX * sY * cZ - cX * sZ, r02 = cX * sY * cZ + sX * sZ;
    const double r10 = cY * sZ, r11 = sX * sY * sZ + cX * cZ, r12 = cX * sY * sZ - sX * cZ;
    const double r20 = -sY, r21 = sX * cY, r22 = cX * cY;
    const double kx = kestrel::detail::guardedTangent(shearX), ky = kestrel::detail::guardedTangent(shearY);
    m00 = (r00 + ky * r01) * sx;
    m01 = (kx * r00 + r01) * sy;
    if (aspect != 1) m01 /= aspect;
    m02 = r02 * sz;
    m10 = (r10 + ky * r11) * sx * aspect;
    m11 = (kx * r10 + r11) * sy;
    m12 = r12 * sz;
    m20 = (r20 + ky * r21) * sx;
    m21 = (kx * r20 + r21) * sy;
    m22 = r22 * sz;
    m03 = tx - px * m00 - py * m01 - pz * m02;
    m13 = ty - px * m10 - py * m11 - pz * m12;
    m23 = tz - px * m20 - py * m21 - pz * m22;
    m30 = m31 = m32 = 0;
    m33 = 1;
}
