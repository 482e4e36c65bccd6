#include "SceneChecks.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string_view>

#include "Text.h"

namespace kestrel::tools::scene {
namespace {

constexpr int newestVersion = 1;
constexpr std::string_view colorModels[] = {"HSL", "HSV", "HWB", "RGB", "YIQ", "YUV", "CLU"};

bool isShare(double value) { return value >= 0 && value <= 1; }

template <class Numbers>
bool areFinite(const Numbers& numbers) {
    return std::all_of(numbers.begin(), numbers.end(), [](double number) { return std::isfinite(number); });
}

}  // namespace

void SceneChecks::fault(long line, const std::string& what) {
    m_found = true;
    m_faults(line, what);
}

bool SceneChecks::project(Project& project) {
    if (project.version < 1 || project.version > newestVersion) {
        fault(project.line, "project: version " + std::to_string(project.version) + " is not known");
    }
    checkIdentifier(project.line, "project", project.identifier);
    return true;
}

bool SceneChecks::composition(Composition& composition) {
    checkIdentifier(composition.line, "composition", composition.identifier);
    if (composition.width < 1 || composition.height < 1) {
        fault(composition.line, "composition: a frame of " + std::to_string(composition.width) + " by " +
                                    std::to_string(composition.height) + " pixels is empty");
    }
    if (composition.duration < 1) {
        fault(composition.line,
              "composition: duration is " + std::to_string(composition.duration) + " frames");
    }
    checkTimecode(composition);
    for (const auto& layer : composition.layers) checkLayer(*layer);
    return true;
}

void SceneChecks::checkIdentifier(long line, const char* what, const KSUUID& identifier) {
    if (identifier == KSUUID()) return;  // one that could not be read has been reported
    if (!m_identifiers.insert(std::to_array(identifier.words)).second) {
        fault(line, std::string(what) + ": identifier " + text(identifier) + " is used twice");
    }
}

/// The mode by name. Only its presence is checked: the modes an application registers are its own.
void SceneChecks::checkTimecode(const Composition& composition) {
    if (composition.timecodeMode.empty()) fault(composition.line, "composition: there is no timecode mode");
}

void SceneChecks::checkLayer(const Layer& layer) {
    checkIdentifier(layer.line, "layer", layer.identifier);
    const auto modes = KSBlend::getLayerBlendModes();
    if (layer.blendMode == KSBlendModeSeparator ||
        std::find(modes.begin(), modes.end(), layer.blendMode) == modes.end()) {
        fault(layer.line, "layer: there is no blend mode " + std::to_string(layer.blendMode));
    }
    if (!isShare(layer.opacity))
        fault(layer.line, "layer: opacity " + text(layer.opacity) + " is not in 0 to 1");
    if (layer.out < layer.in) {
        fault(layer.line, "layer: it ends at frame " + std::to_string(layer.out) + ", before it begins at " +
                              std::to_string(layer.in));
    }
    if (!layer.source.empty() && KSURL(layer.source, false).getAsURLString().empty()) {
        fault(layer.line, "layer: source is no URL");
    }
    if (layer.transform) checkTransform(layer);
    if (layer.solid) checkSolid(layer);
    for (const auto& keyframes : layer.keyframes) checkKeyframes(*keyframes);
}

/// The numbers by themselves. That the matrix they make can be inverted is for the geometry to say.
void SceneChecks::checkTransform(const Layer& layer) {
    const Transform& transform = *layer.transform;
    if (!areFinite(transform.position) || !areFinite(transform.rotation) || !areFinite(transform.scale) ||
        !areFinite(transform.shear) || !areFinite(transform.pivot)) {
        fault(layer.line, "layer: its transform holds a number that is not finite");
    }
    if (!(transform.aspect > 0) || !std::isfinite(transform.aspect)) {
        fault(layer.line, "layer: pixel aspect " + text(transform.aspect) + " is not positive");
    }
}

void SceneChecks::checkSolid(const Layer& layer) {
    const Solid& solid = *layer.solid;
    const std::string model = utf8(solid.model);
    if (std::find(std::begin(colorModels), std::end(colorModels), model) == std::end(colorModels)) {
        fault(layer.line, "layer: its solid has the unknown colour model \"" + printable(model) + '"');
    }
    if (!areFinite(solid.components)) fault(layer.line, "layer: its solid's colour is not finite");
    if (!isShare(solid.alpha)) {
        fault(layer.line, "layer: its solid's alpha " + text(solid.alpha) + " is not in 0 to 1");
    }
}

void SceneChecks::checkKeyframes(const Keyframes& keyframes) {
    if (keyframes.parameter.empty()) fault(keyframes.line, "keyframes: no parameter is named");
    const auto& values = keyframes.values;
    if (keyframes.declaredCount && *keyframes.declaredCount != static_cast<long long>(values.size() / 2)) {
        fault(keyframes.line, "keyframes: " + std::to_string(values.size() / 2) + " keys instead of " +
                                  std::to_string(*keyframes.declaredCount));
    }
    for (std::size_t i = 2; i < values.size(); i += 2) {
        if (values[i] > values[i - 2]) continue;
        fault(keyframes.line,
              "keyframes: frame " + text(values[i]) + " does not follow frame " + text(values[i - 2]));
        break;
    }
}

}  // namespace kestrel::tools::scene
