#include "RenderScene.h"

#include <kestrel/color/KSColor.h>
#include <kestrel/time/KSTimecode.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <stdexcept>

#include "../ColorText.h"
#include "../Text.h"
#include "../scene/SceneChecks.h"
#include "BlendFormulas.h"

namespace kestrel::tools::render {
namespace {

namespace fs = std::filesystem;

constexpr int largestSide = 65536;

bool isFileURL(std::string_view source) { return source.starts_with("file://"); }

AlphaKind alphaKind(const std::string& name) {
    return name == "premultiplied" ? AlphaKind::premultiplied
           : name == "ignore"      ? AlphaKind::ignore
                                   : AlphaKind::straight;
}

/// As the layer menu has it, at the mode's place there.
std::string nameOf(KSBlendMode mode) {
    return utf8(KSBlend::modeName(static_cast<KSBlendMode>(KSBlend::layerBlendModeToIndex(mode)), true));
}

KSColor::Type modelOf(const scene::Solid& solid) {
    std::string name = utf8(solid.model);
    for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return parseModel(name).value_or(KSColor::RGB);
}

}  // namespace

struct RenderScene::Layer {
    explicit Layer(const scene::Layer& read) : object(read), animation(read) {}

    std::size_t index = 0;
    const scene::Layer& object;
    Animation animation;
    std::shared_ptr<SourceFiles> files;
    KSColor::Type model = KSColor::RGB;
    AlphaKind alpha = AlphaKind::straight;

    bool isShownAt(long long frame) const { return frame >= object.in && frame < object.out; }
    bool hasSource() const { return files || object.solid || object.checker; }
    std::string title() const { return "layer \"" + printable(utf8(object.name)) + "\": "; }
};

/// Takes the wanted composition out of the document as it is read, and has all of the document checked.
class RenderScene::Loader final : public scene::SceneVisitor {
public:
    explicit Loader(RenderScene& target)
        : m_target(target),
          m_checks([&target](long line, const std::string& what) { target.fault(line, what); },
                   [&target](long line, const std::string& what) {
                       target.m_findings.push_back({line, what, !target.m_options.strict});
                   }) {}

