// tools/kestrel/render/FrameState.h - everything that decides one frame's picture.
#pragma once

#include <kestrel/geometry/KSMatrix33.h>
#include <kestrel/serialization/KSHash128.h>

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "../scene/Scene.h"
#include "Pictures.h"
#include "SourceFiles.h"

namespace kestrel::tools::render {

/// The size at which frames are drawn.
struct Canvas {
    int width = 0, height = 0;  ///< of a finished frame, pixels
    int proxy = 1;              ///< pixels of the composition for one of the frame, along each side
    int samples = 1;            ///< samples in a pixel, along each side
};

/// A layer as one frame shows it. Exactly one of its sources is there.
struct LayerState {
    std::size_t layer = 0;  ///< its place in the composition
    int blendMode = 0;
    float opacity = 1;
    KSMatrix33 matrix;                 ///< from the source to the composition
    const SourceFile* file = nullptr;  ///< or null
    AlphaKind alpha = AlphaKind::straight;
    const scene::Checker* checker = nullptr;  ///< or null; without either, a solid of the composition's size
    std::array<float, 4> color{};             ///< the solid's red, green, blue and alpha, straight
};

struct FrameState {
    int width = 0, height = 0;  ///< of the composition
    Canvas canvas;
    std::vector<LayerState> layers;  ///< those that show, the lowest first
    std::string timecode;            ///< to burn in; empty without

    /// The state as a text. Equal texts mean equal pixels, on any machine.
    std::string describe() const;
};

/// The digest of a state's text.
KSHash128 digestOf(const std::string& text);

}  // namespace kestrel::tools::render
