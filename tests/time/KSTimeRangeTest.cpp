#include <kestrel/time/KSTimeRange.h>

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <ostream>
#include <type_traits>

void PrintTo(const KSTimeRange& range, std::ostream* out) {
    *out << '(' << range.start << ", " << range.duration << ')';
}

namespace {

static_assert(std::is_trivially_copyable_v<KSTimeRange>);
static_assert(KSTimeRange(0, 10).getIntersectionWith({5, 10}) == KSTimeRange(5, 5));

struct RangeRow {
    const char* name;
    KSTimeRange a, b, both, all;
};
const auto rangeRows = std::to_array<RangeRow>({
    {"overlap", {0, 10}, {5, 10}, {5, 5}, {0, 15}},
    {"touching", {0, 5}, {5, 5}, {0, 0}, {0, 10}},
    {"one shared frame", {0, 5}, {4, 5}, {4, 1}, {0, 9}},
    {"inside", {0, 10}, {3, 2}, {3, 2}, {0, 10}},
    {"apart", {-20, 5}, {10, 5}, {0, 0}, {-20, 35}},
    {"the same", {7, 3}, {7, 3}, {7, 3}, {7, 3}},
    {"half a frame of overlap is none", {0, 5}, {4.5f, 5}, {0, 0}, {0, 9.5f}},
    {"fractions", {0.5f, 4}, {1.25f, 4}, {1.25f, 3.25f}, {0.5f, 4.75f}},
    {"an empty range at 3 ends at 2", {3, 0}, {0, 10}, {0, 0}, {0, 10}},
    {"negative duration", {0, -5}, {0, 10}, {0, 0}, {0, 10}},
    {"an end that single precision rounds", {16777215, 3}, {16777216, 10}, {16777216, 2}, {16777215, 11}},
});

TEST(KSTimeRange, IntersectsAndUnitesWithTheLastFrameIncluded) {
    for (const auto& row : rangeRows) {
        EXPECT_EQ(row.a.getIntersectionWith(row.b), row.both) << row.name;
        EXPECT_EQ(row.b.getIntersectionWith(row.a), row.both) << row.name;
        EXPECT_EQ(row.a.getUnionWith(row.b), row.all) << row.name;
        EXPECT_EQ(row.b.getUnionWith(row.a), row.all) << row.name;
        KSTimeRange range = row.a;
        range.setAsIntersectionWith(row.b);
        EXPECT_EQ(range, row.both) << row.name;
        range = row.a;
        range.setAsUnionWith(row.b);
        EXPECT_EQ(range, row.all) << row.name;
    }
}

TEST(KSTimeRange, KeepsTheLargestRangesFinite) {
    constexpr float largest = std::numeric_limits<float>::max();
    const KSTimeRange range(-largest / 2, largest);  // its end is near 0
    EXPECT_EQ(range.getIntersectionWith(range), range);
    EXPECT_EQ(range.getUnionWith(range), range);
}

}  // namespace
