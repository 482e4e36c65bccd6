#include <kestrel/geometry/detail/GuardedTangent.h>

#include <cmath>

namespace kestrel::detail {
namespace {

constexpr double pi = 3.141592653589793;
constexpr double gapStart = 1.5655603390389135;  // a right angle less 0.3 degrees
constexpr double gapEnd = 1.5760323145508794;    // and more

/// Takes the steps angle -= pi as long as the angle is above 64. Between two powers of two every step takes
/// away the same amount, pi rounded to the spacing of the numbers there (never a tie above 64, as pi ends at
/// 2^-48), so all but the last few steps of each such range are one subtraction, and an exact one.
double reduceLarge(double angle) {
    while (angle > 64) {
        const double next = angle - pi;
        const double step = angle - next;
        if (!(step > 0)) return std::fmod(angle, pi);  // infinite, or too large to feel a step
        const double floor = std::ldexp(1.0, std::ilogb(next));
        const double steps = std::floor((next - floor) / step) - 2;
        angle = steps > 0 && next >= std::ldexp(1.0, std::ilogb(angle)) ? next - steps * step : next;
    }
    return angle;
}

}  // namespace

double guardedTangentOf(double angle) {
    if (angle > 64) angle = reduceLarge(angle);
    if (angle < -64) angle = -reduceLarge(-angle);  // rounding is symmetric
    while (angle < 0) angle += pi;
    while (angle > pi) angle -= pi;
    if (angle > gapStart && angle < gapEnd) angle = gapStart;
    return std::tan(angle);
}

}  // namespace kestrel::detail
