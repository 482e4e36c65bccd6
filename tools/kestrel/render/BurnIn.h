// tools/kestrel/render/BurnIn.h - timecode in the picture.
#pragma once

#include <string>

#include "../frames/ImageFile.h"

namespace kestrel::tools::render {

/// Writes text, white on a dark strip that lets the picture through, at the bottom of a premultiplied RGBA
/// float picture, in the middle; its size follows the picture's height.
void burnIn(KSBitmap& frame, const std::string& text);

}  // namespace kestrel::tools::render
