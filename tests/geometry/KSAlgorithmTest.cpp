#include <gtest/gtest.h>
#include <kestrel/geometry/KSAlgorithm.h>

#include <cmath>
#include <limits>
#include <random>
#include <utility>
#include <vector>

using Vector = KSVector2<double>;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

struct SearchRow {
    const char* name;
    std::vector<double> table;
    double value;
    int index;
};

const SearchRow searchRows[] = {
    {"FirstEntry", {0, 1, 2, 3}, 0, 0},
    {"LastEntry", {0, 1, 2, 3}, 3, 2},
    {"Between", {0, 1, 2, 3}, 1.5, 1},
    {"InnerHit", {0, 1, 2, 3}, 2, 2},
    {"Before", {0, 1, 2, 3}, -1, -1},
    {"After", {0, 1, 2, 3}, 5, 3},
    {"FallingFirst", {3, 2, 1, 0}, 3, 0},
    {"FallingLast", {3, 2, 1, 0}, 0, 2},
    {"FallingBetween", {3, 2, 1, 0}, 1.5, 1},
    {"FallingInnerHitGivesThePositionBefore", {3, 2, 1, 0}, 2, 0},
    {"FallingBefore", {3, 2, 1, 0}, 5, -1},
    {"FallingAfter", {3, 2, 1, 0}, -1, 3},
    {"OneEntryHit", {7}, 7, 0},
    {"OneEntryBelow", {7}, 6, -1},
    {"OneEntryAbove", {7}, 8, 0},
    {"NoEntry", {}, 1, -1},
    {"NotANumber", {0, 1, 2, 3}, std::nan(""), -1},
};

class KSAlgorithmBisect : public testing::TestWithParam<SearchRow> {};

TEST_P(KSAlgorithmBisect, Finds) {
    const SearchRow& row = GetParam();
    int index = -99;
    EXPECT_EQ(KSAlgorithm::bisect(row.table.data(), static_cast<int>(row.table.size()), row.value, &index),
              row.index);
    EXPECT_EQ(index, row.index);
}
INSTANTIATE_TEST_SUITE_P(Tables, KSAlgorithmBisect, testing::ValuesIn(searchRows),
                         [](const auto& row) { return row.param.name; });

struct IntervalRow {
    const char* name;
    double a0, a1, b0, b1;
    std::vector<double> shared;
};

const IntervalRow intervalRows[] = {
    {"TouchAtTheEnd", 0, 1, 1, 2, {1}},
    {"TouchAtTheStart", 1, 2, 0, 1, {1}},
    {"Overlap", 0, 2, 1, 3, {1, 2}},
    {"Inside", 0, 9, 3, 4, {3, 4}},
    {"Apart", 0, 1, 2, 3, {}},
    {"ApartTheOtherWay", 2, 3, 0, 1, {}},
    {"APointInside", 1, 1, 0, 2, {1, 1}},
    {"APointAtTheStart", 0, 0, 0, 2, {0}},
    {"Unbounded", -infinity, infinity, 1, 2, {1, 2}},
};

class KSAlgorithmIntervals : public testing::TestWithParam<IntervalRow> {};

TEST_P(KSAlgorithmIntervals, Share) {
    const IntervalRow& row = GetParam();
    double out[2] = {-77, -77};
    const int count = KSAlgorithm::findIntersection(row.a0, row.a1, row.b0, row.b1, out);
    EXPECT_EQ(std::vector<double>(out, out + count), row.shared);
    for (int i = count; i < 2; ++i) EXPECT_EQ(out[i], -77);
}
INSTANTIATE_TEST_SUITE_P(Pairs, KSAlgorithmIntervals, testing::ValuesIn(intervalRows),
                         [](const auto& row) { return row.param.name; });

struct SegmentRow {
    const char* name;
    Vector p, d, q, e;
    std::vector<Vector> points;
};

