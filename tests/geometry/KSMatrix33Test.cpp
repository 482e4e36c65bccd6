#include <gtest/gtest.h>
#include <kestrel/geometry/KSMatrix33.h>

#include <cmath>
#include <limits>
#include <string>
#include <type_traits>

#include "Reference.h"

namespace {

constexpr double pi = 3.141592653589793;
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

static_assert(std::is_trivially_copyable_v<KSMatrix33> && sizeof(KSMatrix33) == 9 * sizeof(double));
static_assert((KSMatrix33(2, 0, 4, 0, 3, 5, 0, 0, 1) * KSMatrix33()).determinant() == 6);

void expectNear(const KSMatrix33& got, const KSMatrix33& want, double tolerance, const std::string& what) {
    EXPECT_LE(toReference(got).distance(toReference(want)), tolerance) << what;
}

}  // namespace

TEST(KSMatrix33, ElementaryOperationsActAfterTheMatrix) {
    const KSMatrix33 start(1, 2, 3, 4, 5, 6, 7, 8, 9);
    KSMatrix33 m = start;
    m.translate(10, 100);
    EXPECT_EQ(m, KSMatrix33(71, 82, 93, 704, 805, 906, 7, 8, 9));
    m = start;
    m.scale(2, 3);
    EXPECT_EQ(m, KSMatrix33(2, 4, 6, 12, 15, 18, 7, 8, 9));
    m = start;
    m.rotateZ(pi / 2);
    EXPECT_EQ(m, KSMatrix33(-4, -5, -6, 1, 2, 3, 7, 8, 9));
    m = start;
    m.shear(-pi / 4, pi / 4);  // factors -1 and 1, both from the rows as they were
    EXPECT_EQ(m, KSMatrix33(-3, -3, -3, 5, 7, 9, 7, 8, 9));
    m = start;
    m.rotate(KSVector3<double>(0, 0, 1), 1, true);
    EXPECT_TRUE(sameBits(m, start)) << "kept as an empty operation";
    m.transpose();
    EXPECT_EQ(m, KSMatrix33(1, 4, 7, 2, 5, 8, 3, 6, 9));
    EXPECT_TRUE(m.identity().isIdentity());
    m.clear();
    EXPECT_EQ(m, KSMatrix33(0, 0, 0, 0, 0, 0, 0, 0, 0));
    m.identity().shear(pi / 2, 0);
    EXPECT_EQ(m.m01, std::tan(1.5655603390389135));
    EXPECT_EQ(m.m10, 0);
    m.identity().translate(0, infinity);
    EXPECT_TRUE(std::isnan(m.m10)) << "no amount is skipped here: infinity times 0";
}

TEST(KSMatrix33, EqualityIsWithinATolerance) {
    struct Row {
        double difference;
        bool equal;
    };
    for (const Row& row :
         {Row{5e-8, true}, {-5e-8, true}, {2e-7, false}, {1e-7, false}, {notANumber, false}}) {
        for (int entry = 0; entry < 9; ++entry) {
            auto entries = entriesOf(KSMatrix33());
            entries[entry] += row.difference;
            const auto m = std::bit_cast<KSMatrix33>(entries);
            const bool atZero = entry % 4 != 0;  // 1 + 1e-7 is not exactly 1e-7 away from 1
            if (std::abs(row.difference) == 1e-7 && !atZero) continue;
            EXPECT_EQ(m == KSMatrix33(), row.equal) << row.difference << " in entry " << entry;
            EXPECT_EQ(m != KSMatrix33(), !row.equal) << row.difference << " in entry " << entry;
            EXPECT_EQ(m.isIdentity(), row.equal) << row.difference << " in entry " << entry;
        }
    }
    KSMatrix33 m;
    m.m00 = infinity;
    EXPECT_FALSE(m == m) << "infinity less infinity is no difference below anything";
}

