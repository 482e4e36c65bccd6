#include <kestrel/color/KSColor.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

namespace {

using Pair = void(float, float, float, float*, float*, float*);

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

struct Row {
    const char* name;
    Pair& convert;
    float in[3], out[3];
    float tolerance = 1e-6f;  // of values up to 1; hues are given room of their own
};

// Worked out by hand from the formulas, to more digits than a float holds.
const auto rows = std::to_array<Row>({
    {"HslRed", KSColor::RGBtoHSL, {1, 0, 0}, {0, 1, 0.5f}},
    {"HslBarelyNotGreyHasAHue", KSColor::RGBtoHSL, {0.5f, 0.500001f, 0.5f}, {120, 1e-6f, 0.5f}},
    {"HslGrey", KSColor::RGBtoHSL, {0.2f, 0.2f, 0.2f}, {0, 0, 0.2f}},
    {"HslDark", KSColor::RGBtoHSL, {0.1f, 0.3f, 0.2f}, {150, 0.5f, 0.2f}, 3e-5f},
    {"HslLight", KSColor::RGBtoHSL, {0.9f, 0.7f, 0.8f}, {330, 0.5f, 0.8f}, 6e-5f},
    {"HslNegativeHueIsTurned", KSColor::RGBtoHSL, {1, 0, 0.5f}, {330, 1, 0.5f}},
    {"HsvBlack", KSColor::RGBtoHSV, {0, 0, 0}, {0, 0, 0}},
    {"HsvGrey", KSColor::RGBtoHSV, {0.5f, 0.5f, 0.5f}, {0, 0, 0.5f}},
    {"HsvBarelyNotGreyHasAHue", KSColor::RGBtoHSV, {0.5f, 0.500001f, 0.5f}, {120, 2e-6f, 0.500001f}},
    {"HsvNearlyBlackHasNoHue", KSColor::RGBtoHSV, {0.5e-5f, 0, 0.9e-5f}, {0, 0, 0.9e-5f}, 0},
    {"HsvDarkHasAHue", KSColor::RGBtoHSV, {0, 2e-5f, 0}, {120, 1, 2e-5f}, 0},
    {"HsvTieGoesToRed", KSColor::RGBtoHSV, {1, 1, 0}, {60, 1, 1}},
    {"HsvTieGoesToGreen", KSColor::RGBtoHSV, {0, 1, 1}, {180, 1, 1}},
    {"HsvBlueSide", KSColor::RGBtoHSV, {0.75f, 0.5f, 1}, {270, 0.5f, 1}},
    {"HwbRed", KSColor::RGBtoHWB, {1, 0, 0}, {360, 0, 0}},
    {"HwbGreen", KSColor::RGBtoHWB, {0, 1, 0}, {60, 0, 0}},
    {"HwbBlue", KSColor::RGBtoHWB, {0, 0, 1}, {180, 0, 0}},
    {"HwbCyan", KSColor::RGBtoHWB, {0, 1, 1}, {120, 0, 0}},
    {"HwbYellow", KSColor::RGBtoHWB, {1, 1, 0}, {60, 0, 0}},
    {"HwbGrey", KSColor::RGBtoHWB, {0.25f, 0.25f, 0.25f}, {0, 0.25f, 0.75f}},
    {"HwbNearlyGreyHasNoHue", KSColor::RGBtoHWB, {0.5f, 0.500009f, 0.5f}, {0, 0.5f, 0.499991f}, 1e-7f},
    {"HwbBarelyNotGreyHasAHue", KSColor::RGBtoHWB, {0.5f, 0.5f, 0.500011f}, {180, 0.5f, 0.499989f}, 1e-7f},
    {"HwbNearlySmallestRedIsTheSmallest", KSColor::RGBtoHWB, {5e-6f, 0, 1}, {180, 0, 0}},
    {"HwbPale", KSColor::RGBtoHWB, {0.75f, 0.5f, 0.25f}, {30, 0.25f, 0.25f}},
    {"Yiq", KSColor::RGBtoYIQ, {1, 10, 100}, {17.569f, -34.344f, 26.082f}, 5e-6f},
    {"Yuv", KSColor::RGBtoYUV, {1, 10, 100}, {17.569f, 40.563f, -14.535f}, 5e-6f},
    {"Clu", KSColor::RGBtoCLU, {1, 10, 100}, {36.955119f, 6.363f, 77.112f}, 1e-6f},
    {"RgbFromYiq", KSColor::YIQtoRGB, {1, 10, 100}, {72.66f, -66.42f, 160.15f}, 3e-5f},
    {"RgbFromYuv", KSColor::YUVtoRGB, {1, 10, 100}, {115, -61.06f, 21.29f}, 1e-5f},
    {"RgbFromClu", KSColor::CLUtoRGB, {1, 10, 100}, {-46.870636f, -32.730636f, 82.599364f}, 0},
    {"RgbFromHslRed", KSColor::HSLtoRGB, {0, 1, 0.5f}, {1, 0, 0}},
    {"RgbFromHslGrey", KSColor::HSLtoRGB, {99, 0.9e-5f, 0.5f}, {0.5f, 0.5f, 0.5f}, 0},
    {"RgbFromHslLight", KSColor::HSLtoRGB, {210, 0.5f, 0.75f}, {0.625f, 0.75f, 0.875f}},
    {"RgbFromHslFullTurn", KSColor::HSLtoRGB, {360, 1, 0.5f}, {1, 0, 0}},
    {"RgbFromHslWrapsOnceOnly", KSColor::HSLtoRGB, {725, 1, 0.5f}, {0, 0, 0}},
    {"RgbFromHsvSector0", KSColor::HSVtoRGB, {30, 0.5f, 1}, {1, 0.75f, 0.5f}},
    {"RgbFromHsvSector1", KSColor::HSVtoRGB, {90, 0.5f, 1}, {0.75f, 1, 0.5f}},
    {"RgbFromHsvSector2", KSColor::HSVtoRGB, {150, 0.5f, 1}, {0.5f, 1, 0.75f}},
    {"RgbFromHsvSector3", KSColor::HSVtoRGB, {210, 0.5f, 1}, {0.5f, 0.75f, 1}},
    {"RgbFromHsvSector4", KSColor::HSVtoRGB, {270, 0.5f, 1}, {0.75f, 0.5f, 1}},
    {"RgbFromHsvSector5", KSColor::HSVtoRGB, {330, 0.5f, 1}, {1, 0.5f, 0.75f}},
    {"RgbFromHsvSaturationAboveOne", KSColor::HSVtoRGB, {120, 2, 1}, {0, 1, 0}},
    {"RgbFromHsvNegativeHue", KSColor::HSVtoRGB, {-30, 0.5f, 1}, {1, 0.5f, 0.75f}},
    {"RgbFromHsvGreyAtAnyHue", KSColor::HSVtoRGB, {360, 0, 0.25f}, {0.25f, 0.25f, 0.25f}},
    {"RgbFromHwbSector0", KSColor::HWBtoRGB, {30, 0.25f, 0.25f}, {0.75f, 0.5f, 0.25f}},
    {"RgbFromHwbSector1", KSColor::HWBtoRGB, {75, 0.25f, 0.25f}, {0.625f, 0.75f, 0.25f}},
    {"RgbFromHwbSector2", KSColor::HWBtoRGB, {135, 0.25f, 0.25f}, {0.25f, 0.75f, 0.375f}},
    {"RgbFromHwbSector3", KSColor::HWBtoRGB, {195, 0.25f, 0.25f}, {0.25f, 0.625f, 0.75f}},
    {"RgbFromHwbSector4", KSColor::HWBtoRGB, {255, 0.25f, 0.25f}, {0.375f, 0.25f, 0.75f}},
    {"RgbFromHwbSector5", KSColor::HWBtoRGB, {315, 0.25f, 0.25f}, {0.75f, 0.25f, 0.625f}},
    {"RgbFromHwbFullTurn", KSColor::HWBtoRGB, {360, 0, 0}, {1, 0, 0}},
    {"RgbFromHwbJustBelowNoHue", KSColor::HWBtoRGB, {-0.0005f, 0.25f, 0.25f}, {0.75f, 0.25f, 0.25f}, 1e-5f},
    {"RgbFromHwbNearlyGrey", KSColor::HWBtoRGB, {90, 0.25f, 0.749991f}, {0.250009f, 0.250009f, 0.250009f}},
    {"RgbFromHwbGreyAtAnyHue", KSColor::HWBtoRGB, {-5, 0.25f, 0.75f}, {0.25f, 0.25f, 0.25f}},
});

TEST(KSColorConversion, GivesTheValuesOfTheFormulas) {
    for (const Row& row : rows) {
        float out[3] = {nan, nan, nan};
        row.convert(row.in[0], row.in[1], row.in[2], &out[0], &out[1], &out[2]);
        for (int i = 0; i < 3; ++i) EXPECT_NEAR(out[i], row.out[i], row.tolerance) << row.name << ' ' << i;
    }
}

TEST(KSColorConversion, WritesNothingWithoutASector) {
    struct {
        Pair& convert;
        float hue;
    } const cases[] = {
        {KSColor::HSVtoRGB, 360},       {KSColor::HSVtoRGB, 720},       {KSColor::HSVtoRGB, -1e-9f},
        {KSColor::HSVtoRGB, infinity},  {KSColor::HSVtoRGB, nan},       {KSColor::HWBtoRGB, -1},
        {KSColor::HWBtoRGB, 419.9999f}, {KSColor::HWBtoRGB, -0.0007f},  {KSColor::HWBtoRGB, 420},
        {KSColor::HWBtoRGB, 1e30f},     {KSColor::HWBtoRGB, -infinity}, {KSColor::HWBtoRGB, nan},
    };
    for (const auto& [convert, hue] : cases) {
        float r = 7, g = 8, b = 9;
        convert(hue, 1, 0.5f, &r, &g, &b);  // HSV: saturated; HWB: v - w = -0.5
        EXPECT_EQ(r, 7) << hue;
        EXPECT_EQ(g, 8) << hue;
        EXPECT_EQ(b, 9) << hue;
    }
}

TEST(KSColorConversion, AColourKeepsItsComponentsWhereNothingIsWritten) {
    KSColor c(KSColor::HSV, 360, 1, 0.5f, 0.25f);
    EXPECT_EQ(c.getRed(), 360);
    EXPECT_EQ(c.getBlue(), 0.5f);
    EXPECT_TRUE(c == KSColor(KSColor::RGB, 360, 1, 0.5f, 0.25f));
    c.convertToRGB();
    EXPECT_EQ(c.type, KSColor::RGB);
    EXPECT_EQ(c.c0, 360);
}

TEST(KSColorConversion, FoldsHuesExactly) {
    float near[3], far[3];
    for (const float hue : {720.5f, 3600.5f, 36000.5f, -359.5f, -7199.5f}) {
        KSColor::HSVtoRGB(0.5f, 0.75f, 1, &near[0], &near[1], &near[2]);
        KSColor::HSVtoRGB(hue, 0.75f, 1, &far[0], &far[1], &far[2]);
        for (int i = 0; i < 3; ++i) EXPECT_EQ(near[i], far[i]) << hue;
    }
}

TEST(KSColorConversion, ComesBackFromEveryModelThatHasAnInverse) {
    for (int red = 0; red <= 32; ++red)
        for (int green = 0; green <= 32; ++green)
            for (int blue = 0; blue <= 32; ++blue) {
                const KSColor rgb(KSColor::RGB, static_cast<float>(red) / 32, static_cast<float>(green) / 32,
                                  static_cast<float>(blue) / 32, 0.5f);
                for (const auto type :
                     {KSColor::HSL, KSColor::HSV, KSColor::HWB, KSColor::YIQ, KSColor::YUV}) {
                    if (type == KSColor::HWB && red <= green && red <= blue) continue;  // no inverse there
                    const float tolerance = type == KSColor::YIQ || type == KSColor::YUV ? 4e-3f : 1e-6f;
                    KSColor back = rgb;
                    back.convert(type);
                    ASSERT_EQ(back.type, type);
                    back.convertToRGB();
                    ASSERT_NEAR(back.c0, rgb.c0, tolerance)
                        << type << ' ' << red << ' ' << green << ' ' << blue;
                    ASSERT_NEAR(back.c1, rgb.c1, tolerance)
                        << type << ' ' << red << ' ' << green << ' ' << blue;
                    ASSERT_NEAR(back.c2, rgb.c2, tolerance)
                        << type << ' ' << red << ' ' << green << ' ' << blue;
                    ASSERT_EQ(back.alpha, 0.5f);
                }
            }
}

TEST(KSColorConversion, BetweenTwoModelsGoesThroughRgb) {
    KSColor c(KSColor::HSV, 120, 1, 1, 0.5f);
    c.convertToHWB();
    EXPECT_EQ(c.type, KSColor::HWB);
    EXPECT_NEAR(c.c0, 60, 1e-4);
    float r, g, b, a;
    KSColor(KSColor::HSL, 240, 1, 0.5f, 0.25f).getRGBA(&r, &g, &b, &a);
    EXPECT_EQ(r, 0);
    EXPECT_EQ(g, 0);
    EXPECT_EQ(b, 1);
    EXPECT_EQ(a, 0.25f);
}

TEST(KSColorConversion, ToItsOwnOrAnUnknownTypeChangesNothing) {
    KSColor c(KSColor::HSV, 1, 2, 3, 4);
    c.convert(KSColor::HSV);
    c.convert(static_cast<KSColor::Type>(7));
    c.convert(static_cast<KSColor::Type>(0xFFFFFFFF));
    EXPECT_EQ(c.type, KSColor::HSV);
    EXPECT_EQ(c.c0, 1);
    EXPECT_EQ(c.c1, 2);
    EXPECT_EQ(c.c2, 3);
    EXPECT_EQ(c.alpha, 4);
}

}  // namespace
