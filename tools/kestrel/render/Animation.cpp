#include "Animation.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "../Text.h"

namespace kestrel::tools::render {
namespace {

struct Parameter {
    std::string_view name;
    double LayerValues::*target;
};
constexpr Parameter parameterTable[] = {
    {"opacity", &LayerValues::opacity},      {"position.x", &LayerValues::positionX},
    {"position.y", &LayerValues::positionY}, {"rotation", &LayerValues::rotation},
    {"scale.x", &LayerValues::scaleX},       {"scale.y", &LayerValues::scaleY},
    {"shear.x", &LayerValues::shearX},       {"shear.y", &LayerValues::shearY},
    {"pivot.x", &LayerValues::pivotX},       {"pivot.y", &LayerValues::pivotY},
    {"aspect", &LayerValues::aspect},        {"color.c0", &LayerValues::c0},
    {"color.c1", &LayerValues::c1},          {"color.c2", &LayerValues::c2},
    {"color.alpha", &LayerValues::alpha},
};
constexpr std::string_view sourceFrameName = "source.frame";

const Parameter* find(std::string_view name) {
    const auto found = std::find_if(std::begin(parameterTable), std::end(parameterTable),
                                    [&](const Parameter& entry) { return entry.name == name; });
    return found == std::end(parameterTable) ? nullptr : found;
}

}  // namespace

double valueAt(const scene::Keyframes& keyframes, double frame) {
    const std::vector<double>& keys = keyframes.values;
    if (keys.size() < 2) return 0;
    std::size_t next = 0;  // the first key after frame
    while (next + 1 < keys.size() && keys[next] <= frame) next += 2;
    if (next == 0) return keys[1];
    const double before = keys[next - 1];
    if (next + 1 >= keys.size()) return before;
    const std::string way = utf8(keyframes.interpolation);
    if (way == "hold") return before;
    double share = (frame - keys[next - 2]) / (keys[next] - keys[next - 2]);
    if (way == "smooth") share *= share * (3 - 2 * share);
    return std::lerp(before, keys[next + 1], share);
}

KSMatrix33 LayerValues::matrix() const {
    KSMatrix33 result;
    result.setTransformation(positionX, positionY, rotation, scaleX, scaleY, shearX, shearY, pivotX, pivotY,
                             aspect);
    return result;
}

Animation::Animation(const scene::Layer& layer) {
    m_still.opacity = layer.opacity;
    if (const auto& transform = layer.transform) {
        m_still.positionX = transform->position[0], m_still.positionY = transform->position[1];
        m_still.rotation = transform->rotation[2];
        m_still.scaleX = transform->scale[0], m_still.scaleY = transform->scale[1];
        m_still.shearX = transform->shear[0], m_still.shearY = transform->shear[1];
        m_still.pivotX = transform->pivot[0], m_still.pivotY = transform->pivot[1];
        m_still.aspect = transform->aspect;
    }
    if (const auto& solid = layer.solid) {
        m_still.c0 = solid->components[0], m_still.c1 = solid->components[1];
        m_still.c2 = solid->components[2], m_still.alpha = solid->alpha;
    }
    for (const auto& table : layer.keyframes) {
        if (table->values.size() < 2) continue;
        const std::string name = utf8(table->parameter);
        if (name == sourceFrameName)
            m_sourceFrame = table.get();
        else if (const Parameter* parameter = find(name))
            m_tracks.push_back({parameter->target, table.get()});
    }
}

LayerValues Animation::at(long long frame) const {
    LayerValues values = m_still;
    for (const Track& track : m_tracks)
        values.*track.target = valueAt(*track.keyframes, static_cast<double>(frame));
    values.opacity = std::clamp(values.opacity, 0.0, 1.0);
    if (m_sourceFrame) values.sourceFrame = valueAt(*m_sourceFrame, static_cast<double>(frame));
    return values;
}

std::string Animation::parameters() {
    std::string names(sourceFrameName);
    for (const Parameter& parameter : parameterTable) names += ", " + std::string(parameter.name);
    return names;
}

bool Animation::hasParameter(const std::string& name) { return name == sourceFrameName || find(name); }

}  // namespace kestrel::tools::render