TEST(KSMatrix33, InvertRefusesOnlyAnExactZero) {
    struct Row {
        const char* name;
        KSMatrix33 m;
        bool inverts;
    };
    const Row rows[] = {{"Zero", {0, 0, 0, 0, 0, 0, 0, 0, 0}, false},
                        {"TwoEqualRows", {1, 2, 3, 1, 2, 3, 7, 8, 10}, false},
                        {"AZeroRow", {1, 2, 3, 0, 0, 0, 7, 8, 10}, false},
                        {"AProductThatUnderflows", {1e-200, 0, 0, 0, 1e-200, 0, 0, 0, 1}, false},
                        {"TinyButNotZero", {1e-150, 0, 0, 0, 1e-150, 0, 0, 0, 1}, true},
                        {"Denormal", {1e-310, 0, 0, 0, 1, 0, 0, 0, 1}, true},
                        {"NotANumber", {notANumber, 0, 0, 0, 1, 0, 0, 0, 1}, true}};
    for (const Row& row : rows) {
        KSMatrix33 m = row.m;
        EXPECT_EQ(m.invert(), row.inverts) << row.name;
        if (!row.inverts) {
            EXPECT_TRUE(sameBits(m, row.m)) << row.name;
        }
    }
    KSMatrix33 tiny(1e-310, 0, 0, 0, 1, 0, 0, 0, 1);
    ASSERT_TRUE(tiny.invert());
    EXPECT_EQ(tiny.m11, 1) << "divided by a denormal, not multiplied by its infinite reciprocal";
    EXPECT_EQ(tiny.m01, 0);
}

TEST(KSMatrix33, PointsRoundToPixels) {
    struct Row {
        double value;
        int pixel;
    };
    constexpr int most = std::numeric_limits<int>::max(), least = std::numeric_limits<int>::min();
    const Row rows[] = {{2.4, 2},
                        {2.5, 3},
                        {-2.5, -2},
                        {-2.6, -3},
                        {2.49999995, 3},
                        {2.4999998, 2},
                        {-0.5, 0},
                        {1e300, most},
                        {-1e300, least},
                        {2147483646.6, most},
                        {-2147483648.4, least},
                        {-2147483648.9, least},
                        {infinity, most},
                        {-infinity, least},
                        {notANumber, 0}};
    for (const Row& row : rows) {
        int x = -1, y = -1;
        KSMatrix33(1, 0, 0, 0, 1, 0, 0, 0, 1).transform(row.value, 2.4, &x, &y);
        EXPECT_EQ(x, row.pixel) << row.value;
        if (!std::isfinite(row.value)) {
            continue;  // times 0 it makes a NaN of the other coordinate
        }
        EXPECT_EQ(y, 2) << row.value;
        KSMatrix33(1, 0, 0, 0, 1, 0, 0, 0, 2).perspectiveTransform(2.4, 2 * row.value, &x, &y);
        EXPECT_EQ(x, 1) << row.value;
        EXPECT_EQ(y, row.pixel) << row.value;
    }
}

TEST(KSMatrix33, PerspectiveDividesOnlyWhereItSaysSo) {
    const KSMatrix33 m(1, 2, 3, 4, 5, 6, 7, 8, 9);
    double x = 1, y = -1, w = -77;
    m.transform(&x, &y);
    EXPECT_TRUE(x == 2 && y == 5) << "affine";
    x = 1, y = -1;
    m.perspectiveTransform(&x, &y, &w);
    EXPECT_TRUE(x == 2 && y == 5 && w == 8) << "undivided; the old w is not read";
    x = 1, y = -1;
    m.perspectiveTransform(&x, &y);
    EXPECT_TRUE(x == 0.25 && y == 0.625);
    KSVector3<double> v(1, -1, 2);
    m.transform(v);
    EXPECT_EQ(v, KSVector3<double>(5, 11, 17));
}

TEST(KSMatrix33, PrintsARowALine) {
    testing::internal::CaptureStdout();
    KSMatrix33(1, 2.5, -3, 0, 1e-9, 6, 7, 8, 1234567).print();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "[1.000000] [2.500000] [-3.000000]\n[0.000000] [0.000000] [6.000000]\n"
              "[7.000000] [8.000000] [1234567.000000]\n");
}