    bool project(scene::Project& project) override { return m_checks.project(project); }
    bool composition(scene::Composition& composition) override {
        m_checks.composition(composition);
        const std::string& wanted = m_target.m_options.composition;
        if (m_target.m_hasComposition || (!wanted.empty() && utf8(composition.name) != wanted)) return true;
        m_target.m_hasComposition = true;
        m_target.m_composition = std::move(composition);
        return true;
    }

private:
    RenderScene& m_target;
    scene::SceneChecks m_checks;
};

RenderScene::RenderScene(const SceneOptions& options) : m_options(options) {
    Loader loader(*this);
    std::unique_ptr<scene::SceneReader> reader;
    try {
        reader = scene::SceneReader::open(options.project, loader,
                                          [this](long line, const std::string& what) { fault(line, what); });
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(options.project + ": " + error.what());
    }
    reader->setStrict(options.strict);
    if (!reader->readDocument()) return;
    if (const auto count = reader->unknownCount(); count > 0 && !options.strict)
        m_findings.push_back({0, std::to_string(count) + " unknown elements are left out", true});
    if (!m_hasComposition)
        fault(0, options.composition.empty() ? "there is no composition in it"
                                             : "there is no composition \"" + options.composition + '"');
    else
        prepare();
}

RenderScene::~RenderScene() = default;

void RenderScene::fault(long line, const std::string& what) { m_findings.push_back({line, what, false}); }

bool RenderScene::reportFaults() const {
    std::vector<Finding> findings = m_findings;
    std::stable_sort(findings.begin(), findings.end(),
                     [](const Finding& a, const Finding& b) { return a.line < b.line; });
    std::set<long> faultyLines;
    for (const Finding& finding : findings)
        if (!finding.isWarning) faultyLines.insert(finding.line);
    for (const Finding& finding : findings) {
        if (finding.isWarning && faultyLines.contains(finding.line)) continue;  // the fault says it
        const std::string place = finding.line > 0 ? ':' + std::to_string(finding.line) : "";
        std::fprintf(stderr, "%s%s: %s%s\n", m_options.project.c_str(), place.c_str(),
                     finding.isWarning ? "warning: " : "", finding.what.c_str());
    }
    return faultyLines.empty();
}

std::string RenderScene::layerName(std::size_t layer) const {
    return printable(utf8(m_layers[layer]->object.name));
}

void RenderScene::prepare() {
    if (m_composition.width > largestSide || m_composition.height > largestSide)
        fault(m_composition.line, "composition: larger than 65536 pixels a side");
    if (m_composition.duration < 1) fault(m_composition.line, "composition: its range of frames is empty");
    for (const auto& read : m_composition.layers) {
        auto layer = std::make_unique<Layer>(*read);
        layer->index = m_layers.size();
        layer->alpha = alphaKind(utf8(read->alpha));
        if (read->solid) layer->model = modelOf(*read->solid);

        const auto mode = static_cast<KSBlendMode>(read->blendMode);
        const auto listed = KSBlend::getLayerBlendModes();
        if (!blendRow(mode) && mode != KSBlendModeSeparator &&
            std::find(listed.begin(), listed.end(), mode) != listed.end())
            fault(read->line,
                  layer->title() + "blend mode \"" + nameOf(mode) + "\" has no formula that could be drawn");
        if ((read->source.empty() ? 0 : 1) + (read->solid ? 1 : 0) + (read->checker ? 1 : 0) > 1)
            fault(read->line, layer->title() + "more than one of source, solid and checker");
        if (const auto& transform = read->transform;
            transform && (transform->rotation[0] != 0 || transform->rotation[1] != 0))
            m_findings.push_back(
                {read->line, layer->title() + "rotation about x and y is not drawn", !m_options.strict});
        for (const auto& table : read->keyframes)
            if (const std::string name = utf8(table->parameter); !Animation::hasParameter(name))
                fault(table->line, "keyframes: there is no parameter \"" + printable(name) + "\", only " +
                                       Animation::parameters());
        if (!read->source.empty()) prepareSource(*layer);
        m_layers.push_back(std::move(layer));
    }
}

void RenderScene::prepareSource(Layer& layer) {
    try {
        const std::string path = pathOf(layer.object.source);
        if (identity(path) == identity(m_options.project))
            throw std::runtime_error(path + ": the project names itself as a source");
        if (!m_files.contains(path)) {
            auto files = std::make_shared<SourceFiles>(path, m_options.missing);
            if (!files->isSequence()) readImageInfo(path);
            m_files[path] = std::move(files);
        }
        layer.files = m_files[path];
    } catch (const std::exception& error) {
        fault(layer.object.line, layer.title() + error.what());
    }
}

std::string RenderScene::pathOf(const KSString& source) const {
    const std::string text = utf8(source);
    if (text.find("://") != std::string::npos) {
        const std::string path = isFileURL(text) ? filePath(KSURL(source, false)) : "";
        if (path.empty()) throw std::runtime_error(printable(text) + ": no file");
        return path;
    }
    const fs::path folder = m_options.project == "-" ? "" : fs::path(m_options.project).parent_path();
    return (folder / text).string();  // an absolute one stays
}

void RenderScene::check(long long first, long long last) {
    if (!m_hasComposition) return;
    const bool hadFaults =
        std::any_of(m_findings.begin(), m_findings.end(), [](const Finding& f) { return !f.isWarning; });
    if (hadFaults) return;  // the frames would only repeat them
    std::set<std::string> opened;
    for (const auto& layer : m_layers) {
        const long long begin = std::max(first, layer->object.in),
                        end = std::min(last + 1, layer->object.out);
        if (begin >= end) continue;
        if (!layer->hasSource()) {
            m_findings.push_back({layer->object.line,
                                  layer->title() + "it has no source, so it shows nothing",
                                  !m_options.strict});
            continue;
        }
        bool isSingular = true;
        try {
            for (long long frame = begin; frame < end; ++frame) {
                const LayerValues values = layer->animation.at(frame);
                isSingular = isSingular && values.matrix().determinant() == 0;
                if (!layer->files) continue;
                const SourceFile* file = stateOf(*layer, values, frame).file;
                if (opened.insert(layer->object.source.empty() ? "" : utf8(layer->object.source)).second)
                    readImageInfo(file->path);  // the first one that shows, of each source
            }
        } catch (const std::exception& error) {
            fault(layer->object.line, layer->title() + error.what());
            continue;
        }
        if (isSingular) fault(layer->object.line, layer->title() + "its transform cannot be inverted");
    }
}

LayerState RenderScene::stateOf(const Layer& layer, const LayerValues& values, long long frame) {
    LayerState state;
    state.layer = layer.index;
    state.blendMode = layer.object.blendMode;
    state.opacity = static_cast<float>(values.opacity);
    state.matrix = values.matrix();
    state.alpha = layer.alpha;
    if (layer.files) {
        constexpr double lowest = std::numeric_limits<int>::min(), highest = std::numeric_limits<int>::max();
        const double number = values.sourceFrame
                                  ? std::floor(*values.sourceFrame)
                                  : static_cast<double>(frame - layer.object.in) + layer.files->first();
        state.file = &layer.files->member(static_cast<int>(std::clamp(number, lowest, highest)));
    } else if (layer.object.checker) {
        state.checker = &*layer.object.checker;
    } else {
        const float first = hasHue(layer.model) ? foldHue(values.c0) : static_cast<float>(values.c0);
        KSColor color(layer.model, first, static_cast<float>(values.c1), static_cast<float>(values.c2),
                      static_cast<float>(std::clamp(values.alpha, 0.0, 1.0)));
        color.convertToRGB();
        state.color = {color.c0, color.c1, color.c2, color.alpha};
    }
    return state;
}

FrameState RenderScene::stateAt(long long frame) {
    FrameState state;
    state.width = m_composition.width, state.height = m_composition.height;
    const int proxy = m_options.proxy;
    state.canvas = {(state.width + proxy - 1) / proxy, (state.height + proxy - 1) / proxy, proxy,
                    m_options.samples};
    for (const auto& layer : m_layers) {
        if (!layer->isShownAt(frame) || !layer->hasSource()) continue;
        const LayerValues values = layer->animation.at(frame);
        if (values.opacity > 0) state.layers.push_back(stateOf(*layer, values, frame));
    }
    if (m_options.burnIn) {
        KSString timecode;
        KSTimecode::getTimecode(static_cast<int>(frame),
                                *KSTimecodeMode::refTimecodeMode(m_composition.timecodeMode), timecode);
        state.timecode = utf8(timecode);
    }
    return state;
}

std::set<std::string> RenderScene::sourceIdentities() const {
    std::set<std::string> identities;
    for (const auto& [path, files] : m_files)
        for (const Frame& frame : files->getFrames()) identities.insert(identity(frame.path));
    return identities;
}

}  // namespace kestrel::tools::render
