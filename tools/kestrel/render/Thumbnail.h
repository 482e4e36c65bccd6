// tools/kestrel/render/Thumbnail.h - a small picture in the project document.
#pragma once

#include <string>

#include "RenderJob.h"

namespace kestrel::tools::render {

/// Draws the middle one of the frames, at most 96 pixels a side, over black, and writes the project to path
/// with that picture in its composition. The status of the command; std::exception when path cannot be
/// written.
int writeThumbnail(const RenderOptions& options, const std::string& path);

}  // namespace kestrel::tools::render
