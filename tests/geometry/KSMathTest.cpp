#include <gtest/gtest.h>
#include <kestrel/geometry/KSMath.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

struct TurnRow {
    const char* name;
    float x0, y0, x1, y1, x2, y2;
    bool left;
};

constexpr TurnRow turnRows[] = {
    {"Left", 0, 0, 1, 0, 1, 1, true},
    {"Right", 0, 0, 1, 0, 1, -1, false},
    {"LeftAwayFromTheOrigin", 5, 5, 6, 6, 5, 7, true},
    {"BeyondOnTheSameRay", 0, 0, 1, 1, 2, 2, true},
    {"BetweenOnTheSameRay", 0, 0, 2, 2, 1, 1, false},
    {"TheSamePointTwice", 0, 0, 1, 1, 1, 1, false},
    {"BehindInX", 0, 0, 1, 0, -2, 0, false},
    {"BehindInY", 0, 0, 0, 1, 0, -2, false},
    {"AllOne", 3, 3, 3, 3, 3, 3, false},
    {"TheSecondIsTheFirst", 0, 0, 0, 0, 2, 1, true},
    {"NotANumberCountsAsCollinear", 0, 0, 1, 0, notANumber, 1, true},
    {"SinglePrecisionSeesNoTurn", 0, 0, 1e8f, 1e8f, 2e8f, 2e8f + 1, true},
    {"SinglePrecisionRoundsTheProducts", 0, 0, 4096, 4097, 4097, 4098, true},
};

class KSMathTurn : public testing::TestWithParam<TurnRow> {};

TEST_P(KSMathTurn, IsSeen) {
    const TurnRow& r = GetParam();
    EXPECT_EQ(KSMath::areCounterClockWise(r.x0, r.y0, r.x1, r.y1, r.x2, r.y2), r.left);
}
INSTANTIATE_TEST_SUITE_P(Cases, KSMathTurn, testing::ValuesIn(turnRows),
                         [](const auto& row) { return row.param.name; });

}  // namespace

TEST(KSMath, ByteSwapReversesTheFourBytes) {
    static_assert(std::bit_cast<std::uint32_t>(KSMath::byteSwap(std::bit_cast<float>(0x01020304u))) ==
                  0x04030201u);
    for (const std::uint32_t bits : {0u, 0x3F800000u, 0x0000807Fu, 0xFFFFFFFFu, 0x7FA00000u, 0xDEADBEEFu}) {
        const float swapped = KSMath::byteSwap(std::bit_cast<float>(bits));
        EXPECT_EQ(std::bit_cast<std::uint32_t>(swapped), __builtin_bswap32(bits)) << std::hex << bits;
    }
}

TEST(KSMath, GammalnFollowsTheLogarithmOfGamma) {
    for (double x = 0.01; x < 200; x *= 1.07)
        EXPECT_NEAR(KSMath::gammaln(x), std::lgamma(x), 2e-9 * (1 + x)) << x;
    EXPECT_EQ(KSMath::gammaln(0.5), 0.57236494292474305);
}

namespace {

/// The two expansions as they are defined, term by term.
double erfByTheSteps(double x) {
    const double z = x * x, g = KSMath::gammaln(0.5);
    double magnitude = 0;
    if (z < 1.5) {
        double ap = 0.5, del = 2, sum = 2;
        for (int n = 0; z > 0 && n < 100; ++n) {
            ap += 1, del *= z / ap, sum += del;
            if (std::fabs(del) < std::fabs(sum) * 3e-7) {
                magnitude = sum * std::exp(-z + 0.5 * std::log(z) - g);
                break;
            }
        }
    } else {
        double b = z + 0.5, c = 1e30, d = 1 / b, h = d;
        for (int i = 1; i <= 100; ++i) {
            const double an = -i * (i - 0.5);
            b += 2;
            d = an * d + b, d = std::fabs(d) < 1e-30 ? 1e30 : 1 / d;
            c = b + an / c, c = std::fabs(c) < 1e-30 ? 1e-30 : c;
            h *= d * c;
            if (std::fabs(d * c - 1) < 3e-7) break;
        }
        magnitude = 1 - h * std::exp(-z + 0.5 * std::log(z) - g);
    }
    return std::signbit(x) ? -magnitude : magnitude;
}

}  // namespace

TEST(KSMath, ErfTakesTheStepsOfItsExpansions) {
    for (double x = -7; x < 7; x += 0.00137) {
        ASSERT_EQ(KSMath::erf(x), erfByTheSteps(x)) << x;
        ASSERT_NEAR(KSMath::erf(x), std::erf(x), 4e-7) << x;
        ASSERT_EQ(KSMath::erf(-x), -KSMath::erf(x)) << x;
    }
}

TEST(KSMath, ErfAtTheEdges) {
    using limits = std::numeric_limits<double>;
    EXPECT_EQ(KSMath::erf(0.0), 0);
    EXPECT_FALSE(std::signbit(KSMath::erf(0.0)));
    EXPECT_TRUE(std::signbit(KSMath::erf(-0.0)));
    EXPECT_EQ(KSMath::erf(limits::denorm_min()), 0) << "its square is 0";
    EXPECT_TRUE(std::signbit(KSMath::erf(-limits::denorm_min())));
    EXPECT_EQ(KSMath::erf(10), 1);
    EXPECT_EQ(KSMath::erf(-1e100), -1);
    EXPECT_TRUE(std::isnan(KSMath::erf(limits::quiet_NaN())));
    EXPECT_TRUE(std::isnan(KSMath::erf(limits::infinity()))) << "infinity less infinity in the exponent";
}
