#include <gtest/gtest.h>
#include <kestrel/geometry/KSMatrix44.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <type_traits>

#include "Reference.h"

namespace {

constexpr double pi = 3.141592653589793;
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr KSMatrix44 counting(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16);

static_assert(std::is_trivially_copyable_v<KSMatrix44> && sizeof(KSMatrix44) == 16 * sizeof(double));
static_assert(KSMatrix44::X_AXIS == 0 && KSMatrix44::Y_AXIS == 1 && KSMatrix44::Z_AXIS == 2);

void expectNear(const KSMatrix44& got, const KSMatrix44& want, double tolerance, const std::string& what) {
    EXPECT_LE(toReference(got).distance(toReference(want)), tolerance) << what;
}

}  // namespace

TEST(KSMatrix44, ElementaryOperationsActAfterTheMatrix) {
    KSMatrix44 m = counting;
    m.translate(10, 100, 1000);
    EXPECT_EQ(m, KSMatrix44(131, 142, 153, 164, 1305, 1406, 1507, 1608, 13009, 14010, 15011, 16012, 13, 14,
                            15, 16));
    m = counting;
    m.scale(2, 3, 4);
    EXPECT_EQ(m, KSMatrix44(2, 4, 6, 8, 15, 18, 21, 24, 36, 40, 44, 48, 13, 14, 15, 16));
    m = counting;
    m.rotate(pi / 2, KSMatrix44::X_AXIS);
    EXPECT_EQ(m, KSMatrix44(1, 2, 3, 4, -9, -10, -11, -12, 5, 6, 7, 8, 13, 14, 15, 16));
    m = counting;
    m.rotate(pi / 2, KSMatrix44::Y_AXIS);
    EXPECT_EQ(m, KSMatrix44(9, 10, 11, 12, 5, 6, 7, 8, -1, -2, -3, -4, 13, 14, 15, 16));
    m = counting;
    m.rotate(pi / 2, KSMatrix44::Z_AXIS);
    EXPECT_EQ(m, KSMatrix44(-5, -6, -7, -8, 1, 2, 3, 4, 9, 10, 11, 12, 13, 14, 15, 16));
    m = counting;
    m.shear(-pi / 4, pi / 4);
    EXPECT_EQ(m, KSMatrix44(-4, -4, -4, -4, 6, 8, 10, 12, 9, 10, 11, 12, 13, 14, 15, 16));
    m.clear();
    EXPECT_EQ(m, KSMatrix44(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0));
    EXPECT_TRUE(m.identity().isIdentity());
    m = counting;
    m.transpose();
    EXPECT_EQ(m, KSMatrix44(1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15, 4, 8, 12, 16));
}

TEST(KSMatrix44, NothingIsComputedForAnAmountThatChangesNothing) {
    KSMatrix44 start = counting;
    start.m30 = infinity, start.m00 = infinity, start.m11 = -infinity, start.m22 = 1e308;
    KSMatrix44 m = start;
    m.translate(0, 0, -0.0);
    for (const auto about : {KSMatrix44::X_AXIS, KSMatrix44::Y_AXIS, KSMatrix44::Z_AXIS}) m.rotate(0, about);
    m.rotate(1, static_cast<KSMatrix44::axis>(3));
    m.scale(1, 1, 1);
    EXPECT_TRUE(sameBits(m, start));
    m.translate(0, 1, 0);
    EXPECT_TRUE(std::isinf(m.m10) && std::isinf(m.m00));
}

TEST(KSMatrix44, ThreeAngleRotationTurnsTheSecondRowTwice) {
    KSMatrix44 m;
    m.rotate(pi / 2, 0, 0);
    EXPECT_EQ(m, KSMatrix44(1, 0, 0, 0, 0, -1, 0, 0, 0, -1, 0, 0, 0, 0, 0, 1));

    // A row times Rz^T, then Ry^T, then Rx^T, where R turns a column.
    m = counting;
    const double ax = 0.3, ay = -0.7, az = 1.1;
    m.rotate(ax, ay, az);
    KSMatrix44 turn;
    turn.rotate(az, KSMatrix44::Z_AXIS);
    turn.rotate(ay, KSMatrix44::Y_AXIS);
    turn.rotate(ax, KSMatrix44::X_AXIS);
    turn.transpose();
    const KSMatrix44 once = counting * turn, twice = once * turn;
    EXPECT_EQ(m, KSMatrix44(once.m00, once.m01, once.m02, 4, twice.m10, twice.m11, twice.m12, 8, once.m20,
                            once.m21, once.m22, 12, 13, 14, 15, 16));
}

