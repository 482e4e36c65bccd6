// tools/kestrel/frames/Convert.h - what `kestrel frames convert` does to frames.
#pragma once

#include <kestrel/color/KSColor.h>
#include <kestrel/imaging/KSBitDepth.h>

#include <optional>
#include <string>

#include "ImageFile.h"

namespace kestrel::tools {

struct Window {
    int x = 0, y = 0;
    unsigned int width = 0, height = 0;
};

/// The steps, in the order in which they are done.
struct Conversion {
    std::optional<Window> crop;
    bool premultiply = false;
    std::optional<KSColor> unpremultiply;  ///< with this matte
    bool opaque = false;
    bool alphaToRGB = false;
    bool flip = false;
    std::optional<Window> size;  ///< width and height only
    std::optional<KSBitDepth::Type> depth;
};

struct ConvertOptions {
    std::string input, output;
    Conversion conversion;
    std::optional<Window> frames;  ///< numbers x to y only
    unsigned int jobs = 1;
    bool strict = false;
    bool resume = false;
};

/// The picture after all steps, in an RGBA format of the wanted depth.
BitmapPointer convertBitmap(BitmapPointer bitmap, const Conversion& conversion, KSBitDepth::Type depth,
                            const std::string& what);

/// Converts the frames; the status of the command: 0, 1 when a frame failed, 130 when interrupted.
int convertFrames(const ConvertOptions& options);

}  // namespace kestrel::tools
