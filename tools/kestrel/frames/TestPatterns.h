// tools/kestrel/frames/TestPatterns.h - pictures by formula, to make scenes of.
#pragma once

#include <kestrel/color/KSColor.h>

#include <string>
#include <vector>

#include "ImageFile.h"

namespace kestrel::tools {

/// gradient, glow, rays, ring and stars.
std::vector<std::string> testPatternNames();

/// A float picture of one of them, straight alpha.
/// @param phase  0 to 1, once round
/// @param first  of the gradient's top; of glow, rays and stars
/// @param second  of the gradient's bottom; of the glow's edge
BitmapPointer makeTestPattern(const std::string& name, unsigned int width, unsigned int height, float phase,
                              const KSColor& first, const KSColor& second, const std::string& what);

}  // namespace kestrel::tools