const SegmentRow segmentRows[] = {
    {"Cross", {0, 0}, {2, 2}, {0, 2}, {2, -2}, {{1, 1}}},
    {"MeetAtAnEnd", {0, 0}, {2, 0}, {2, 0}, {0, 5}, {{2, 0}}},
    {"StopShort", {0, 0}, {2, 0}, {3, -1}, {0, 2}, {}},
    {"SecondStopsShort", {0, 0}, {2, 0}, {1, 1}, {0, 2}, {}},
    {"CrossAtAShallowAngle", {0, 0}, {10, 0}, {0, -1}, {10, 2}, {{5, 0}}},
    {"CrossAtASineJustAbove1In100", {0, 0}, {1, 0}, {0, -0.00505}, {1, 0.0101}, {{0.5, 0}}},
    {"ASineJustBelow1In100IsParallel", {0, 0}, {1, 0}, {0, -0.00495}, {1, 0.0099}, {}},
    {"Parallel", {0, 0}, {2, 0}, {0, 1}, {2, 0}, {}},
    {"Overlap", {0, 0}, {2, 0}, {1, 0}, {2, 0}, {{1, 0}, {2, 0}}},
    {"OverlapBackwards", {0, 0}, {2, 0}, {3, 0}, {-2, 0}, {{1, 0}, {2, 0}}},
    {"Covered", {0, 0}, {2, 0}, {-1, 0}, {9, 0}, {{0, 0}, {2, 0}}},
    {"CollinearApart", {0, 0}, {2, 0}, {3, 0}, {2, 0}, {}},
    {"CollinearBehind", {0, 0}, {2, 0}, {-3, 0}, {2, 0}, {}},
    {"CollinearTouchingTheEnd", {0, 0}, {2, 0}, {2, 0}, {2, 0}, {{2, 0}}},
    {"CollinearTouchingTheStart", {0, 0}, {2, 0}, {-2, 0}, {2, 0}, {{0, 0}}},
    {"SecondWithoutLengthTwice", {0, 0}, {2, 0}, {1, 0}, {0, 0}, {{1, 0}, {1, 0}}},
    {"FirstWithoutLength", {3, 4}, {0, 0}, {9, 9}, {1, 0}, {{3, 4}}},
};

class KSAlgorithmSegments : public testing::TestWithParam<SegmentRow> {};

TEST_P(KSAlgorithmSegments, Meet) {
    const SegmentRow& row = GetParam();
    Vector out[2] = {{-77, -77}, {-77, -77}};
    const int count = KSAlgorithm::findIntersection(row.p, row.d, row.q, row.e, out);
    EXPECT_EQ(std::vector<Vector>(out, out + count), row.points);
    for (int i = count; i < 2; ++i) EXPECT_EQ(out[i], Vector(-77, -77));
}
INSTANTIATE_TEST_SUITE_P(Pairs, KSAlgorithmSegments, testing::ValuesIn(segmentRows),
                         [](const auto& row) { return row.param.name; });

}  // namespace

TEST(KSAlgorithm, LinesNearerThan33DegreesCountAsParallel) {
    const Vector p(0, 0), q(5, -5);
    for (int degrees = 0; degrees <= 180; ++degrees) {
        const double angle = degrees * 3.141592653589793 / 180;
        Vector d(2, 0), out(-77, -77);
        const Vector e(std::cos(angle), std::sin(angle));
        const bool meets = KSAlgorithm::findIntersection(p, d, q, e, out) == 1;
        EXPECT_EQ(meets, degrees >= 34 && degrees <= 146) << degrees;
        if (!meets) {
            EXPECT_EQ(d, Vector(2, 0)) << degrees;
            EXPECT_EQ(out, Vector(-77, -77)) << degrees;
        } else {
            EXPECT_EQ(out, Vector(p.x + d.x, p.y + d.y)) << "the direction is the way to the point now";
            EXPECT_NEAR(out.x, 5 + 5 / std::tan(angle), 1e-5) << degrees;
            EXPECT_EQ(out.y, 0) << degrees;
        }
    }
}