TEST(KSMatrix44, AxisRotationAgreesWithTheAxesAndQuaternions) {
    const std::array<KSVector4<double>, 3> axes{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}};
    for (int k = 0; k < 3; ++k) {
        KSMatrix44 turn, got = counting;
        turn.rotate(0.6, static_cast<KSMatrix44::axis>(k));
        got.rotate(axes[k], 0.6, false);
        EXPECT_EQ(got, counting * turn) << "axis " << k << ": acts before the matrix";
    }
    KSMatrix44 byAxis, byQuaternion = counting;
    byAxis.rotate({1, 2, -2, 0}, 0.8, true);
    const double s = std::sin(0.4), c = std::cos(0.4);
    byQuaternion.setRotationFromQuaternion({5 * s / 3, 10 * s / 3, -10 * s / 3, 5 * c});  // of length 5
    EXPECT_EQ(byQuaternion, byAxis);
    KSMatrix44 withWeight, halved;
    withWeight.rotate({1, 1, 1, 1}, 0.8, true);  // the fourth component counts in the length
    halved.rotate({0.5, 0.5, 0.5, 0}, 0.8, false);
    EXPECT_EQ(withWeight, halved);
    KSMatrix44 none = counting;
    none.setRotationFromQuaternion({0, 0, 0, 0});
    EXPECT_TRUE(none.isIdentity());
    none.rotate({0, 0, 0, 0}, 1, true);
    EXPECT_TRUE(std::isnan(none.m00));
}

TEST(KSMatrix44, FrustumHasNoNearFactor) {
    KSMatrix44 m = counting;
    for (const auto& [r, t, f] : {std::array{1.0, 9.0, 9.0}, {9.0, 2.0, 9.0}, {9.0, 9.0, 3.0}}) {
        m.setFrustum(1, r, 2, t, 3, f);
        EXPECT_TRUE(sameBits(m, counting)) << "two planes are the same";
    }
    m.setFrustum(-1, 3, -2, 8, 2, 10);
    EXPECT_EQ(m, KSMatrix44(0.5, 0, 0.5, 0, 0, 0.2, 0.6, 0, 0, 0, -1.5, -5, 0, 0, -1, 0));
}

TEST(KSMatrix44, InvertRefusesOnlyAnExactZero) {
    KSMatrix44 zeroRow = counting;
    zeroRow.m20 = zeroRow.m21 = zeroRow.m22 = zeroRow.m23 = 0;
    KSMatrix44 m = zeroRow;
    EXPECT_FALSE(m.invert());
    EXPECT_TRUE(sameBits(m, zeroRow));
    KSMatrix44 tiny;
    tiny.scale(1e-155, 1e-155, 1);
    EXPECT_NE(tiny.determinant(), 0);
    EXPECT_TRUE(tiny.invert());
    EXPECT_EQ(tiny.m22, 1) << "divided by a denormal, not multiplied by its infinite reciprocal";
    tiny.identity().scale(1e-200, 1e-200, 1);
    EXPECT_FALSE(tiny.invert()) << "the determinant underflows to exactly 0";
}

TEST(KSMatrix44, PointsOfEverySize) {
    KSVector2<double> two(1, -1);
    KSVector3<double> three(1, -1, 2);
    KSVector4<double> four(1, -1, 2, 3);
    counting.transform(two);
    counting.transform(three);
    EXPECT_EQ(two, KSVector2<double>(3, 7));
    EXPECT_EQ(three, KSVector3<double>(9, 21, 33));
    EXPECT_EQ(counting * four, KSVector4<double>(17, 37, 57, 77));
    int x, y, z;
    KSMatrix44().transform(2.5, -2.5, 1e300, &x, &y, &z);
    EXPECT_TRUE(x == 3 && y == -2 && z == std::numeric_limits<int>::max());
    KSMatrix44 m;
    m.m02 = infinity;
    two = {1, 2};
    m.transform(two);
    EXPECT_EQ(two, KSVector2<double>(1, 2)) << "a plane point has no z to multiply";
}

