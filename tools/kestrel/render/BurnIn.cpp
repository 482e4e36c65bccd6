#include "BurnIn.h"

#include <algorithm>
#include <cstddef>

#include "../frames/Sheet.h"

namespace kestrel::tools::render {

void burnIn(KSBitmap& frame, const std::string& text) {
    constexpr unsigned int rgba8 = 0, rgbaFloat = 9;
    const unsigned int scale = std::max(1u, frame.getHeight() / 180);
    const auto dots = static_cast<unsigned int>(text.size()) * 4 + 1;
    const BitmapPointer drawn = makeBitmap(dots * scale, 7 * scale, rgba8, "timecode");
    drawText(*drawn, 0, 0, text, scale);
    const BitmapPointer strip = makeBitmap(drawn->getWidth(), drawn->getHeight(), rgbaFloat, "timecode");
    strip->copyWithScalingAndDepthConversion(*drawn);
    auto* pixel = reinterpret_cast<float*>(strip->getData());
    for (std::size_t i = 0; i < std::size_t{strip->getWidth()} * strip->getHeight(); ++i, pixel += 4)
        if (pixel[0] == 0) pixel[3] = 0.5f;

    const unsigned int width = std::min(frame.getWidth(), strip->getWidth());
    const unsigned int left = (frame.getWidth() - width) / 2;
    const unsigned int bottom = frame.getHeight() - std::min(frame.getHeight(), 4 * scale);
    const unsigned int height = std::min(bottom, strip->getHeight());
    for (unsigned int y = 0; y < height; ++y) {
        const auto* from =
            reinterpret_cast<const float*>(strip->getData()) + std::size_t{y} * strip->getWidth() * 4;
        auto* to = reinterpret_cast<float*>(frame.getData()) +
                   (std::size_t{bottom - height + y} * frame.getWidth() + left) * 4;
        for (std::size_t x = 0; x < width; ++x, from += 4, to += 4) {  // source over backdrop
            for (int c = 0; c < 3; ++c) to[c] = from[c] * from[3] + to[c] * (1 - from[3]);
            to[3] = from[3] + to[3] * (1 - from[3]);
        }
    }
}

}  // namespace kestrel::tools::render
