// tools/kestrel/frames/TestPicture.h - a moving picture to try things on.
#pragma once

#include <kestrel/color/KSColor.h>

#include <optional>
#include <string>

#include "ImageFile.h"

namespace kestrel::tools {

struct TestOptions {
    std::string output;
    unsigned int width = 480, height = 270;
    int first = 1, last = 24;
    std::string pattern = "disc";  ///< or one of testPatternNames
    KSColor color = KSColor::WHITE, color2 = KSColor::BLACK;
    std::optional<KSBitDepth::Type> depth;  ///< half, or what is nearest
};

/// A disc of all hues that turns and wanders over a checkerboard seen through a soft edge; straight alpha.
/// @param phase  0 to 1, once round
BitmapPointer makeTestPicture(unsigned int width, unsigned int height, float phase, const std::string& what);

/// Writes the frames first to last of a sequence; the disc's with their numbers burnt in. The status of the
/// command.
int makeTestSequence(const TestOptions& options);

}  // namespace kestrel::tools