TEST(KSMatrix44, PrintsARowALine) {
    testing::internal::CaptureStdout();
    counting.print();
    const std::string text = testing::internal::GetCapturedStdout();
    EXPECT_EQ(text.substr(0, text.find('\n') + 1), "[1.000000] [2.000000] [3.000000] [4.000000]\n");
    EXPECT_EQ(text.substr(text.rfind("[13")), "[13.000000] [14.000000] [15.000000] [16.000000]\n");
}

TEST(KSMatrix44, LayerTransformIsItsProduct) {
    std::mt19937 random(44);
    std::uniform_real_distribution<double> u(0.2, 1.4);
    for (int i = 0; i < 500; ++i) {
        double p[15];
        for (double& v : p) v = u(random);
        if (i % 2) p[9] = p[10] = 0;  // no shear
        if (i % 3) p[14] = 1;         // square pixels
        if (i % 5 == 0) p[3] = p[4] = 0;
        const KSMatrix44 got(p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7], p[8], p[9], p[10], p[11], p[12],
                             p[13], p[14]);
        KSMatrix44 want;
        want.scale(p[6], p[7], p[8]);
        want.shear(p[9], p[10]);
        want.m00 = p[6], want.m11 = p[7];  // the shear mixes columns of the rotation, then come the scales
        want.m01 = std::tan(p[9]) * p[7], want.m10 = std::tan(p[10]) * p[6];
        want.rotate(p[3], KSMatrix44::X_AXIS);
        want.rotate(p[4], KSMatrix44::Y_AXIS);
        want.rotate(p[5], KSMatrix44::Z_AXIS);
        want.m01 /= p[14], want.m10 *= p[14];
        KSMatrix44 pivot;
        pivot.translate(-p[11], -p[12], -p[13]);
        want *= pivot;
        want.translate(p[0], p[1], p[2]);
        expectNear(got, want, 1e-12, "composed");

        KSMatrix44 inverse = counting;
        inverse.setInvTransformation(p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7], p[8], p[9], p[10], p[11],
                                     p[12], p[13], p[14]);
        if (p[14] == 1 && p[9] == 0) expectNear(inverse * got, KSMatrix44(), 1e-11, "inverse");
    }
}

TEST(KSMatrix44, LayerTransformWithEverythingAtOnce) {  // against the product of its factors, taken elsewhere
    const KSMatrix44 got(10, -20, 30, 0.5, -0.75, 1.25, 2, 0.5, 3, 0.25, 0.125, 4, -5, 6, 1.5);
    const KSMatrix44 want(0.226244962002676, -0.292315397301583, 0.799030277359884, 2.839261501322080,    //
                          2.070493030599924, 0.071948772401743, -2.156552320086432, -14.982914339872387,  //
                          1.451434733710138, 0.262420640306807, 1.926352176158870, 13.948251209740263,    //
                          0, 0, 0, 1);
    expectNear(got, want, 1e-13, "composed");
}

TEST(KSMatrix44, InverseTransformKeepsItsOwnFormulas) {
    // No rotation, shear factors 1 / 2 and 1, so q = 2, with the scales 2, 4, 8 and an aspect of 3.
    KSMatrix44 m;
    m.setInvTransformation(0, 0, 0, 0, 0, 0, 2, 4, 8, std::atan(0.5), pi / 4, 7, 8, 9, 3);
    EXPECT_EQ(m, KSMatrix44(1, -0.5 / 3, 0, 7, -0.5, 0.5, 0, 8, 0, 0, 0.125, 9, 0, 0, 0, 1));
    // A turn of 90 degrees about y shows the terms that carry q twice.
    m.setInvTransformation(0, 0, 0, pi / 2, pi / 2, 0, 2, 4, 8, std::atan(0.5), pi / 4, 0, 0, 0, 1);
    EXPECT_EQ(m, KSMatrix44(-1, 0, -0.5, 0, 0.25, 0, 0.5, 0, 0, -0.125, 0, 0, 0, 0, 0, 1));
}

