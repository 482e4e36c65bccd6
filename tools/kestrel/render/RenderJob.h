// tools/kestrel/render/RenderJob.h - what `kestrel render` does.
#pragma once

#include <optional>
#include <string>

#include "../frames/Convert.h"
#include "RenderScene.h"

namespace kestrel::tools::render {

struct RenderOptions {
    SceneOptions scene;
    std::string output;            ///< a sequence, or a file for a single frame
    std::optional<Window> frames;  ///< numbers x to y only
    std::optional<KSBitDepth::Type> depth;
    unsigned int jobs = 1;
    std::string cache;  ///< a folder; empty for none
    std::string sheet;  ///< a picture to write in the end; empty for none
    bool resume = false;
};

/// Renders the frames; the status of the command: 0, 1 when the project is bad or a frame failed, 130 when
/// interrupted. std::exception for what stops it altogether.
int renderProject(const RenderOptions& options);

}  // namespace kestrel::tools::render
