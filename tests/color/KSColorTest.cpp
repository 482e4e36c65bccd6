// The value and its arithmetic; the conversions have a test of their own.
#include <kestrel/color/KSColor.h>

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>

static_assert(sizeof(KSColor) == 20 && std::is_trivially_copyable_v<KSColor>);
static_assert(KSColor() == KSColor::BLACK && KSColor::CLEAR != KSColor::BLACK);
static_assert(KSColor(KSColor::HSV, 0, 1, 1, 1) == KSColor::RED, "conversions serve in constant expressions");

namespace {

constexpr auto allTypes = std::to_array(
    {KSColor::HSL, KSColor::HSV, KSColor::HWB, KSColor::RGB, KSColor::YIQ, KSColor::YUV, KSColor::CLU});
constexpr auto unknownType = static_cast<KSColor::Type>(7);
constexpr float infinity = std::numeric_limits<float>::infinity();

/// Bit for bit, unlike operator==.
void expectSame(const KSColor& got, const KSColor& want) {
    EXPECT_EQ(got.type, want.type);
    EXPECT_EQ(got.c0, want.c0);
    EXPECT_EQ(got.c1, want.c1);
    EXPECT_EQ(got.c2, want.c2);
    EXPECT_EQ(got.alpha, want.alpha);
}

// Read by a static initialiser of this file: the constants must hold their values by then.
const float redAtLoad = KSColor::RED.c0 + KSColor::WHITE.c2 + KSColor::YELLOW.alpha;

TEST(KSColor, ConstantsHoldTheirValuesBeforeOtherInitialisers) {
    EXPECT_EQ(redAtLoad, 3);
    expectSame(KSColor::GREEN, {KSColor::RGB, 0, 1, 0, 1});
    expectSame(KSColor::BLUE, {KSColor::RGB, 0, 0, 1, 1});
    expectSame(KSColor::YELLOW, {KSColor::RGB, 1, 1, 0, 1});
    expectSame(KSColor::CLEAR, {KSColor::RGB, 0, 0, 0, 0});
    expectSame(KSColor(KSColor::CLU), {KSColor::CLU, 0, 0, 0, 1});
}

struct ScalarRow {
    KSColor::Type type;
    bool changes[3];
};
constexpr auto scalarRows = std::to_array<ScalarRow>({
    {KSColor::HSL, {false, false, true}},
    {KSColor::HSV, {false, false, true}},
    {KSColor::HWB, {false, true, false}},
    {KSColor::RGB, {true, true, true}},
    {KSColor::YIQ, {true, true, true}},
    {KSColor::YUV, {true, true, true}},
    {KSColor::CLU, {true, false, false}},
    {unknownType, {false, false, false}},
});

TEST(KSColor, ScalarOperatorsTouchOnlyTheComponentsOfIntensity) {
    for (const ScalarRow& row : scalarRows) {
        SCOPED_TRACE(static_cast<unsigned>(row.type));
        const KSColor start(row.type, 8, 16, 32, 0.5f);
        const auto expected = [&](auto change) {
            KSColor want = start;
            if (row.changes[0]) want.c0 = change(want.c0);
            if (row.changes[1]) want.c1 = change(want.c1);
            if (row.changes[2]) want.c2 = change(want.c2);
            return want;
        };
        KSColor c = start;
        c += 2;
        expectSame(c, expected([](float v) { return v + 2; }));
        c = start;
        c -= 2;
        expectSame(c, expected([](float v) { return v - 2; }));
        c = start;
        c *= 3;
        expectSame(c, expected([](float v) { return v * 3; }));
        c = start;
        c /= 3;
        expectSame(c, expected([](float v) { return v / 3; }));
        c = start;
        c /= 0;
        c.div(0);
        expectSame(c, start);
    }
}

TEST(KSColor, PlainArithmeticAndMixAreBlindToTheModel) {
    for (KSColor::Type type : allTypes) {
        KSColor c(type, 1, 2, 3, 0.5f);
        expectSame(c.add(1).mul(6).sub(2).div(2), {type, 5, 8, 11, 0.5f});
        expectSame(c.mix(KSColor(KSColor::HWB, 1, 0, 3, 0), 0.25f), {type, 4, 6, 9, 0.5f});
    }
}

struct PairRow {
    const char* name;
    KSColor left, right, sum, difference;
};
const auto pairRows = std::to_array<PairRow>({
    {"RGB",
     {KSColor::RGB, 1, 2, 3, 0.5f},
     {KSColor::RGB, 4, 8, 16, 1},
     {KSColor::RGB, 5, 10, 19, 0.5f},
     {KSColor::RGB, -3, -6, -13, 0.5f}},
    {"ConvertsTheOther",
     {KSColor::RGB, 0, 0, 0.5f, 1},
     {KSColor::HSV, 120, 1, 1, 1},
     {KSColor::RGB, 0, 1, 0.5f, 1},
     // the negated HSV colour (-120, -1, -1) reads as RGB (-2, -2, -1): t = p = -1 * (1 + 1)
     {KSColor::RGB, -2, -2, -0.5f, 1}},
    {"GreyHsvKeepsHueAndSaturation",
     {KSColor::HSV, 200, 0, 0.25f, 1},
     {KSColor::HSV, 90, 1, 0.5f, 1},
     {KSColor::HSV, 200, 0, 0.75f, 1},
     {KSColor::HSV, 200, 0, -0.25f, 1}},
    {"ColourfulHslAddsAHue",
     {KSColor::HSL, 200, 0.5f, 0.25f, 1},
     {KSColor::HSL, 90, 0.25f, 0.5f, 1},
     {KSColor::HSL, 290, 0.75f, 0.75f, 1},
     {KSColor::HSL, 110, 0.25f, -0.25f, 1}},
    {"SubtractingAGreyHsvDoesNotNegateItsHue",
     {KSColor::HSV, 10, 0.5f, 1, 1},
     {KSColor::HSV, 90, 0, 0.5f, 1},
     {KSColor::HSV, 100, 0.5f, 1.5f, 1},
     {KSColor::HSV, 100, 0.5f, 0.5f, 1}},
    {"GreyHwbKeepsItsHue",
     {KSColor::HWB, 50, 0.25f, 0.75f, 1},
     {KSColor::HWB, 90, 0.5f, 0.25f, 1},
     {KSColor::HWB, 50, 0.75f, 1, 1},
     {KSColor::HWB, 50, -0.25f, 0.5f, 1}},
    {"SubtractingAGreyHwbDoesNotNegateItsHue",
     {KSColor::HWB, 50, 0.25f, 0.25f, 1},
     {KSColor::HWB, 90, 0.5f, 0.5f, 1},
     {KSColor::HWB, 140, 0.75f, 0.75f, 1},
     {KSColor::HWB, 140, -0.25f, -0.25f, 1}},
    {"NearlyGreyHsvIsGrey",
     {KSColor::HSV, 200, 0.9e-5f, 0.25f, 1},
     {KSColor::HSV, 90, -0.9e-5f, 0.5f, 1},
     {KSColor::HSV, 200, 0.9e-5f, 0.75f, 1},
     {KSColor::HSV, 200, 0.9e-5f, -0.25f, 1}},
    {"AtTheToleranceHslIsColourful",
     {KSColor::HSL, 200, 1e-5f, 0.25f, 1},
     {KSColor::HSL, 90, 1e-5f, 0.5f, 1},
     {KSColor::HSL, 290, 2e-5f, 0.75f, 1},
     {KSColor::HSL, 110, 0, -0.25f, 1}},
    {"SubtractingANearlyGreyHslDoesNotNegateItsHue",
     {KSColor::HSL, 10, 0.5f, 1, 1},
     {KSColor::HSL, 90, 0.9e-5f, 0.5f, 1},
     {KSColor::HSL, 100, 0.5f + 0.9e-5f, 1.5f, 1},
     {KSColor::HSL, 100, 0.5f + 0.9e-5f, 0.5f, 1}},
    {"NearlyGreyHwbIsGrey",
     {KSColor::HWB, 50, 0, 1 - 0.9e-5f, 1},
     {KSColor::HWB, 90, 0.5f, 0, 1},
     {KSColor::HWB, 50, 0.5f, 1 - 0.9e-5f, 1},
     {KSColor::HWB, 50, -0.5f, 1 - 0.9e-5f, 1}},
    {"BarelyColourfulHwbAddsAHue",
     {KSColor::HWB, 50, 0, 1 - 1.1e-5f, 1},
     {KSColor::HWB, 90, 0.5f, 0, 1},
     {KSColor::HWB, 140, 0.5f, 1 - 1.1e-5f, 1},
     {KSColor::HWB, -40, -0.5f, 1 - 1.1e-5f, 1}},
    {"YuvAddsAll",
     {KSColor::YUV, 1, 2, 3, 1},
     {KSColor::YUV, 4, 8, 16, 1},
     {KSColor::YUV, 5, 10, 19, 1},
     {KSColor::YUV, -3, -6, -13, 1}},
    {"CluIsAddedButNotSubtracted",
     {KSColor::CLU, 1, 2, 3, 1},
     {KSColor::CLU, 4, 8, 16, 1},
     {KSColor::CLU, 5, 10, 19, 1},
     {KSColor::CLU, 1, 2, 3, 1}},
    {"HwbMinusCluGrowsBlacker",
     {KSColor::HWB, 50, 0.25f, 0.25f, 1},
     {KSColor::CLU, 0, 0, 0, 1},
     {KSColor::HWB, 50, 0.25f, 1.25f, 1},
     {KSColor::HWB, 50, 0.25f, 1.25f, 1}},
});

TEST(KSColor, AddsAndSubtractsColours) {
    for (const PairRow& row : pairRows) {
        SCOPED_TRACE(row.name);
        KSColor sum = row.left, difference = row.left;
        expectSame(sum += row.right, row.sum);
        expectSame(difference -= row.right, row.difference);
    }
    KSColor twice(KSColor::RGB, 1, 2, 3, 1);
    expectSame(twice += twice, {KSColor::RGB, 2, 4, 6, 1});
}

struct ClampRow {
    const char* name;
    KSColor color, clamped;
};
const auto clampRows = std::to_array<ClampRow>({
    {"HslTwoTurns", {KSColor::HSL, 725, 2, -1, 2}, {KSColor::HSL, 5, 1, 0, 1}},
    {"HslNegative", {KSColor::HSL, -30, 1, 1, -1}, {KSColor::HSL, 330, 1, 1, 0}},
    {"HslFullTurnStays", {KSColor::HSL, 360, 1, 1, 1}, {KSColor::HSL, 360, 1, 1, 1}},
    {"HslTenTurnsStepByStep", {KSColor::HSL, 3600, 1, 1, 1}, {KSColor::HSL, 360, 1, 1, 1}},
    {"HslFar", {KSColor::HSL, 10000, 1, 1, 1}, {KSColor::HSL, 280, 1, 1, 1}},
    {"HslFarNegative", {KSColor::HSL, -10000, 1, 1, 1}, {KSColor::HSL, 80, 1, 1, 1}},
    {"HslElevenTurnsFoldToZero", {KSColor::HSL, 3960, 1, 1, 1}, {KSColor::HSL, 0, 1, 1, 1}},
    {"HslHuge", {KSColor::HSL, 0x1p100f, 1, 1, 1}, {KSColor::HSL, 16, 1, 1, 1}},  // 2^100 mod 360
    {"HsvGreyLosesItsHue", {KSColor::HSV, 90, -0.5f, 0.5f, 1}, {KSColor::HSV, 0, 0, 0.5f, 1}},
    {"HsvNearlyGreyLosesItsHue", {KSColor::HSV, 90, 0.9e-5f, 0.5f, 1}, {KSColor::HSV, 0, 0.9e-5f, 0.5f, 1}},
    {"HsvAtTheToleranceKeepsItsHue", {KSColor::HSV, 90, 1e-5f, 0.5f, 1}, {KSColor::HSV, 90, 1e-5f, 0.5f, 1}},
    {"HwbNearlyGreyLosesItsHue", {KSColor::HWB, 90, 0, 0.999991f, 1}, {KSColor::HWB, 0, 0, 0.999991f, 1}},
    {"HwbBarelyColourfulKeepsItsHue",
     {KSColor::HWB, 90, 0, 0.999989f, 1},
     {KSColor::HWB, 90, 0, 0.999989f, 1}},
    {"HwbGreyLosesItsHue", {KSColor::HWB, 90, 0.25f, 0.75f, 1}, {KSColor::HWB, 0, 0.25f, 0.75f, 1}},
    {"HwbExcessStays", {KSColor::HWB, 370, 0.75f, 5, 1}, {KSColor::HWB, 10, 0.75f, 1, 1}},
    {"Rgb", {KSColor::RGB, -1, 0.5f, 2, 1}, {KSColor::RGB, 0, 0.5f, 1, 1}},
    {"YuvLow", {KSColor::YUV, -9, -9, -9, 1}, {KSColor::YUV, 0, -0.436f, -0.615f, 1}},
    {"YuvHigh", {KSColor::YUV, 9, 9, 9, 1}, {KSColor::YUV, 1, 0.436f, 0.615f, 1}},
    {"CluKeepsLAndU", {KSColor::CLU, 9, 9, -9, 1}, {KSColor::CLU, 1, 9, -9, 1}},
    {"Infinity", {KSColor::RGB, infinity, -infinity, 0, infinity}, {KSColor::RGB, 1, 0, 0, 1}},
});

TEST(KSColor, Clamps) {
    for (const ClampRow& row : clampRows) {
        SCOPED_TRACE(row.name);
        KSColor c = row.color;
        c.clamp();
        expectSame(c, row.clamped);
    }
}

TEST(KSColor, ClampsYiqToLimitsOneUnitApart) {
    KSColor low(KSColor::YIQ, -9, -9, -9, 1), high(KSColor::YIQ, 9, 9, 9, 1);
    low.clamp();
    high.clamp();
    EXPECT_EQ(low.c0, 0);
    EXPECT_EQ(high.c0, 1);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(low.c1), 0xBF189374u);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(high.c1), 0x3F189375u);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(low.c2), 0xBE8C49BAu);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(high.c2), 0x3E8C49BBu);
}

