// kestrel/geometry/KSMatrix44.h - the transform of space.
#pragma once

#include <kestrel/geometry/KSVector2.h>
#include <kestrel/geometry/KSVector3.h>
#include <kestrel/geometry/KSVector4.h>
#include <kestrel/geometry/detail/Arithmetic.h>
#include <kestrel/geometry/detail/Pair.h>
#include <kestrel/platform/Export.h>

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

    constexpr double determinant() const noexcept { return Minors(*this).determinant(); }
    /// Every cofactor, transposed, divided by the determinant. False, and nothing changes, if the determinant
    /// is exactly 0; there is no tolerance.
    constexpr bool invert() noexcept;

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
    /// position, scales and shears; the three angles are those of the matrix itself, untransposed.
    bool getTransformation(double* tx, double* ty, double* tz, double* rx, double* ry, double* rz, double* sx,
                           double* sy, double* sz, double* shearXZ, double* shearYZ) const;

private:
    template <class Pair>
    constexpr bool invertBy() noexcept;

    /// The 2x2 minors of the upper two rows (s) and of the lower two (c), by their columns.
    struct Minors {
        double s01, s02, s03, s12, s13, s23, c01, c02, c03, c12, c13, c23;
        constexpr explicit Minors(const KSMatrix44& m) noexcept
            : s01(m.m00 * m.m11 - m.m01 * m.m10),
              s02(m.m00 * m.m12 - m.m02 * m.m10),
              s03(m.m00 * m.m13 - m.m03 * m.m10),
              s12(m.m01 * m.m12 - m.m02 * m.m11),
              s13(m.m01 * m.m13 - m.m03 * m.m11),
              s23(m.m02 * m.m13 - m.m03 * m.m12),
              c01(m.m20 * m.m31 - m.m21 * m.m30),
              c02(m.m20 * m.m32 - m.m22 * m.m30),
              c03(m.m20 * m.m33 - m.m23 * m.m30),
              c12(m.m21 * m.m32 - m.m22 * m.m31),
              c13(m.m21 * m.m33 - m.m23 * m.m31),
              c23(m.m22 * m.m33 - m.m23 * m.m32) {}
        constexpr double determinant() const noexcept {
            return s01 * c23 - s02 * c13 + s03 * c12 + s12 * c03 - s13 * c02 + s23 * c01;
        }
    };
};

template <class Pair>
constexpr bool KSMatrix44::invertBy() noexcept {
    // One column each: rows 1 and 0, rows 3 and 2, rows 0 and 2, rows 1 and 3.
    const Pair a0(m10, m00), a1(m11, m01), a2(m12, m02), a3(m13, m03);
    const Pair b0(m30, m20), b1(m31, m21), b2(m32, m22), b3(m33, m23);
    const Pair p0(m00, m20), p1(m01, m21), p2(m02, m22), p3(m03, m23);
    const Pair q0(m10, m30), q1(m11, m31), q2(m12, m32), q3(m13, m33);
    // The 2x2 minors by their columns: first those of rows 0 and 1 (s), then those of rows 2 and 3 (c).
    const Pair n01 = p0 * q1 - p1 * q0, n02 = p0 * q2 - p2 * q0, n03 = p0 * q3 - p3 * q0;
    const Pair n12 = p1 * q2 - p2 * q1, n13 = p1 * q3 - p3 * q1, n23 = p2 * q3 - p3 * q2;
    const auto s = [](const Pair& n) { return Pair(n.first(), n.first()); };
    const auto c = [](const Pair& n) { return Pair(n.second(), n.second()); };
    const Pair s01 = s(n01), s02 = s(n02), s03 = s(n03), s12 = s(n12), s13 = s(n13), s23 = s(n23);
    const Pair c01 = c(n01), c02 = c(n02), c03 = c(n03), c12 = c(n12), c13 = c(n13), c23 = c(n23);
    const double det = (s01 * c23 - s02 * c13 + s03 * c12 + s12 * c03 - s13 * c02 + s23 * c01).first();
    if (det == 0) return false;
    const Pair even(det, -det), odd(-det, det);  // with the signs of the cofactors
    const Pair i00 = (a1 * c23 - a2 * c13 + a3 * c12) / even, i02 = (b1 * s23 - b2 * s13 + b3 * s12) / even;
    const Pair i10 = (a0 * c23 - a2 * c03 + a3 * c02) / odd, i12 = (b0 * s23 - b2 * s03 + b3 * s02) / odd;
    const Pair i20 = (a0 * c13 - a1 * c03 + a3 * c01) / even, i22 = (b0 * s13 - b1 * s03 + b3 * s01) / even;
    const Pair i30 = (a0 * c12 - a1 * c02 + a2 * c01) / odd, i32 = (b0 * s12 - b1 * s02 + b2 * s01) / odd;
    *this = KSMatrix44(i00.first(), i00.second(), i02.first(), i02.second(),  //
                       i10.first(), i10.second(), i12.first(), i12.second(),  //
                       i20.first(), i20.second(), i22.first(), i22.second(),  //
                       i30.first(), i30.second(), i32.first(), i32.second());
    return true;
}

constexpr bool KSMatrix44::invert() noexcept {
    return std::is_constant_evaluated() ? invertBy<kestrel::detail::PlainPair>()
                                        : invertBy<kestrel::detail::VectorPair>();
}

constexpr KSMatrix44 KSMatrix44::operator*(const KSMatrix44& b) const noexcept {
    return KSMatrix44(m00 * b.m00 + m01 * b.m10 + m02 * b.m20 + m03 * b.m30,  //
                      m00 * b.m01 + m01 * b.m11 + m02 * b.m21 + m03 * b.m31,  //
                      m00 * b.m02 + m01 * b.m12 + m02 * b.m22 + m03 * b.m32,  //
                      m00 * b.m03 + m01 * b.m13 + m02 * b.m23 + m03 * b.m33,  //
                      m10 * b.m00 + m11 * b.m10 + m12 * b.m20 + m13 * b.m30,  //
                      m10 * b.m01 + m11 * b.m11 + m12 * b.m21 + m13 * b.m31,  //
                      m10 * b.m02 + m11 * b.m12 + m12 * b.m22 + m13 * b.m32,  //
                      m10 * b.m03 + m11 * b.m13 + m12 * b.m23 + m13 * b.m33,  //
                      m20 * b.m00 + m21 * b.m10 + m22 * b.m20 + m23 * b.m30,  //
                      m20 * b.m01 + m21 * b.m11 + m22 * b.m21 + m23 * b.m31,  //
                      m20 * b.m02 + m21 * b.m12 + m22 * b.m22 + m23 * b.m32,  //
                      m20 * b.m03 + m21 * b.m13 + m22 * b.m23 + m23 * b.m33,  //
                      m30 * b.m00 + m31 * b.m10 + m32 * b.m20 + m33 * b.m30,  //
                      m30 * b.m01 + m31 * b.m11 + m32 * b.m21 + m33 * b.m31,  //
                      m30 * b.m02 + m31 * b.m12 + m32 * b.m22 + m33 * b.m32,  //
                      m30 * b.m03 + m31 * b.m13 + m32 * b.m23 + m33 * b.m33);
}
