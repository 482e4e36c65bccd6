#include <kestrel/time/KSTime.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <type_traits>

#include "FakeClock.h"

namespace {

constexpr int intMax = std::numeric_limits<int>::max();
constexpr int intMin = std::numeric_limits<int>::min();
constexpr float infinity = std::numeric_limits<float>::infinity();

static_assert(std::is_trivially_copyable_v<KSTime> && sizeof(KSTime) == 8);
static_assert(KSTime() == KSTime(0x7FFFFFFF, 0x7FFFFFFF));

struct AddRow {
    const char* name;
    KSTime start;
    int seconds, microseconds;
    KSTime want;
};
const auto addRows = std::to_array<AddRow>({
    {"nothing", {5, 6}, 0, 0, {5, 6}},
    {"negative microseconds borrow", {5, -1}, 0, 0, {4, 999999}},
    {"many microseconds carry", {5, 2500000}, 0, 0, {7, 500000}},
    {"exactly a million carries", {0, 999999}, 0, 1, {1, 0}},
    {"exactly zero stays", {0, 1}, 0, -1, {0, 0}},
    {"exactly minus a million", {0, 0}, 0, -1000000, {-1, 0}},
    {"before the epoch", {-3, 200000}, -1, -300000, {-5, 900000}},
    {"largest microseconds", {0, intMax}, 0, intMax, {4294, 967294}},
    {"smallest microseconds", {0, intMin}, 0, intMin, {-4295, 32704}},
    {"seconds stay at the upper limit", {intMax, 0}, intMax, 5, {intMax, 5}},
    {"seconds stay at the lower limit", {intMin, 0}, -1, 0, {intMin, 0}},
    {"to never", {}, 0, 0, {intMax, 483647}},
});

TEST(KSTime, AddsFieldByFieldAndNormalises) {
    for (const auto& row : addRows) {
        KSTime time = row.start;
        time.add(row.seconds, row.microseconds);
        EXPECT_EQ(time.seconds, row.want.seconds) << row.name;
        EXPECT_EQ(time.microseconds, row.want.microseconds) << row.name;
    }
}

struct AddFloatRow {
    float add;
    KSTime want;  // from 100 s 0 us
};
const auto addFloatRows = std::to_array<AddFloatRow>({
    {0.0f, {100, 0}},
    {0.5f, {100, 500000}},
    {0.7f, {100, 700000}},  // 699999 in double precision
    {2.25f, {102, 250000}},
    {-1.5f, {99, 500000}},       // 99 s and (-1.5 - -2) s
    {2.999995f, {101, 999995}},  // 102 s and (2.999995 - 3) s
    {2.99998f, {102, 999980}},   // far enough below a whole number
    {-0.25f, {100, 750000}},     // forwards: the whole part is 0
    {16777216.0f, {16777316, 0}},
    {1e30f, {intMax, 0}},
    {-1e30f, {intMin + 100, 0}},
    {infinity, {intMax, 0}},
    {-infinity, {intMin + 100, 0}},
    {std::numeric_limits<float>::quiet_NaN(), {100, 0}},
    {std::numeric_limits<float>::denorm_min(), {100, 0}},
});

TEST(KSTime, AddingSecondsNormalisesEvenWhenNothingIsAdded) {
    for (const float nothing : {0.0f, std::numeric_limits<float>::quiet_NaN()}) {
        KSTime time(5, -1);
        time.add(nothing);
        EXPECT_EQ(time, KSTime(4, 999999)) << nothing;
    }
}

TEST(KSTime, AddsSecondsInSinglePrecision) {
    for (const auto& row : addFloatRows) {
        KSTime time(100, 0);
        time.add(row.add);
        EXPECT_EQ(time.seconds, row.want.seconds) << row.add;
        EXPECT_EQ(time.microseconds, row.want.microseconds) << row.add;
    }
}

struct NowRow {
    KSTime time;
    bool past, future;  // at 1000 s 500 us
};
const auto nowRows = std::to_array<NowRow>({
    {{1000, 499}, true, false},
    {{1000, 500}, true, false},  // at the instant itself
    {{1000, 501}, false, true},
    {{999, 999999}, true, false},
    {{1001, 0}, false, true},
    {{intMin, 0}, true, false},
    {{999, intMax}, true, false},  // not normalised: the seconds decide
    {{}, false, true},
});

TEST(KSTime, IsPastAtTheInstantAndFutureBeforeIt) {
    FakeClock clock(1000, 500);
    for (const auto& row : nowRows) {
        EXPECT_EQ(row.time.isPast(), row.past) << row.time.seconds << ' ' << row.time.microseconds;
        EXPECT_EQ(row.time.isFuture(), row.future) << row.time.seconds << ' ' << row.time.microseconds;
    }
    EXPECT_EQ(KSTime::now(), KSTime(1000, 500));
}

TEST(KSTime, ClockReadsMoreThan32Bits) {
    FakeClock clock(0x7FFFFFFF, 999999);
    EXPECT_TRUE(KSTime().isFuture());
    clock.set(0x80000000, 0);
    EXPECT_TRUE(KSTime().isPast());
    EXPECT_TRUE(KSTime(intMin, 0).isPast());
    EXPECT_EQ(KSTime::now(), KSTime(intMax, 0));
}

TEST(KSTime, PrintsIndentedWithoutNewline) {
    testing::internal::CaptureStdout();
    KSTime(-12, 34).print(2);
    KSTime(1, 2).print(0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "    -12 sec 34 usec1 sec 2 usec");
}

}  // namespace
