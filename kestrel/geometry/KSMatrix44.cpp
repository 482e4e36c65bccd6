#include <kestrel/foundation/KSPrint.h>
#include <kestrel/geometry/KSMatrix44.h>
#include <kestrel/geometry/detail/GuardedTangent.h>
#include <kestrel/geometry/detail/Rotation.h>
#include <kestrel/geometry/detail/TransformPoints.h>

#include <algorithm>
#include <cmath>

using kestrel::detail::guardedTangent;
using kestrel::detail::Rotation;

namespace {

/// first' = c first - s second, second' = s first + c second, for one column.
void turn(const Rotation& r, double& first, double& second) {
    const double a = first, b = second;
    first = r.c * a - r.s * b;
    second = r.s * a + r.c * b;
}

double dot(const KSVector3<double>& a, const KSVector3<double>& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

KSVector3<double> minus(const KSVector3<double>& a, double factor, const KSVector3<double>& b) {
    return {a.x - factor * b.x, a.y - factor * b.y, a.z - factor * b.z};
}

/// Makes v a unit vector unless its length is 0; returns the length.
double normalize(KSVector3<double>& v) {
    const double length = std::sqrt(dot(v, v));
    if (length != 0) v = {v.x / length, v.y / length, v.z / length};
    return length;
}

}  // namespace

void KSMatrix44::rotate(double angle, axis about) {
    if (angle == 0) return;
    const Rotation r(angle);
    switch (about) {
        case X_AXIS:
            turn(r, m10, m20), turn(r, m11, m21), turn(r, m12, m22), turn(r, m13, m23);
            break;
        case Y_AXIS:  // from z to x
            turn(r, m20, m00), turn(r, m21, m01), turn(r, m22, m02), turn(r, m23, m03);
            break;
        case Z_AXIS:
            turn(r, m00, m10), turn(r, m01, m11), turn(r, m02, m12), turn(r, m03, m13);
            break;
    }
}

void KSMatrix44::rotate(double ax, double ay, double az) {
    const Rotation rx(ax), ry(ay), rz(az);
    const auto turnRow = [&](double& x, double& y, double& z) {
        turn(rz, x, y);
        turn(ry, z, x);
        turn(rx, y, z);
    };
    turnRow(m00, m01, m02);
    turnRow(m10, m11, m12);
    turnRow(m10, m11, m12);  // twice: this is how the operation is defined
    turnRow(m20, m21, m22);
}

void KSMatrix44::rotate(const KSVector4<double>& about, double angle, bool normalize) {
    double x = about.x, y = about.y, z = about.z;
    if (normalize) {
        const double length = std::sqrt(x * x + y * y + z * z + about.w * about.w);
        x /= length, y /= length, z /= length;
    }
    const double c = std::cos(angle), s = std::sin(angle), t = 1 - c;
    *this *= KSMatrix44(x * x * t + c, x * y * t - z * s, x * z * t + y * s, 0,  //
                        x * y * t + z * s, y * y * t + c, y * z * t - x * s, 0,  //
                        x * z * t - y * s, y * z * t + x * s, z * z * t + c, 0,  //
                        0, 0, 0, 1);
}

void KSMatrix44::setRotationFromQuaternion(const KSVector4<double>& q) {
    const auto [x, y, z, w] = q;
    const double n = x * x + y * y + z * z + w * w;
    const double s = n > 0 ? 2 / n : 0;
    *this = KSMatrix44(1 - s * (y * y + z * z), s * (x * y - w * z), s * (x * z + w * y), 0,  //
                       s * (x * y + w * z), 1 - s * (x * x + z * z), s * (y * z - w * x), 0,  //
                       s * (x * z - w * y), s * (y * z + w * x), 1 - s * (x * x + y * y), 0,  //
                       0, 0, 0, 1);
}

void KSMatrix44::shear(double ax, double ay) {
    const double kx = guardedTangent(ax), ky = guardedTangent(ay);
    const KSMatrix44 m = *this;
    m00 += kx * m.m10, m01 += kx * m.m11, m02 += kx * m.m12, m03 += kx * m.m13;
    m10 += ky * m.m00, m11 += ky * m.m01, m12 += ky * m.m02, m13 += ky * m.m03;
}

void KSMatrix44::setFrustum(double left, double right, double bottom, double top, double near, double far) {
    const double width = right - left, height = top - bottom, depth = far - near;
    if (width == 0 || height == 0 || depth == 0) return;
    *this = KSMatrix44(2 / width, 0, (right + left) / width, 0,               //
                       0, 2 / height, (top + bottom) / height, 0,             //
                       0, 0, -(far + near) / depth, -2 * far * near / depth,  //
                       0, 0, -1, 0);
}

void KSMatrix44::transform(std::span<KSVector2<double>> points) const noexcept { transform(points, points); }

void KSMatrix44::transform(std::span<const KSVector2<double>> from,
                           std::span<KSVector2<double>> to) const noexcept {
    const double rows[] = {m00, m01, m03, m10, m11, m13};
    kestrel::detail::transformAffine2(rows, from.data(), to.data(), std::min(from.size(), to.size()));
}

void KSMatrix44::transform(std::span<KSVector3<double>> points) const noexcept { transform(points, points); }

void KSMatrix44::transform(std::span<const KSVector3<double>> from,
                           std::span<KSVector3<double>> to) const noexcept {
    const double rows[] = {m00, m01, m02, m03, m10, m11, m12, m13, m20, m21, m22, m23};
    kestrel::detail::transformAffine3(rows, from.data(), to.data(), std::min(from.size(), to.size()));
}

void KSMatrix44::transform(std::span<KSVector4<double>> vectors) const noexcept {
    transform(vectors, vectors);
}

void KSMatrix44::transform(std::span<const KSVector4<double>> from,
                           std::span<KSVector4<double>> to) const noexcept {
    const double rows[] = {m00, m01, m02, m03, m10, m11, m12, m13, m20, m21, m22, m23, m30, m31, m32, m33};
    kestrel::detail::transformLinear4(rows, from.data(), to.data(), std::min(from.size(), to.size()));
}

void KSMatrix44::print() const {
    KSPrint("[%f] [%f] [%f] [%f]\n", m00, m01, m02, m03);
    KSPrint("[%f] [%f] [%f] [%f]\n", m10, m11, m12, m13);
    KSPrint("[%f] [%f] [%f] [%f]\n", m20, m21, m22, m23);
    KSPrint("[%f] [%f] [%f] [%f]\n", m30, m31, m32, m33);
}

void KSMatrix44::setInvTransformation(double tx, double ty, double tz, double rx, double ry, double rz,
                                      double sx, double sy, double sz, double shearX, double shearY,
                                      double px, double py, double pz, double aspect) {
    const auto [cX, sX] = Rotation(rx);
    const auto [cY, sY] = Rotation(ry);
    const auto [cZ, sZ] = Rotation(rz);
    const double kx = guardedTangent(shearX), ky = guardedTangent(shearY);
    const double q = 1 / (1 - kx * ky);
    const double ix = 1 / sx, iy = 1 / sy, iz = 1 / sz;
    const double a = q * ix * (cY - q * kx * sX * sY), b = -q * kx * ix * cX;
    m00 = cZ * a - sZ * b;
    m01 = (sZ * a + cZ * b) / aspect;
    m02 = -ix * sY - q * kx * ix * sX * cY;
    const double c = iy * (sX * sY - q * ky * cY), d = q * iy * cX;
    m10 = cZ * c - sZ * d * aspect;
    m11 = sZ * c + cZ * d;
    m12 = iy * (q * ky * sY + sX * cY);
    m20 = iz * (cX * sY * cZ + sX * sZ);
    m21 = iz * (cX * sY * sZ - sX * cZ);
    m22 = iz * cX * cY;
    m03 = px - tx * m00 - ty * m01 - tz * m02;
    m13 = py - tx * m10 - ty * m11 - tz * m12;
    m23 = pz - tx * m20 - ty * m21 - tz * m22;
    m30 = m31 = m32 = 0;
    m33 = 1;
}

bool KSMatrix44::getTransformation(double* tx, double* ty, double* tz, double* rx, double* ry, double* rz,
                                   double* sx, double* sy, double* sz, double* shearXZ,
                                   double* shearYZ) const {
    if (m33 == 0) return false;
    // Over m33 and without the fourth column. That column is the perspective part, which nobody asks for; it
    // takes no part in anything below.
    const KSMatrix44 m(m00 / m33, m01 / m33, m02 / m33, 0, m10 / m33, m11 / m33, m12 / m33, 0,  //
                       m20 / m33, m21 / m33, m22 / m33, 0, m30 / m33, m31 / m33, m32 / m33, 1);
    if (m.determinant() == 0) return false;

    KSVector3<double> r0(m.m00, m.m01, m.m02), r1(m.m10, m.m11, m.m12), r2(m.m20, m.m21, m.m22);
    double scaleX = normalize(r0);
    r1 = minus(r1, dot(r0, r1), r0);
    double scaleY = normalize(r1);
    double slantXZ = dot(r0, r2);
    r2 = minus(r2, slantXZ, r0);
    double slantYZ = dot(r1, r2);
    r2 = minus(r2, slantYZ, r1);
    double scaleZ = normalize(r2);
    slantXZ /= scaleZ;
    slantYZ /= scaleZ;
    const KSVector3<double> cross(r1.y * r2.z - r1.z * r2.y, r1.z * r2.x - r1.x * r2.z,
                                  r1.x * r2.y - r1.y * r2.x);
    if (dot(r0, cross) < 0) {
        scaleX = -scaleX, scaleY = -scaleY, scaleZ = -scaleZ;
        r0 = {-r0.x, -r0.y, -r0.z}, r1 = {-r1.x, -r1.y, -r1.z}, r2 = {-r2.x, -r2.y, -r2.z};
    }
    // A unit vector's component may come out just above 1.
    const double angleY = std::asin(std::clamp(-r2.x, -1.0, 1.0));
    const bool level = std::cos(angleY) == 0;
    const double angleX = level ? std::atan2(r0.z, r1.y) : std::atan2(r2.y, r2.z);
    const double angleZ = level ? 0 : std::atan2(r1.x, r0.x);

    const auto put = [](double* to, double value) {
        if (to) *to = value;
    };
    put(tx, m.m30), put(ty, m.m31), put(tz, m.m32);
    put(rx, angleX), put(ry, angleY), put(rz, angleZ);
    put(sx, scaleX), put(sy, scaleY), put(sz, scaleZ);
    put(shearXZ, slantXZ), put(shearYZ, slantYZ);
    return true;
}
