// Colour models: paints a wheel of hues and writes it as a picture.
//
//   color_wheel FILE.ppm
//
// It prints
//     red       hsv   0 1 1    hsl   0 1 0.5    luma 0.299
//     yellow    hsv  60 1 1    hsl  60 1 0.5    luma 0.886
//     green     hsv 120 1 1    hsl 120 1 0.5    luma 0.587
//     blue      hsv 240 1 1    hsl 240 1 0.5    luma 0.114
#include "Picture.h"

#include <kestrel/Kestrel.h>

#include <algorithm>
#include <cmath>
#include <memory>

namespace {

constexpr int size = 360;  // pixels
constexpr float middle = size / 2.0f, radius = 0.95f * middle;

/// The colour at a place counted from the middle in radii: hue by the angle, saturation by the distance. Outside
/// it is dark grey, and the rim is blended over one pixel.
KSColor wheelAt(float x, float y) {
    const float distance = std::hypot(x, y);
    const float degrees = std::atan2(y, x) * 57.29578f;
    KSColor color(KSColor::HSV, degrees < 0 ? degrees + 360 : degrees, std::min(distance, 1.0f), 1, 1);
    color.convertToRGB();
    const float outside = std::clamp((distance - 1) * radius + 0.5f, 0.0f, 1.0f);
    return color.mix(KSColor(KSColor::RGB, 0.15f, 0.15f, 0.15f, 1), outside);
}

void describe(const char* name, KSColor color) {
    KSColor hsv = color, hsl = color, yuv = color;
    hsv.convertToHSV();
    hsl.convertToHSL();
    yuv.convertToYUV();
    KSPrint("%-8s  hsv %3g %g %g    hsl %3g %g %g    luma %g\n", name, hsv.c0, hsv.c1, hsv.c2, hsl.c0, hsl.c1,
            hsl.c2, yuv.c0);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return KSPrint("usage: color_wheel FILE.ppm\n"), 2;
    describe("red", KSColor::RED);
    describe("yellow", KSColor::YELLOW);
    describe("green", KSColor::GREEN);
    describe("blue", KSColor::BLUE);

    // Painted in float, one place to round: on the way to 8 bits.
    const std::unique_ptr<KSBitmap> wheel(KSCreateBitmap(size, size, 9)),
        picture(KSCreateBitmap(size, size, 1));
    auto* pixel = reinterpret_cast<float*>(wheel->getData());
    for (int row = 0; row < size; ++row) {
        for (int column = 0; column < size; ++column, pixel += 4) {
            const float x = static_cast<float>(column) + 0.5f, y = static_cast<float>(row) + 0.5f;
            wheelAt((x - middle) / radius, (middle - y) / radius)
                .getRGBA(pixel, pixel + 1, pixel + 2, pixel + 3);
        }
    }
    picture->copyWithScalingAndDepthConversion(*wheel);
    return writePicture(*picture, argv[1]) ? 0 : 1;
}
