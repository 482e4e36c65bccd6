#include "TestPicture.h"

#include <kestrel/color/KSColor.h>
#include <kestrel/imaging/KSBitmap.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <stdexcept>

#include "../Terminal.h"
#include "Convert.h"
#include "FrameList.h"
#include "Sheet.h"
#include "TestPatterns.h"

namespace kestrel::tools {

BitmapPointer makeTestPicture(unsigned int width, unsigned int height, float phase, const std::string& what) {
    BitmapPointer picture = makeBitmap(width, height, 1, what);
    KSMakeCheckerImage(picture->getData(), width, height);
    picture->convertToRGBA();

    constexpr float turn = 2 * std::numbers::pi_v<float>;
    const auto w = static_cast<float>(width);
    const auto h = static_cast<float>(height);
    const float radius = 0.3f * h;
    const float centreX = w * (0.5f + 0.25f * std::sin(turn * phase));
    const float centreY = h * (0.5f + 0.12f * std::sin(2 * turn * phase));
    std::uint8_t* pixel = picture->getData();
    for (unsigned int y = 0; y < height; ++y)
        for (unsigned int x = 0; x < width; ++x, pixel += 4) {
            const float dx = static_cast<float>(x) + 0.5f - centreX;
            const float dy = static_cast<float>(y) + 0.5f - centreY;
            const float distance = std::hypot(dx, dy) / radius;
            float hue = 360 * (std::atan2(dy, dx) / turn + phase);
            hue -= 360 * std::floor(hue / 360);
            KSColor color(KSColor::HSV, std::min(hue, 359.999f), std::min(distance, 1.0f), 1, 1);
            color.convertToRGB();
            color.clamp();
            const KSColor board(KSColor::RGB, static_cast<float>(pixel[0]) / 1020,
                                static_cast<float>(pixel[1]) / 1020, static_cast<float>(pixel[2]) / 850, 1);
            color.mix(board, std::clamp((distance - 0.98f) * 50, 0.0f, 1.0f));
            const float values[] = {color.c0, color.c1, color.c2, std::clamp(2.2f - distance, 0.25f, 1.0f)};
            for (int c = 0; c < 4; ++c) pixel[c] = static_cast<std::uint8_t>(std::lround(values[c] * 255));
        }
    return picture;
}

int makeTestSequence(const TestOptions& options) {
    const long long count = static_cast<long long>(options.last) - options.first + 1;
    if (count > 1 && !KSURL(options.output.c_str(), false).isSequence())
        throw std::runtime_error(options.output + ": needs a placeholder such as [####] for " +
                                 std::to_string(count) + " frames");
    const auto numberOf = [&](long long index) { return static_cast<int>(options.first + index); };
    const auto pathOf = [&](long long index) {
        return FrameList::outputPath(options.output, static_cast<std::size_t>(index), numberOf(index));
    };
    // All have the extension of the last, whose number must lie in the output's range.
    const KSBitDepth::Type depth = depthFor(pathOf(count - 1), options.depth, KSBitDepth::HALF);
    Progress progress(static_cast<std::size_t>(count), "frames");
    catchInterrupts();
    for (long long index = 0; index < count && !isInterrupted(); ++index) {
        const std::string path = pathOf(index);
        const float phase = static_cast<float>(index) / static_cast<float>(count);
        BitmapPointer picture;
        if (options.pattern == "disc") {
            picture = makeTestPicture(options.width, options.height, phase, path);
            drawText(*picture, 8, 8, std::to_string(numberOf(index)), std::max(1u, options.height / 90));
        } else {
            picture = makeTestPattern(options.pattern, options.width, options.height, phase, options.color,
                                      options.color2, path);
        }
        writeImage(path, *convertBitmap(std::move(picture), Conversion{}, depth, path));
        progress.step(path);
    }
    return interruptStatus();
}

}  // namespace kestrel::tools
