#include "SceneChecks.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string_view>

#include "../Text.h"

namespace kestrel::tools::scene {
namespace {

constexpr int newestVersion = 1;
constexpr std::string_view colorModels[] = {"HSL", "HSV", "HWB", "RGB", "YIQ", "YUV", "CLU"};

constexpr std::string_view alphaKinds[] = {"straight", "premultiplied", "ignore"};
constexpr std::string_view interpolations[] = {"linear", "hold", "smooth"};
constexpr int largestSide = 65536;

bool isShare(double value) { return value >= 0 && value <= 1; }

template <class Numbers>
bool areFinite(const Numbers& numbers) {
    return std::all_of(numbers.begin(), numbers.end(), [](double number) { return std::isfinite(number); });
}

/// The frames from first up to, not including, end, which is not before first. Counted from 0: large frame
/// numbers would be rounded.
bool isEmpty(long long first, long long end) {
    const auto count = static_cast<unsigned long long>(end) - static_cast<unsigned long long>(first);
    const KSTimeRange range(0, static_cast<float>(count));
    return range.getIntersectionWith(range) == KSTimeRange();
}

/// In the plane, where layers are drawn, or in space.
bool isSingular(const Transform& transform) {
    const auto &position = transform.position, &rotation = transform.rotation, &scale = transform.scale,
               &pivot = transform.pivot;
    const auto& shear = transform.shear;
    KSMatrix33 plane;
    plane.setTransformation(position[0], position[1], rotation[2], scale[0], scale[1], shear[0], shear[1],
                            pivot[0], pivot[1], transform.aspect);
    KSMatrix44 space;
    space.setTransformation(position[0], position[1], position[2], rotation[0], rotation[1], rotation[2],
                            scale[0], scale[1], scale[2], shear[0], shear[1], pivot[0], pivot[1], pivot[2],
                            transform.aspect);
    return plane.determinant() == 0 || space.determinant() == 0;
}

}  // namespace

bool SceneChecks::project(Project& project) {
    if (project.version < 1 || project.version > newestVersion) {
        m_fault(project.line, "project: version " + std::to_string(project.version) + " is not known");
    }
    checkIdentifier(project.line, "project", project.identifier);
    return true;
}

bool SceneChecks::composition(Composition& composition) {
    checkIdentifier(composition.line, "composition", composition.identifier);
    if (composition.width < 1 || composition.height < 1) {
        m_fault(composition.line, "composition: a frame of " + std::to_string(composition.width) + " by " +
                                      std::to_string(composition.height) + " pixels is empty");
    }
    checkDuration(composition);
    checkTimecode(composition);
    if (composition.thumbnail) checkThumbnail(*composition.thumbnail);
    for (const auto& layer : composition.layers) checkLayer(*layer);
    return true;
}

void SceneChecks::checkIdentifier(long line, const char* what, const KSUUID& identifier) {
    if (identifier == KSUUID()) return;  // one that could not be read has been reported
    if (!m_identifiers.insert(std::to_array(identifier.words)).second) {
        m_fault(line, std::string(what) + ": identifier " + text(identifier) + " is used twice");
    }
}

void SceneChecks::checkDuration(const Composition& composition) {
    if (composition.duration < 0) {
        m_fault(composition.line,
                "composition: duration is " + std::to_string(composition.duration) + " frames");
    } else if (isEmpty(0, composition.duration)) {
        m_warn(composition.line, "composition: it has no frames");
    }
}

void SceneChecks::checkTimecode(const Composition& composition) {
    const KSString& name = composition.timecodeMode;
    if (name.empty()) {
        m_fault(composition.line, "composition: there is no timecode mode");
    } else if (const KSTimecodeMode& mode = *KSTimecodeMode::refTimecodeMode(name);
               mode.getName().compare(name) != 0) {
        m_warn(composition.line, "composition: timecode mode \"" + printable(utf8(name)) +
                                     "\" is not registered; \"" + utf8(mode.getName()) + "\" would be used");
    }
}

void SceneChecks::checkLayer(const Layer& layer) {
    checkIdentifier(layer.line, "layer", layer.identifier);
    const auto modes = KSBlend::getLayerBlendModes();
    if (layer.blendMode == KSBlendModeSeparator ||
        std::find(modes.begin(), modes.end(), layer.blendMode) == modes.end()) {
        m_fault(layer.line, "layer: there is no blend mode " + std::to_string(layer.blendMode));
    }
    if (!isShare(layer.opacity))
        m_fault(layer.line, "layer: opacity " + text(layer.opacity) + " is not in 0 to 1");
    checkRange(layer);
    if (!layer.source.empty() && KSURL(layer.source, false).getAsURLString().empty()) {
        m_fault(layer.line, "layer: source is no URL");
    }
    if (layer.transform) checkTransform(layer);
    checkName(layer.line, "layer: alpha", layer.alpha, alphaKinds);
    if (layer.solid) checkSolid(layer);
    if (layer.checker) checkChecker(layer);
    for (const auto& keyframes : layer.keyframes) checkKeyframes(*keyframes);
}

void SceneChecks::checkRange(const Layer& layer) {
    if (layer.out < layer.in) {
        m_fault(layer.line, "layer: it ends at frame " + std::to_string(layer.out) +
                                ", before it begins at " + std::to_string(layer.in));
    } else if (isEmpty(layer.in, layer.out)) {
        m_warn(layer.line, "layer: it has no frames: it begins and ends at " + std::to_string(layer.in));
    }
}

void SceneChecks::checkTransform(const Layer& layer) {
    const Transform& transform = *layer.transform;
    const bool finite = areFinite(transform.position) && areFinite(transform.rotation) &&
                        areFinite(transform.scale) && areFinite(transform.shear) &&
                        areFinite(transform.pivot);
    const bool hasAspect = transform.aspect > 0 && std::isfinite(transform.aspect);
    if (!finite) m_fault(layer.line, "layer: its transform holds a number that is not finite");
    if (!hasAspect) {
        m_fault(layer.line, "layer: pixel aspect " + text(transform.aspect) + " is not positive");
    }
    if (finite && hasAspect && isSingular(transform)) {
        m_warn(layer.line, "layer: its transform is singular: it cannot be inverted");
    }
}

void SceneChecks::checkSolid(const Layer& layer) {
    const Solid& solid = *layer.solid;
    const std::string model = utf8(solid.model);
    if (std::find(std::begin(colorModels), std::end(colorModels), model) == std::end(colorModels)) {
        m_fault(layer.line, "layer: its solid has the unknown colour model \"" + printable(model) + '"');
    }
    if (!areFinite(solid.components)) m_fault(layer.line, "layer: its solid's colour is not finite");
    if (!isShare(solid.alpha)) {
        m_fault(layer.line, "layer: its solid's alpha " + text(solid.alpha) + " is not in 0 to 1");
    }
}

void SceneChecks::checkChecker(const Layer& layer) {
    const Checker& checker = *layer.checker;
    for (const int side : {checker.width, checker.height, checker.square})
        if (side < 1 || side > largestSide)
            m_fault(layer.line, "layer: its checkerboard has a side of " + std::to_string(side) + " pixels");
}

void SceneChecks::checkThumbnail(const Thumbnail& thumbnail) {
    const auto fault = [&](const std::string& what) { m_fault(thumbnail.line, "thumbnail: " + what); };
    constexpr int largest = 4096;
    if (thumbnail.width < 1 || thumbnail.height < 1 || thumbnail.width > largest ||
        thumbnail.height > largest) {
        return fault("it has " + std::to_string(thumbnail.width) + " by " + std::to_string(thumbnail.height) +
                     " pixels");
    }
    const std::string armour = utf8(thumbnail.armour);
    KSAsciiStream stream;
    if (!stream.open(armour.data(), armour.size())) return fault(utf8(stream.getError()));
    const auto size =
        static_cast<std::size_t>(thumbnail.width) * static_cast<std::size_t>(thumbnail.height) * 3;
    std::vector<char> pixels(size + 1);
    const unsigned long long held = stream.read(pixels.data(), pixels.size());
    constexpr std::size_t header = 12;
    if (held != size || armour.size() != header + size / 3 * 4) {
        fault("it does not hold " + std::to_string(size) + " bytes of pixels");
    } else if (!std::all_of(armour.begin(), armour.end(),
                            [](char c) { return KSAsciiStream::validChar(static_cast<unsigned char>(c)); })) {
        fault("its text holds a character that carries no value");
    }
}

void SceneChecks::checkName(long line, const char* what, const KSString& name,
                            std::span<const std::string_view> known) {
    const std::string text = utf8(name);
    if (text.empty() || std::find(known.begin(), known.end(), text) != known.end()) return;
    m_fault(line, std::string(what) + " \"" + printable(text) + "\" is not known");
}

void SceneChecks::checkKeyframes(const Keyframes& keyframes) {
    checkName(keyframes.line, "keyframes: interpolation", keyframes.interpolation, interpolations);
    if (keyframes.parameter.empty()) m_fault(keyframes.line, "keyframes: no parameter is named");
    const auto& values = keyframes.values;
    if (keyframes.declaredCount && *keyframes.declaredCount != static_cast<long long>(values.size() / 2)) {
        m_fault(keyframes.line, "keyframes: " + std::to_string(values.size() / 2) + " keys instead of " +
                                    std::to_string(*keyframes.declaredCount));
    }
    if (!areFinite(values)) {
        return m_fault(keyframes.line, "keyframes: they hold a number that is not finite");
    }
    for (std::size_t i = 2; i < values.size(); i += 2) {
        if (values[i] > values[i - 2]) continue;
        m_fault(keyframes.line,
                "keyframes: frame " + text(values[i]) + " does not follow frame " + text(values[i - 2]));
        break;
    }
}

}  // namespace kestrel::tools::scene
