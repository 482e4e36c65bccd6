// tools/kestrel/frames/Sheet.h - a contact sheet of a sequence.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "FrameList.h"
#include "ImageFile.h"

namespace kestrel::tools {

struct SheetOptions {
    std::string output;
    unsigned int columns = 6;
    unsigned int width = 240;  ///< of one picture, pixels
    unsigned int most = 60;    ///< pictures; a longer sequence is thinned out evenly
};

/// Writes small pictures of the frames, in rows, each with its number; the status of the command. What
/// cannot be read is left out and said. Throws ImageError rather than overwrite one of the frames.
int makeSheet(const std::vector<Frame>& frames, const SheetOptions& options);

/// Writes text of digits, ":", ";", "-" and blanks into an RGBA picture of 8 bits, white on black, scale
/// pixels a dot; what lies outside the picture is cut off.
void drawText(KSBitmap& picture, unsigned int x, unsigned int y, std::string_view text, unsigned int scale);

}  // namespace kestrel::tools
