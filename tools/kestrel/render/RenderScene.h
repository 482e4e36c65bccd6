// tools/kestrel/render/RenderScene.h - a composition of a project document, ready to be drawn.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "../scene/SceneReader.h"
#include "Animation.h"
#include "FrameState.h"
#include "SourceFiles.h"

namespace kestrel::tools::render {

struct SceneOptions {
    std::string project;      ///< path, or "-" for standard input
    std::string composition;  ///< its name; the first one when empty
    MissingPolicy missing = MissingPolicy::stop;
    bool strict = false;  ///< warnings and unknown elements are faults
    bool burnIn = false;
    int proxy = 1, samples = 1;
};

/// Reads a project, resolves the sources of one composition, and says what each frame shows.
///
/// Faults     are collected with their lines, all of them, before anything is drawn.
/// Threads    stateAt() one at a time.
class RenderScene {
public:
    /// std::runtime_error of "path: reason" when the document cannot be read.
    explicit RenderScene(const SceneOptions& options);
    ~RenderScene();

    long long firstFrame() const { return m_composition.start; }
    long long frameCount() const { return m_composition.duration; }
    std::size_t layerCount() const { return m_layers.size(); }
    std::string layerName(std::size_t layer) const;

    /// Goes through the frames first to last as they will be drawn, and finds what would be wrong with them.
    void check(long long first, long long last);
    /// Everything that a frame shows. Sound after check() of the frame found no fault.
    FrameState stateAt(long long frame);
    /// The identities of all files that its layers name, those of a sequence that no frame shows included.
    std::set<std::string> sourceIdentities() const;

    void fault(long line, const std::string& what);
    /// Prints what was found, in the order of lines, as "project:line: reason"; false if there is a fault.
    bool reportFaults() const;

private:
    class Loader;
    struct Layer;
    struct Finding {
        long line;
        std::string what;
        bool isWarning;
    };

    void prepare();
    void prepareSource(Layer& layer);
    LayerState stateOf(const Layer& layer, const LayerValues& values, long long frame);
    std::string pathOf(const KSString& source) const;

    const SceneOptions m_options;
    scene::Composition m_composition;
    bool m_hasComposition = false;
    std::vector<std::unique_ptr<Layer>> m_layers;
    std::map<std::string, std::shared_ptr<SourceFiles>> m_files;
    std::vector<Finding> m_findings;
};

}  // namespace kestrel::tools::render
