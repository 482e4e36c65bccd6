// The arithmetic of kestrel render: blend formulas, placement and keyframes.
#include <gtest/gtest.h>
#include <kestrel/geometry/KSVector2.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <random>
#include <string>
#include <vector>

#include "../../tools/kestrel/render/Animation.h"
#include "../../tools/kestrel/render/BlendFormulas.h"
#include "../../tools/kestrel/render/Placement.h"

namespace {

using namespace kestrel::tools::render;
using Color = std::array<float, 3>;
using Pixel = std::array<float, 4>;  // premultiplied

constexpr Color backdrops[] = {{0.2f, 0.5f, 0.9f}, {0.1f, 0.7f, 0.4f}};
constexpr Color sources[] = {{0.6f, 0.3f, 0.8f}, {0.9f, 0.15f, 0.55f}};

struct FormulaRow {
    const char* name;
    KSBlendMode mode;
    Color results[2];  // of B for both pairs, calculated from the sources' own texts
};
constexpr FormulaRow blendRows[] = {
    {"Normal", KSBlendModeNormal, {{0.6f, 0.3f, 0.8f}, {0.9f, 0.15f, 0.55f}}},
    {"Darken", KSBlendModeDarken, {{0.2f, 0.3f, 0.8f}, {0.1f, 0.15f, 0.4f}}},
    {"Multiply", KSBlendModeMultiply, {{0.12f, 0.15f, 0.72f}, {0.09f, 0.105f, 0.22f}}},
    {"ColorBurn", KSBlendModeColorBurn, {{0, 0, 0.875f}, {0, 0, 0}}},
    {"LinearBurn", KSBlendModeLinearBurn, {{0, 0, 0.7f}, {0, 0, 0}}},
    {"DarkerColor", KSBlendModeDarkerColor, {{0.6f, 0.3f, 0.8f}, {0.9f, 0.15f, 0.55f}}},
    {"Lighten", KSBlendModeLighten, {{0.6f, 0.5f, 0.9f}, {0.9f, 0.7f, 0.55f}}},
    {"Screen", KSBlendModeScreen, {{0.68f, 0.65f, 0.98f}, {0.91f, 0.745f, 0.73f}}},
    {"ColorDodge", KSBlendModeColorDodge, {{0.5f, 0.714286f, 1}, {1, 0.823529f, 0.888889f}}},
    {"Add", KSBlendModeAdd, {{0.8f, 0.8f, 1}, {1, 0.85f, 0.95f}}},
    {"LighterColor", KSBlendModeLighterColor, {{0.2f, 0.5f, 0.9f}, {0.1f, 0.7f, 0.4f}}},
    {"Overlay", KSBlendModeOverlay, {{0.24f, 0.3f, 0.96f}, {0.18f, 0.49f, 0.44f}}},
    {"SoftLight", KSBlendModeSoftLight, {{0.2496f, 0.4f, 0.92921f}, {0.2568f, 0.553f, 0.423246f}}},
    {"HardLight", KSBlendModeHardLight, {{0.36f, 0.3f, 0.96f}, {0.82f, 0.21f, 0.46f}}},
    {"VividLight", KSBlendModeVividLight, {{0.25f, 0.166667f, 1}, {0.5f, 0, 0.444444f}}},
    {"LinearLight", KSBlendModeLinearLight, {{0.4f, 0.1f, 1}, {0.9f, 0, 0.5f}}},
    {"PinLight", KSBlendModePinLight, {{0.2f, 0.5f, 0.9f}, {0.8f, 0.3f, 0.4f}}},
    {"HardMix", KSBlendModeHardMix, {{0, 0, 1}, {1, 0, 0}}},
    {"Difference", KSBlendModeDifference, {{0.4f, 0.2f, 0.1f}, {0.8f, 0.55f, 0.15f}}},
    {"Exclusion", KSBlendModeExclusion, {{0.56f, 0.5f, 0.26f}, {0.82f, 0.64f, 0.51f}}},
    {"Hue", KSBlendModeHue, {{0.671f, 0.251f, 0.951f}, {0.8718f, 0.2718f, 0.5918f}}},
    {"Saturation",
     KSBlendModeSaturation,
     {{0.272571f, 0.486857f, 0.772571f}, {0.00325f, 0.75325f, 0.37825f}}},
    {"Color", KSBlendModeColor, {{0.609f, 0.309f, 0.809f}, {0.968f, 0.218f, 0.618f}}},
    {"Luminosity", KSBlendModeLuminosity, {{0.191f, 0.491f, 0.891f}, {0.032f, 0.632f, 0.332f}}},
    {"Average", KSBlendModeAverage, {{0.4f, 0.4f, 0.85f}, {0.5f, 0.425f, 0.475f}}},
    {"Subtract", KSBlendModeSubtract, {{0, 0.2f, 0.1f}, {0, 0.55f, 0}}},
    {"Divide", KSBlendModeDivide, {{0.333333f, 1, 1}, {0.111111f, 1, 0.727273f}}},
};

Pixel pixel(const Color& color, float alpha) {
    return {color[0] * alpha, color[1] * alpha, color[2] * alpha, alpha};
}

/// The mode on one pixel, through a row long enough for whole vectors and a tail.
Pixel blend(KSBlendMode mode, const Pixel& backdrop, const Pixel& source, float opacity) {
    constexpr std::size_t pixels = 11;
    std::vector<float> below, above;
    for (std::size_t c = 0; c < 4; ++c) {
        below.insert(below.end(), pixels, backdrop[c]);
        above.insert(above.end(), pixels, source[c]);
    }
    blendRow(mode)({below.data(), pixels}, {above.data(), pixels}, pixels, opacity);
    Pixel result;
    for (std::size_t c = 0; c < 4; ++c) {
        result[c] = below[c * pixels];
        for (std::size_t i = 0; i < pixels; ++i) EXPECT_EQ(below[c * pixels + i], result[c]);
    }
    return result;
}

}  // namespace