TEST(KSAlgorithm, LineTestHasSinglePrecision) {
    Vector out;
    // Squares of lengths below 1e-11 vanish and those above 1e9 overflow: both count as parallel.
    for (const auto& [length, count] :
         {std::pair(1e-25, 0), {1e-13, 0}, {1e-9, 1}, {1e9, 1}, {1e12, 0}, {1e20, 0}}) {
        Vector d(length, 0);
        const Vector e(0, length);
        EXPECT_EQ(KSAlgorithm::findIntersection({1, 1}, d, {2, 2}, e, out), count) << length;
    }
    Vector d(3, 0);
    ASSERT_EQ(KSAlgorithm::findIntersection({0, 0}, d, {1.0 / 3, 1}, {0, 1}, out), 1);
    EXPECT_EQ(out.x, 3 * static_cast<double>(static_cast<float>(1.0 / 9))) << "the parameter is a float";
}

TEST(KSAlgorithm, SubdivisionKeepsTheCurve) {
    std::mt19937 random(9);
    std::uniform_real_distribution<double> coordinate(-10, 10);
    const auto at = [](const double* p, double u) {
        const double v = 1 - u;
        return v * v * v * p[0] + 3 * v * v * u * p[1] + 3 * v * u * u * p[2] + u * u * u * p[3];
    };
    for (int i = 0; i < 1000; ++i) {
        double x[4], y[4], leftX[4], leftY[4], rightX[4], rightY[4];
        for (int k = 0; k < 4; ++k) x[k] = coordinate(random), y[k] = coordinate(random);
        const double t0 = coordinate(random), t1 = t0 + 1 + std::abs(coordinate(random));
        const double u = (i % 11) / 10.0, t = t0 + u * (t1 - t0);
        KSAlgorithm::DeCasteljauSubdivide(t0, t1, t, x, y, leftX, leftY, rightX, rightY);
        for (double s = 0; s <= 1; s += 0.25) {
            ASSERT_NEAR(at(leftX, s), at(x, u * s), 1e-12);
            ASSERT_NEAR(at(leftY, s), at(y, u * s), 1e-12);
            ASSERT_NEAR(at(rightX, s), at(x, u + s * (1 - u)), 1e-12);
            ASSERT_NEAR(at(rightY, s), at(y, u + s * (1 - u)), 1e-12);
        }
        ASSERT_EQ(leftX[3], rightX[0]);
        double* const same = x;  // an output may be the input
        KSAlgorithm::DeCasteljauSubdivide(t0, t1, t, same, y, same, leftY, rightX, rightY);
        for (int k = 0; k < 4; ++k) ASSERT_EQ(same[k], leftX[k]);
    }
}

TEST(KSAlgorithm, DirectionsSnapToTheNearest) {
    struct Row {
        const char* name;
        Vector v, extra, want;
    };
    const double k = 0.7071067811865476, r = std::sqrt(2.0);
    const Row rows[] = {
        {"RightAndALittleUp", {10, 1}, {0, 0}, {std::sqrt(101.0), 0}},
        {"Left", {-5, 0}, {0, 0}, {-5, 0}},
        {"Down", {0, -5}, {0, 0}, {0, -5}},
        {"Diagonal", {1, 1}, {0, 0}, {r * k, r * k}},
        {"FallingDiagonal", {1, -1}, {0, 0}, {r * k, -r * k}},
        {"RisingLeft", {-1, 1}, {0, 0}, {-r * k, r * k}},
        {"TheExtra", {6, 3}, {2, 1}, {6, 3}},
        {"TheExtraBackwards", {-6, -3}, {2, 1}, {-6, -3}},
        {"AnExtraTooShort", {6, 3}, {2e-8, 1e-8}, {std::sqrt(45.0) * k, std::sqrt(45.0) * k}},
        {"Nothing", {0, 0}, {1, 1}, {0, 0}},
    };
    for (const Row& row : rows) {
        const Vector got = KSAlgorithm::findProjectionOn45DegreesDirection(row.v, row.extra);
        EXPECT_NEAR(got.x, row.want.x, 1e-14) << row.name;
        EXPECT_NEAR(got.y, row.want.y, 1e-14) << row.name;
    }
    const Vector none = KSAlgorithm::findProjectionOn45DegreesDirection({std::nan(""), 1}, {infinity, 1});
    EXPECT_EQ(none, Vector(0, 0)) << "no candidate is nearer than another";
}
