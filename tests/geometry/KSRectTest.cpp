#include <gtest/gtest.h>
#include <kestrel/geometry/KSRect.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>

namespace {

constexpr int big = std::numeric_limits<int>::max(), small = std::numeric_limits<int>::min();

struct MeetRow {
    const char* name;
    KSRect<int> a, b;
    bool meets;
    KSRect<int> left;  // of a, after intersect(b)
};

constexpr MeetRow meetRows[] = {
    {"Overlapping", {0, 10, 5, 5}, {3, 8, 5, 5}, true, {3, 8, 2, 3}},
    {"OneInsideTheOther", {0, 10, 10, 10}, {2, 8, 3, 3}, true, {2, 8, 3, 3}},
    {"TheSame", {0, 10, 10, 10}, {0, 10, 10, 10}, true, {0, 10, 10, 10}},
    {"TouchingLeftToRight", {0, 10, 5, 5}, {5, 10, 5, 5}, false, {0, 10, 0, 0}},
    {"TouchingTopToBottom", {0, 10, 5, 5}, {0, 5, 5, 5}, true, {0, 5, 5, 0}},
    {"TouchingBottomToTop", {0, 5, 5, 5}, {0, 10, 5, 5}, true, {0, 5, 5, 0}},
    {"ApartHorizontally", {0, 10, 5, 5}, {7, 10, 5, 5}, false, {0, 10, 0, 0}},
    {"ApartVerticallyMovesXAllTheSame", {0, 10, 5, 5}, {3, 4, 5, 2}, false, {3, 10, 0, 0}},
    {"EmptyByWidth", {0, 10, 0, 5}, {0, 10, 5, 5}, false, {0, 10, 0, 0}},
    {"EmptyByHeight", {0, 10, 5, 5}, {0, 10, 5, 0}, false, {0, 10, 0, 0}},
    {"NegativeWidthIsNotEmpty", {0, 10, -5, 5}, {-9, 10, 20, 5}, true, {0, 10, -5, 5}},
    {"EdgesBeyondInt", {big - 5, big, big, 5}, {big - 3, big - 1, 3, 3}, true, {big - 3, big - 1, 3, 3}},
    {"LowerEdgeBeyondInt", {0, small + 2, 5, big}, {0, small, 5, 7}, true, {0, small, 5, 7}},
};

class KSRectMeet : public testing::TestWithParam<MeetRow> {};

template <class T>
KSRect<T> as(const KSRect<int>& r) {
    return {static_cast<T>(r.x), static_cast<T>(r.y), static_cast<T>(r.width), static_cast<T>(r.height)};
}

template <class T>
void check(const MeetRow& row) {
    const KSRect<T> a = as<T>(row.a), b = as<T>(row.b);
    EXPECT_EQ(a.intersects(b), row.meets);
    EXPECT_EQ(b.intersects(a), row.meets);
    KSRect<T> got = a;
    EXPECT_EQ(got.intersect(b), row.meets);
    EXPECT_EQ(got, as<T>(row.left)) << got.x << ' ' << got.y << ' ' << got.width << ' ' << got.height;
}

TEST_P(KSRectMeet, InEveryElementType) {
    check<int>(GetParam());
    check<double>(GetParam());
    if (std::abs(GetParam().a.x) < 1000 && GetParam().a.y > small + 1000) check<float>(GetParam());
}
INSTANTIATE_TEST_SUITE_P(Cases, KSRectMeet, testing::ValuesIn(meetRows),
                         [](const auto& row) { return row.param.name; });

struct ClipRow {
    const char* name;
    KSVector2<int> from, to;
    bool meets;
    KSVector2<int> newFrom, newTo;
};

constexpr KSRect<int> window(0, 10, 20, 10);  // [0, 20] x [0, 10]

constexpr ClipRow clipRows[] = {
    {"Inside", {1, 1}, {19, 9}, true, {1, 1}, {19, 9}},
    {"LeftOfIt", {-5, 1}, {-1, 9}, false, {-5, 1}, {-1, 9}},
    {"AboveIt", {1, 11}, {19, 11}, false, {1, 11}, {19, 11}},
    {"TouchingACorner", {-1, 9}, {1, 11}, true, {0, 10}, {0, 10}},
    {"PastACorner", {-3, 9}, {3, 15}, false, {-3, 9}, {3, 15}},
    {"ThroughBothSides", {-10, 5}, {30, 5}, true, {0, 5}, {20, 5}},
    {"DownThroughBoth", {5, 20}, {5, -20}, true, {5, 10}, {5, 0}},
    {"Leaving", {10, 5}, {30, 15}, true, {10, 5}, {20, 10}},
    {"Entering", {-10, 5}, {10, 5}, true, {0, 5}, {10, 5}},
    {"OnAnEdge", {-5, 10}, {25, 10}, true, {0, 10}, {20, 10}},
    {"APointInside", {5, 5}, {5, 5}, true, {5, 5}, {5, 5}},
    {"APointOutside", {5, 15}, {5, 15}, false, {5, 15}, {5, 15}},
    {"TruncatesTowardsZero", {-1, 0}, {2, 8}, true, {0, 2}, {2, 8}},  // enters at (0, 2.67)
};

class KSRectClip : public testing::TestWithParam<ClipRow> {};

TEST_P(KSRectClip, MovesTheEnds) {
    const ClipRow& row = GetParam();
    KSVector2<int> p = row.from, q = row.to;
    EXPECT_EQ(window.clipLine(&p, &q), row.meets);
    EXPECT_EQ(p, row.newFrom);
    EXPECT_EQ(q, row.newTo);
}
INSTANTIATE_TEST_SUITE_P(Cases, KSRectClip, testing::ValuesIn(clipRows),
                         [](const auto& row) { return row.param.name; });

}  // namespace