TEST(KSMatrix44, DecompositionReadsRows) {
    std::mt19937 random(6);
    std::uniform_real_distribution<double> u(0.1, 1.5);
    for (int i = 0; i < 500; ++i) {
        double p[9], got[11];
        for (double& v : p) v = u(random);
        const auto decompose = [&got](const KSMatrix44& m) {
            return m.getTransformation(&got[0], &got[1], &got[2], &got[3], &got[4], &got[5], &got[6], &got[7],
                                       &got[8], &got[9], &got[10]);
        };
        // Position and scales come from the transpose of what composes them ...
        KSMatrix44 m(p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7], p[8], 0, 0, 0, 0, 0, 1);
        m.transpose();
        auto entries = entriesOf(m);
        for (double& entry : entries) entry *= 4;  // divided out again
        m = std::bit_cast<KSMatrix44>(entries);
        ASSERT_TRUE(decompose(m));
        for (const int k : {0, 1, 2, 6, 7, 8}) EXPECT_NEAR(got[k], p[k], 1e-12) << "parameter " << k;
        EXPECT_NEAR(got[9], 0, 1e-12);
        EXPECT_NEAR(got[10], 0, 1e-12);
        // ... and the angles from the matrix itself, whose fourth column plays no role.
        ASSERT_TRUE(decompose(KSMatrix44(p[0], p[1], p[2], p[3], p[4], p[5], 2, 2, 2, 0, 0, 0, 0, 0, 1)));
        for (const int k : {3, 4, 5}) EXPECT_NEAR(got[k], p[k], 1e-12) << "parameter " << k;
        for (const int k : {0, 1, 2}) EXPECT_EQ(got[k], 0) << "parameter " << k;
    }
}

TEST(KSMatrix44, DecompositionAtTheEdges) {
    const auto decompose = [](const KSMatrix44& m, std::array<double, 11>& v) {
        return m.getTransformation(&v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6], &v[7], &v[8], &v[9],
                                   &v[10]);
    };
    std::array<double, 11> untouched, v;
    untouched.fill(-77);
    v = untouched;
    KSMatrix44 m;
    m.m33 = 0;
    EXPECT_FALSE(decompose(m, v));
    m.identity().scale(1, 0, 1);
    EXPECT_FALSE(decompose(m, v));
    EXPECT_EQ(v, untouched);
    EXPECT_TRUE(decompose(KSMatrix44(), v));
    for (double& entry : v) entry += 0.0;  // no -0
    EXPECT_EQ(v, (std::array<double, 11>{0, 0, 0, 0, 0, 0, 1, 1, 1, 0, 0}));

    // Upper left rows (2, 0, 0), (6, 3, 0), (8, 10, 4): the x-y shear goes, the two others stay.
    EXPECT_TRUE(decompose(KSMatrix44(2, 0, 0, 0, 6, 3, 0, 0, 8, 10, 4, 0, 5, 6, 7, 1), v));
    for (double& entry : v) entry += 0.0;
    EXPECT_EQ(v, (std::array<double, 11>{5, 6, 7, 0, 0, 0, 2, 3, 4, 2, 2.5}));

    m.identity().scale(2, 3, -4);  // left-handed
    EXPECT_TRUE(decompose(m, v));
    EXPECT_TRUE(v[6] == -2 && v[7] == -3 && v[8] == -4);
    m = KSMatrix44(0, 0, 0, 0.3, 0.4, 0.5, 1, 1, 1, 0, 0, 0, 0, 0, 1);
    m.m20 = -m.m20, m.m21 = -m.m21, m.m22 = -m.m22;  // all rows turn round, so the third comes back
    EXPECT_TRUE(decompose(m, v));
    const double angles[] = {0.3, 0.4, 0.5 - pi};
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(v[3 + k], angles[k], 1e-12);

    m.identity().scale(2, 3, -4);
    double sy = 0;
    EXPECT_TRUE(m.getTransformation(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &sy,
                                    nullptr, nullptr, nullptr));
    EXPECT_EQ(sy, -3);

    // Rows turned by right angles about y, in every length: rounding may push the sine above 1.
    for (double length = 0.1; length < 40; length *= 1.0137) {
        m = KSMatrix44(0, 0, length, 0, 0, length, 0, 0, -length, 0, 1e-9 * length, 0, 0, 0, 0, 1);
        ASSERT_TRUE(decompose(m, v));
        EXPECT_NEAR(v[4], pi / 2, 1e-4) << length;
    }
}
