#include <kestrel/foundation/KSPrint.h>
#include <kestrel/geometry/KSMatrix33.h>
#include <kestrel/geometry/detail/GuardedTangent.h>
#include <kestrel/geometry/detail/Rotation.h>
#include <kestrel/geometry/detail/TransformPoints.h>

#include <algorithm>
#include <cmath>

using kestrel::detail::guardedTangent;
using kestrel::detail::Rotation;

void KSMatrix33::rotateZ(double angle) {
    const double c = std::cos(angle), s = std::sin(angle);
    const KSMatrix33 m = *this;
    m00 = c * m.m00 - s * m.m10, m01 = c * m.m01 - s * m.m11, m02 = c * m.m02 - s * m.m12;
    m10 = s * m.m00 + c * m.m10, m11 = s * m.m01 + c * m.m11, m12 = s * m.m02 + c * m.m12;
}

void KSMatrix33::shear(double ax, double ay) {
    const double kx = guardedTangent(ax), ky = guardedTangent(ay);
    const KSMatrix33 m = *this;
    m00 += kx * m.m10, m01 += kx * m.m11, m02 += kx * m.m12;
    m10 += ky * m.m00, m11 += ky * m.m01, m12 += ky * m.m02;
}

void KSMatrix33::transform(std::span<KSVector2<double>> points) const noexcept { transform(points, points); }

void KSMatrix33::transform(std::span<const KSVector2<double>> from,
                           std::span<KSVector2<double>> to) const noexcept {
    const double rows[] = {m00, m01, m02, m10, m11, m12};
    kestrel::detail::transformAffine2(rows, from.data(), to.data(), std::min(from.size(), to.size()));
}

void KSMatrix33::transform(std::span<KSVector3<double>> vectors) const noexcept {
    transform(vectors, vectors);
}

void KSMatrix33::transform(std::span<const KSVector3<double>> from,
                           std::span<KSVector3<double>> to) const noexcept {
    const double rows[] = {m00, m01, m02, m10, m11, m12, m20, m21, m22};
    kestrel::detail::transformLinear3(rows, from.data(), to.data(), std::min(from.size(), to.size()));
}

void KSMatrix33::print() const {
    KSPrint("[%f] [%f] [%f]\n", m00, m01, m02);
    KSPrint("[%f] [%f] [%f]\n", m10, m11, m12);
    KSPrint("[%f] [%f] [%f]\n", m20, m21, m22);
}

void KSMatrix33::setInvTransformation(double tx, double ty, double rotation, double sx, double sy,
                                      double shearX, double shearY, double px, double py, double aspect) {
    const auto [c, s] = Rotation(rotation);
    const double kx = guardedTangent(shearX), ky = guardedTangent(shearY);
    const double q = 1 / (1 - kx * ky);
    m00 = q * (c + s * kx) / sx;
    m01 = q * (s - c * kx) / sx / aspect;
    m02 = px - tx * m00 - ty * m01;
    m10 = -q * (c * ky + s) / sy;
    m11 = q * (c - s * ky) / sy * aspect;  // the aspect belongs here and not on m10, see the header
    m12 = py - tx * m10 - ty * m11;
    m20 = m21 = 0;
    m22 = 1;
}

void KSMatrix33::decompose(double* tx, double* ty, double* rotation, double* sx, double* sy,
                           double* shear) const {
    double angle = 0, scaleX = 0, scaleY = 0, slant = 0;
    const double n = m00 * m00 + m10 * m10;
    if (n == 0) {
        if (const double alt = m01 * m01 + m11 * m11; alt != 0) {
            scaleY = std::sqrt(alt);
            angle = std::atan2(-m01 / scaleY, m11 / scaleY);
        }
    } else {
        scaleX = std::sqrt(n);
        const double c = m00 / scaleX, s = m10 / scaleX;
        angle = std::atan2(s, c);
        scaleY = (m00 * m11 - m01 * m10) / scaleX;
        slant = std::abs(m00) >= std::abs(m10) ? (scaleY * s + m01) / m00 : (m11 - scaleY * c) / m10;
    }
    if (tx) *tx = m02;
    if (ty) *ty = m12;
    if (rotation) *rotation = angle;
    if (sx) *sx = scaleX;
    if (sy) *sy = scaleY;
    if (shear) *shear = slant;
}