TEST(RenderPixels, EveryModeThatIsOfferedHasItsFormulaOrNone) {
    for (const KSBlendMode mode : KSBlend::getLayerBlendModes()) {
        const bool hasNone = mode == KSBlendModePassThrough || mode == KSBlendModeSeparator;
        EXPECT_EQ(blendRow(mode) == nullptr, hasNone) << mode;
    }
    EXPECT_EQ(blendRow(KSBlendModeReserved), nullptr);
}

TEST(RenderPixels, FormulasAndTheirCompositing) {
    for (const FormulaRow& row : blendRows)
        for (int pair = 0; pair < 2; ++pair)
            for (const float under : {1.0f, 0.6f})
                for (const float over : {1.0f, 0.7f})
                    for (const float opacity : {1.0f, 0.5f}) {
                        const Pixel result = blend(row.mode, pixel(backdrops[pair], under),
                                                   pixel(sources[pair], over), opacity);
                        const float alpha = over * opacity;
                        for (std::size_t c = 0; c < 3; ++c)
                            EXPECT_NEAR(result[c],
                                        (1 - under) * alpha * sources[pair][c] +
                                            (1 - alpha) * under * backdrops[pair][c] +
                                            alpha * under * row.results[pair][c],
                                        2e-6)
                                << row.name << ' ' << pair << ' ' << under << ' ' << over << ' ' << opacity;
                        EXPECT_NEAR(result[3], alpha + under - alpha * under, 1e-6) << row.name;
                    }
}

TEST(RenderPixels, ExtremesStayWithinTheirAlpha) {
    const float levels[] = {0, 0.25f, 0.5f, 1};
    for (const FormulaRow& row : blendRows)
        for (const float b : levels)
            for (const float s : levels)
                for (const float under : {0.0f, 0.5f, 1.0f})
                    for (const float over : {0.0f, 0.5f, 1.0f}) {
                        const Pixel below = pixel({b, b, 1 - b}, under), above = pixel({s, 1 - s, s}, over);
                        const Pixel result = blend(row.mode, below, above, 1);
                        for (const float number : result) {
                            EXPECT_GE(number, -1e-6f) << row.name << ' ' << b << ' ' << s;
                            EXPECT_LE(number, result[3] + 1e-6f) << row.name << ' ' << b << ' ' << s;
                        }
                        if (over == 0) {
                            EXPECT_EQ(result, below) << row.name;
                        }
                        if (under == 0) {
                            EXPECT_EQ(result, above) << row.name;
                        }
                    }
}