TEST(KSMatrix33, LayerTransformIsItsProduct) {
    std::mt19937 random(33);
    std::uniform_real_distribution<double> u(0.2, 1.4);
    for (int i = 0; i < 500; ++i) {
        const double tx = 9 * u(random), ty = u(random), angle = i % 5 ? u(random) : 0, sx = u(random),
                     sy = -u(random);
        const double ax = i % 3 ? u(random) : 0, ay = i % 7 ? -u(random) : 0, px = u(random),
                     py = 5 * u(random);
        const double aspect = i % 2 ? u(random) : 1;
        KSMatrix33 want;
        want.translate(-px, -py);
        want.scale(1, 1 / aspect);
        want.scale(sx, sy);
        want.shear(ax, ay);
        want.rotateZ(angle);
        want.scale(1, aspect);
        want.translate(tx, ty);
        KSMatrix33 got;
        got.clear();
        got.setTransformation(tx, ty, angle, sx, sy, ax, ay, px, py, aspect);
        expectNear(got, want, 1e-12, "composed");
        KSVector2<double> pivot(px, py);
        got.transform(pivot);
        EXPECT_NEAR(pivot.x, tx, 1e-12);
        EXPECT_NEAR(pivot.y, ty, 1e-12);

        KSMatrix33 inverse;
        inverse.setInvTransformation(tx, ty, angle, sx, sy, ax, ay, px, py, aspect);
        if (aspect == 1) expectNear(inverse * got, KSMatrix33(), 1e-9, "inverse");
    }
    // With another aspect, which sits on m11 and not on m10, the numbers are those of the formulas.
    KSMatrix33 inverse;
    inverse.setInvTransformation(10, -20, 0.5, 2, 0.5, 0.25, 0.125, 4, -5, 1.5);
    const KSMatrix33 want(0.516574298765612, 0.087935382600147, 0.592964664346827, -1.218491933458788,
                          2.533301893077447, 57.850957196136818, 0, 0, 1);
    expectNear(inverse, want, 1e-13, "inverse with an aspect");
}

TEST(KSMatrix33, DecomposeGivesTheParametersBack) {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> u(0.1, 3);
    for (int i = 0; i < 500; ++i) {
        const double tx = u(random), ty = -u(random), angle = 2 * u(random) - 3.1, sx = u(random),
                     sy = u(random);
        const double slope = i % 2 ? u(random) - 1.5 : 0;
        KSMatrix33 m;
        m.setTransformation(tx, ty, angle, sx, sy, std::atan(slope), 0, 0, 0, 1);
        double got[6];
        m.decompose(&got[0], &got[1], &got[2], &got[3], &got[4], &got[5]);
        EXPECT_EQ(got[0], tx);
        EXPECT_EQ(got[1], ty);
        EXPECT_NEAR(got[2], angle, 1e-12);
        EXPECT_NEAR(got[3], sx, 1e-12);
        EXPECT_NEAR(got[4], sy, 1e-12);
        EXPECT_NEAR(got[5], slope * sy / sx, 1e-9) << "the slope along x, in units of the scaled axes";
        double alone = 0;
        m.decompose(nullptr, nullptr, nullptr, nullptr, &alone, nullptr);
        EXPECT_EQ(alone, got[4]);
    }
}

TEST(KSMatrix33, DecomposeOfAFirstColumnOfZero) {
    double tx, ty, angle, sx, sy, shear;
    KSMatrix33(0, -3, 5, 0, 4, 6, 0, 0, 1).decompose(&tx, &ty, &angle, &sx, &sy, &shear);
    EXPECT_TRUE(tx == 5 && ty == 6 && sx == 0 && sy == 5 && shear == 0);
    EXPECT_EQ(angle, std::atan2(0.6, 0.8));
    KSMatrix33(0, 0, 5, 0, 0, 6, 0, 0, 1).decompose(&tx, &ty, &angle, &sx, &sy, &shear);
    EXPECT_TRUE(sx == 0 && sy == 0 && shear == 0 && angle == 0);
    KSMatrix33(1e-170, 0, 0, 0, 2, 0, 0, 0, 1).decompose(&tx, &ty, &angle, &sx, &sy, &shear);
    EXPECT_TRUE(sx == 0 && sy == 2) << "the square of the first entry underflows to exactly 0";
}
