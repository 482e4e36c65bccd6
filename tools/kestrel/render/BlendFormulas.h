// tools/kestrel/render/BlendFormulas.h - what each blend mode does to pixels.
#pragma once

#include <kestrel/imaging/KSBlend.h>

#include <cstddef>

namespace kestrel::tools::render {

/// A row of pixels, channel by channel: premultiplied red, green and blue, then alpha in 0 to 1.
template <class Number>
struct Row {
    Number* data;
    std::size_t stride;  ///< from one channel to the next

    Number* channel(std::size_t index) const { return data + index * stride; }
};

/// Lays a row of source pixels over a row of backdrop pixels, which becomes the result.
using BlendRow = void (*)(Row<float> backdrop, Row<const float> source, std::size_t pixels, float opacity);

/// The function of a mode; null for a mode without a customary formula (pass-through belongs to groups of
/// layers), for the separator and for numbers that are no mode.
BlendRow blendRow(KSBlendMode mode);

}  // namespace kestrel::tools::render