TEST(KSRect, IntersectsExactlyWhereIntersectSucceeds) {
    std::mt19937 random(12);
    const auto coordinate = [&] { return static_cast<int>(random() % 9) - 4; };
    const auto wild = [&] { return static_cast<int>(random()); };
    for (int i = 0; i < 200000; ++i) {
        KSRect<int> a(coordinate(), coordinate(), coordinate(), coordinate()),
            b(coordinate(), coordinate(), coordinate(), coordinate());
        if (i % 2) a = {wild(), wild(), wild(), wild()}, b = {wild(), wild(), wild(), wild()};
        const bool meets = a.intersects(b);
        KSRect<int> got = a;
        ASSERT_EQ(got.intersect(b), meets) << i;
        if (!meets) {
            ASSERT_TRUE(got.width == 0 && got.height == 0 && got.y == a.y) << i;
        }
    }
    KSRect<double> self(1, 2, 3, 4);
    EXPECT_TRUE(self.intersect(self));
    EXPECT_EQ(self, KSRect<double>(1, 2, 3, 4));
    KSRect<double> unknown(std::nan(""), 2, 3, 4);
    EXPECT_FALSE(unknown.intersects(self));
    EXPECT_FALSE(unknown.intersect(self));
}

TEST(KSRect, ClippedSegmentsLieInsideAndOnTheLine) {
    std::mt19937 random(4);
    std::uniform_real_distribution<double> coordinate(-30, 30);
    const KSRect<double> rect(-5, 7, 11, 13);
    int seen = 0;
    for (int i = 0; i < 50000; ++i) {
        const KSVector2<double> from(coordinate(random), coordinate(random)),
            to(coordinate(random), coordinate(random));
        KSVector2<double> p = from, q = to;
        const bool meets = rect.clipLine(&p, &q);
        bool found = false;  // by looking along the segment
        for (int k = 0; k <= 64 && !found; ++k) {
            const double x = from.x + (to.x - from.x) * k / 64, y = from.y + (to.y - from.y) * k / 64;
            found = x >= -5 && x <= 6 && y >= -6 && y <= 7;
        }
        if (found) {
            ASSERT_TRUE(meets) << i;
        }
        if (!meets) {
            ASSERT_TRUE(p == from && q == to) << i;
            continue;
        }
        ++seen;
        for (const KSVector2<double>& end : {p, q}) {
            ASSERT_TRUE(end.x > -5 - 1e-9 && end.x < 6 + 1e-9 && end.y > -6 - 1e-9 && end.y < 7 + 1e-9) << i;
            ASSERT_NEAR((end.x - from.x) * (to.y - from.y), (end.y - from.y) * (to.x - from.x), 1e-9) << i;
        }
    }
    EXPECT_GT(seen, 5000);
}

TEST(KSRect, ClipSurvivesEveryInt) {
    std::mt19937 random(5);
    const int edges[] = {small, small + 1, -1, 0, 1, big - 1, big};
    const auto value = [&] { return edges[random() % std::size(edges)]; };
    for (int i = 0; i < 100000; ++i) {
        const KSRect<int> rect(value(), value(), value(), value());
        KSVector2<int> p(value(), value()), q(value(), value());
        const KSVector2<int> from = p, to = q;
        if (!rect.clipLine(&p, &q)) {
            ASSERT_TRUE(p == from && q == to);
        } else {
            ASSERT_GE(p.x, std::min(from.x, to.x));
            ASSERT_LE(p.x, std::max(from.x, to.x));
            ASSERT_GE(q.y, std::min(from.y, to.y));
            ASSERT_LE(q.y, std::max(from.y, to.y));
        }
    }
}

TEST(KSRect, FloatsAreClippedInDoubleAndStoredAsFloats) {
    // The way from left to right, 16777217, is no float.
    const KSRect<float> rect(0, 1, 16777216, 2);
    KSVector2<float> p(-1, 0), q(16777216, 0.3f);
    ASSERT_TRUE(rect.clipLine(&p, &q));
    EXPECT_EQ(p, KSVector2<float>(0, static_cast<float>(double{0.3f} / 16777217)));
    EXPECT_EQ(q, KSVector2<float>(16777216, 0.3f));
    KSRect<float> a(0.1f, 0.7f, 0.5f, 0.5f);
    EXPECT_TRUE(a.intersect({0.3f, 0.9f, 0.5f, 0.5f}));
    EXPECT_EQ(a, KSRect<float>(0.3f, 0.7f, (0.1f + 0.5f) - 0.3f, 0.7f - (0.9f - 0.5f)));
    p = {std::nanf(""), 1}, q = {2, 3};
    EXPECT_TRUE(KSRect<float>(0, 5, 5, 5).clipLine(&p, &q)) << "a NaN coordinate rejects nothing";
}
