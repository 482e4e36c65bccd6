// tools/kestrel/render/Animation.h - the numbers of a layer that keyframes move.
#pragma once

#include <kestrel/geometry/KSMatrix33.h>

#include <optional>
#include <string>
#include <vector>

#include "../scene/Scene.h"

namespace kestrel::tools::render {

/// A table's number at a frame: that of the first key before it, of the last one after it, and between two
/// keys linear, the earlier one's ("hold"), or eased in and out ("smooth": 3 t^2 - 2 t^3 of the way).
double valueAt(const scene::Keyframes& keyframes, double frame);

/// A layer at one frame. Angles are radians, lengths pixels of the composition.
struct LayerValues {
    double opacity = 1;
    double positionX = 0, positionY = 0, rotation = 0, scaleX = 1, scaleY = 1, shearX = 0, shearY = 0,
           pivotX = 0, pivotY = 0, aspect = 1;
    double c0 = 0, c1 = 0, c2 = 0, alpha = 1;  ///< of the solid, in its model
    std::optional<double> sourceFrame;         ///< the number of the sequence's member

    /// From the source to the composition.
    KSMatrix33 matrix() const;
};

/// How a layer moves.
class Animation {
public:
    explicit Animation(const scene::Layer& layer);
    LayerValues at(long long frame) const;
    /// The parameters that keyframes can name, for messages; and whether name is one.
    static std::string parameters();
    static bool hasParameter(const std::string& name);

private:
    struct Track {
        double LayerValues::*target;
        const scene::Keyframes* keyframes;
    };

    LayerValues m_still;
    std::vector<Track> m_tracks;
    const scene::Keyframes* m_sourceFrame = nullptr;
};

}  // namespace kestrel::tools::render
