#include <gtest/gtest.h>
#include <kestrel/geometry/detail/GuardedTangent.h>

#include <cmath>
#include <limits>
#include <random>

#include "Reference.h"

using kestrel::detail::guardedTangent;

namespace {

constexpr double pi = 3.141592653589793;

/// The definition, one step at a time.
double stepwise(double angle) {
    if (angle == 0) return 0;
    while (angle < 0) angle += pi;
    while (angle > pi) angle -= pi;
    if (angle > 1.5655603390389135 && angle < 1.5760323145508794) angle = 1.5655603390389135;
    return std::tan(angle);
}

}  // namespace

TEST(GuardedTangent, EqualsTheStepsBitForBit) {
    std::mt19937 random(3);
    for (int power = -30; power <= 21; ++power) {
        const double low = std::ldexp(1.0, power);
        std::uniform_real_distribution<double> inside(low, 2 * low);
        for (int i = 0; i < (power < 16 ? 200 : 3); ++i) {
            const double angle = i == 0 ? low : i == 1 ? std::nextafter(low, 0) : inside(random);
            ASSERT_EQ(bitsOf(guardedTangent(angle)), bitsOf(stepwise(angle))) << angle;
            ASSERT_EQ(bitsOf(guardedTangent(-angle)), bitsOf(stepwise(-angle))) << -angle;
        }
    }
    for (const double angle : {std::ldexp(1.0, 28), 123456789.25, -98765432.5, 3e8})
        EXPECT_EQ(bitsOf(guardedTangent(angle)), bitsOf(stepwise(angle))) << angle;
}

TEST(GuardedTangent, StaysFiniteAroundRightAngles) {
    const double largest = std::tan(1.5655603390389135);
    EXPECT_NEAR(largest, 190.98, 0.01);
    for (const double angle : {pi / 2, -pi / 2, 1.5 * pi, 1.566, 1.576, 1.5760323145508792})
        EXPECT_EQ(guardedTangent(angle), largest) << angle;
    EXPECT_EQ(guardedTangent(1.5655603390389135), largest);
    EXPECT_EQ(guardedTangent(1.5760323145508794), std::tan(1.5760323145508794)) << "the gap's end is open";
    EXPECT_NEAR(guardedTangent(-pi / 4), -1, 1e-15);
    EXPECT_FALSE(std::signbit(guardedTangent(-0.0)));
}

TEST(GuardedTangent, EndsForEveryAngle) {
    using limits = std::numeric_limits<double>;
    for (int power = 22; power < 1024; ++power) {
        for (const double scale : {1.0, 1.3, 1.9999999}) {
            const double angle = std::ldexp(scale, power);
            EXPECT_LE(std::abs(guardedTangent(angle)), 191) << angle;
            EXPECT_LE(std::abs(guardedTangent(-angle)), 191) << -angle;
        }
    }
    // Where no step changes the angle the remainder is exact.
    EXPECT_EQ(guardedTangent(1e300), std::tan(std::fmod(1e300, pi)));
    for (const double angle : {limits::infinity(), -limits::infinity(), limits::quiet_NaN()})
        EXPECT_TRUE(std::isnan(guardedTangent(angle))) << angle;
    EXPECT_EQ(guardedTangent(limits::denorm_min()), limits::denorm_min());
}