TEST(KSColor, ClampEndsForHuesThatAreNoNumbers) {
    for (const float hue : {infinity, -infinity, std::numeric_limits<float>::quiet_NaN()}) {
        KSColor c(KSColor::HSV, hue, 1, 1, 1);
        c.clamp();
        EXPECT_NE(c.c0, c.c0);  // NaN
    }
}

TEST(KSColor, InvertClampsFirstWhateverTheModel) {
    KSColor c(KSColor::RGB, 2, 0.25f, -1, 3);
    c.invert();
    expectSame(c, {KSColor::RGB, 0, 0.75f, 1, 1});
    c = {KSColor::HSL, 365, 0.25f, 2, 0.5f};
    c.invert();
    expectSame(c, {KSColor::HSL, -4, 0.75f, 0, 0.5f});
}

TEST(KSColor, EqualityIsStrictAtItsToleranceInEveryField) {
    const KSColor base(KSColor::YUV, 0, 0, 0, 0);
    for (int field = 0; field < 4; ++field) {
        for (const auto& [offset, equal] : {std::pair{0.99e-5f, true},
                                            {1e-5f, false},
                                            {-0.99e-5f, true},
                                            {-1e-5f, false},
                                            {std::numeric_limits<float>::quiet_NaN(), false}}) {
            KSColor other = base;
            (field == 0 ? other.c0 : field == 1 ? other.c1 : field == 2 ? other.c2 : other.alpha) = offset;
            EXPECT_EQ(base == other, equal) << field << ' ' << offset;
            EXPECT_EQ(base != other, !equal) << field << ' ' << offset;
        }
    }
    EXPECT_TRUE(KSColor(KSColor::HSL, 240, 1, 0.5f, 1) == KSColor(KSColor::HSV, 240, 1, 1, 1));
    EXPECT_FALSE(KSColor(KSColor::HSL, 240, 1, 0.5f, 0) == KSColor(KSColor::HSV, 240, 1, 1, 1));
}

TEST(KSColor, LooseComparisonNeedsOneComponent) {
    const KSColor red = KSColor::RED;
    EXPECT_TRUE(red.colorCompare(KSColor::WHITE, 0.01f));
    EXPECT_TRUE(
        KSColor(KSColor::RGB, 0, 1, 0.5f, 1).colorCompare(KSColor(KSColor::RGB, 1, 0, 0.5f, 0), 0.01f));
    EXPECT_FALSE(KSColor(KSColor::RGB, 0, 0, 0, 1).colorCompare(KSColor(KSColor::RGB, 1, 1, 1, 1), 1))
        << "strict";
    EXPECT_FALSE(red.colorCompare(KSColor(KSColor::RGB, 0, 1, 1, 1), 0.5f));
    // HSV (120, 1, 1) is RGB green: blue matches red's blue
    EXPECT_TRUE(red.colorCompare(KSColor(KSColor::HSV, 120, 1, 1, 1), 0.01f));
    // red as HSV is (0, 1, 1)
    EXPECT_FALSE(KSColor(KSColor::HSV, 120, 0, 0, 1).colorCompare(red, 0.5f));
}

}  // namespace
