#include <kestrel/time/KSTimeValue.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

static_assert(KSRecipFrameParts == 0.00390625);

struct RateRow {
    double given, rate;
    bool ntsc;
    double display;
};
const auto rateRows = std::to_array<RateRow>({
    {29.97, 30.0, true, 29.97},
    {23.976, 24.0, true, 23.98},
    {59.94, 60.0, true, 59.94},
    {29.9000001, 30.0, true, 29.97},
    {29.9, 29.9, false, 29.9},  // 0.1 below, or a little more: too far
    {59.8, 59.8, false, 59.8},
    {30.0, 30.0, false, 30.0},  // not below
    {30.05, 30.05, false, 30.05},
    {25.0, 25.0, false, 25.0},
    {24.975, 24.975, false, 24.975},  // 25 has no such rate
    {47.952, 47.952, false, 47.952},
    {std::nextafter(60.0, 0.0), 60.0, true, 59.94},
    {0.0, 0.0, false, 0.0},
    {-30.03, -30.03, false, -30.03},
    {1e300, 1e300, false, 1e300},
    {infinity, infinity, false, infinity},
    {-infinity, -infinity, false, -infinity},
});

TEST(KSTimeValue, RecognisesTheRatesJustBelow24And30And60) {
    for (const auto& row : rateRows) {
        const KSTimeValue value(row.given);
        EXPECT_EQ(value.time, 0.0) << row.given;
        EXPECT_EQ(value.rate, row.rate) << row.given;
        EXPECT_EQ(value.ntsc, row.ntsc) << row.given;
        EXPECT_DOUBLE_EQ(value.getDisplayRate(), row.display) << row.given;
    }
    const KSTimeValue nan(std::nan(""));
    EXPECT_TRUE(std::isnan(nan.rate) && std::isnan(nan.getDisplayRate()) && !nan.ntsc);
}

TEST(KSTimeValue, SetRateTakesTheFlagAndNeverClearsIt) {
    KSTimeValue value(2.5, 25.0, true);
    EXPECT_EQ(value, KSTimeValue(2.5, 25.0, true));
    EXPECT_DOUBLE_EQ(value.getDisplayRate(), 24.98);  // 24.975...
    value.setRate(29.97, false);
    EXPECT_EQ(value, KSTimeValue(2.5, 30.0, true));
    value.setRate(30.0, false);
    EXPECT_EQ(value, KSTimeValue(2.5, 30.0, false));
    value.setRate(30.0, true);
    EXPECT_DOUBLE_EQ(value.getDisplayRate(), 29.97);
}

}  // namespace
