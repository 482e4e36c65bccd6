#include "BurnIn.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "../frames/Sheet.h"
#include "BlendFormulas.h"
#include "Placement.h"

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

    const auto width = static_cast<int>(frame.getWidth()), height = static_cast<int>(frame.getHeight());
    KSMatrix33 place;
    place.translate((width - static_cast<int>(strip->getWidth())) / 2,
                    height - static_cast<int>(strip->getHeight() + 4 * scale));
    const Placement placement(place, static_cast<int>(strip->getWidth()),
                              static_cast<int>(strip->getHeight()), width, height);
    const BlendRow blend = blendRow(KSBlendModeNormal);
    std::vector<float> row(std::size_t{frame.getWidth()} * 4);
    for (int y = placement.rows().begin; y < placement.rows().end; ++y) {
        const Placement::Span span = placement.span(y);
        placement.sample(reinterpret_cast<const float*>(strip->getData()), y, span, row.data());
        blend(reinterpret_cast<float*>(frame.getData()) +
                  (static_cast<std::size_t>(y) * frame.getWidth() + static_cast<std::size_t>(span.begin)) * 4,
              row.data(), static_cast<std::size_t>(span.end - span.begin), 1);
    }
}

}  // namespace kestrel::tools::render