TEST(RenderPixels, PlacementTakesThePixelUnderEachCentre) {
    constexpr int width = 13, height = 7, canvasWidth = 40, canvasHeight = 30;
    std::vector<float> source;
    for (int i = 0; i < width * height; ++i)
        for (int c = 0; c < 4; ++c) source.push_back(static_cast<float>(i * 4 + c));
    std::mt19937 random(7);
    const auto number = [&](double low, double high) {
        return low + (high - low) * static_cast<double>(random()) / 4294967296.0;
    };
    int seen = 0;
    for (int round = 0; round < 300; ++round) {
        KSMatrix33 matrix;
        const double size = round % 5 == 0 ? 1e-3 : round % 7 == 0 ? 1e4 : 1;
        matrix.setTransformation(number(-10, 50), number(-10, 40), round % 3 ? number(-4, 4) : 0,
                                 size * number(-3, 3), size * number(-3, 3), round % 2 ? number(-1, 1) : 0, 0,
                                 number(0, width), number(0, height), 1);
        if (round == 0) matrix = KSMatrix33();
        KSMatrix33 inverse = matrix;
        ASSERT_TRUE(inverse.invert());
        const Placement placement(matrix, width, height, canvasWidth, canvasHeight);
        for (int y = 0; y < canvasHeight; ++y) {
            const bool isCulled = y < placement.rows().begin || y >= placement.rows().end;
            const Placement::Span span = placement.span(y);
            std::vector<float> row(canvasWidth * 4);
            placement.sample(source.data(), y, span, {row.data(), canvasWidth});
            for (int x = 0; x < canvasWidth; ++x) {
                KSVector2<double> at(x + 0.5, y + 0.5);
                inverse.transform(at);
                const auto near = [](double v) { return std::abs(v - std::round(v)) < 1e-9; };
                if (near(at.x) || near(at.y)) continue;  // on an edge either neighbour is right
                const bool isInside = at.x >= 0 && at.x < width && at.y >= 0 && at.y < height;
                ASSERT_EQ(x >= span.begin && x < span.end, isInside) << round << ": " << x << ' ' << y;
                if (!isInside) continue;
                ++seen;
                ASSERT_FALSE(isCulled) << round << ": " << x << ' ' << y;
                const int index = static_cast<int>(at.y) * width + static_cast<int>(at.x);
                for (int c = 0; c < 4; ++c)
                    ASSERT_EQ(row[static_cast<std::size_t>(c * canvasWidth + x - span.begin)],
                              static_cast<float>(index * 4 + c))
                        << round << ": " << x << ' ' << y;
            }
        }
    }
    EXPECT_GT(seen, 10000);
}

TEST(RenderPixels, PlacementSurvivesMatricesThatHaveNoPlace) {
    const double inf = HUGE_VAL, nan = std::nan("");
    const KSMatrix33 matrices[] = {{0, 0, 5, 0, 0, 5, 0, 0, 1},         {nan, 0, 0, 0, 1, 0, 0, 0, 1},
                                   {1, 0, inf, 0, 1, 0, 0, 0, 1},       {1e-300, 0, 0, 0, 1e-300, 0, 0, 0, 1},
                                   {1e300, 0, 0, 0, 1e300, 0, 0, 0, 1}, {1, 0, 1e30, 0, 1, -1e30, 0, 0, 1}};
    const std::vector<float> source(16);
    for (const KSMatrix33& matrix : matrices) {
        const Placement placement(matrix, 2, 2, 20, 20);
        EXPECT_LE(placement.rows().end, 20);
        for (int y = 0; y < 20; ++y) {
            const Placement::Span span = placement.span(y);
            ASSERT_TRUE(0 <= span.begin && span.begin <= span.end && span.end <= 20);
            std::vector<float> row(80);
            placement.sample(source.data(), y, span, {row.data(), 20});  // for the sanitizers
        }
    }
}

TEST(RenderPixels, KeyframesLeadFromOneToTheNext) {
    kestrel::tools::scene::Keyframes keys;
    keys.values = {10, 1, 20, 3, 40, -1};
    const struct {
        const char* interpolation;
        double frame, value;
    } rows[] = {{"", -5, 1},        {"", 10, 1},       {"", 15, 2},       {"", 20, 3},
                {"", 30, 1},        {"", 41, -1},      {"hold", 19, 1},   {"hold", 20, 3},
                {"hold", 40, -1},   {"smooth", 10, 1}, {"smooth", 15, 2}, {"smooth", 12.5, 1.3125},
                {"linear", 12, 1.4}};
    for (const auto& row : rows) {
        keys.interpolation = KSString(row.interpolation);
        EXPECT_DOUBLE_EQ(valueAt(keys, row.frame), row.value) << row.interpolation << ' ' << row.frame;
    }
    keys.values = {0, 1.5e308, 4, -1.5e308};  // further apart than a number can say
    EXPECT_DOUBLE_EQ(valueAt(keys, 1), 0.75e308);
}
