// tools/kestrel/render/Compositor.h - draws one frame.
#pragma once

#include <vector>

#include "FrameState.h"
#include "Pictures.h"

namespace kestrel::tools::render {

/// Seconds that each layer took, by its place in the composition, on all threads together.
using LayerTimes = std::vector<double>;

/// Lays the state's layers over transparent black, in premultiplied floats, band by band, which several threads
/// share out among themselves; a band asks only for layers whose bounding box reaches into it. Pixels of several
/// samples are their mean.
///
/// Errors     ImageError of "path: reason" for a source that cannot be read.
BitmapPointer drawFrame(const FrameState& state, Pictures& pictures, unsigned int threads, LayerTimes& times);

}  // namespace kestrel::tools::render
