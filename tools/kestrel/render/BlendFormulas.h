// tools/kestrel/render/BlendFormulas.h - what each blend mode does to pixels.
#pragma once

#include <kestrel/imaging/KSBlend.h>

#include <cstddef>

namespace kestrel::tools::render {

/// Lays a row of source pixels over a row of backdrop pixels, which becomes the result. Both are premultiplied
/// RGBA floats with alphas in 0 to 1.
using BlendRow = void (*)(float* backdrop, const float* source, std::size_t pixels, float opacity);

/// The function of a mode; null for a mode without a customary formula (pass-through belongs to groups of
/// layers), for the separator and for numbers that are no mode.
BlendRow blendRow(KSBlendMode mode);

}  // namespace kestrel::tools::render
