#include "Thumbnail.h"

#include <kestrel/files/KSAsciiStream.h>
#include <kestrel/serialization/KSException.h>
#include <kestrel/serialization/KSXMLWriteStream.h>

#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <vector>

#include "../Text.h"
#include "../scene/DocumentFile.h"
#include "../scene/SceneWriter.h"
#include "Compositor.h"

namespace kestrel::tools::render {
namespace {

constexpr int largestSide = 96;

scene::Thumbnail draw(RenderScene& scene, long long frame, unsigned int jobs) {
    FrameState state = scene.stateAt(frame);
    const int side = std::max(state.width, state.height);
    state.timecode.clear();
    state.canvas.proxy = std::max(1, (side + largestSide - 1) / largestSide);
    state.canvas.samples = std::min(state.canvas.proxy, 8);
    state.canvas.width = (state.width + state.canvas.proxy - 1) / state.canvas.proxy;
    state.canvas.height = (state.height + state.canvas.proxy - 1) / state.canvas.proxy;
    Pictures pictures(0);
    LayerTimes times(scene.layerCount());
    const BitmapPointer picture = convertBitmap(drawFrame(state, pictures, jobs, times), Conversion{},
                                                KSBitDepth::INTEGER_8, "thumbnail");

    KSAsciiStream armour;
    const std::size_t pixels = std::size_t{picture->getWidth()} * picture->getHeight();
    for (std::size_t i = 0; i < pixels; ++i) armour.write(picture->getData() + i * 4, 3);
    armour.close();
    return {state.canvas.width, state.canvas.height, armour.getString(), 0};
}

/// Writes what is read, with the thumbnail in the wanted composition.
class Inserter final : public scene::SceneVisitor {
public:
    Inserter(KSSerializerWriteStream& out, std::string composition, scene::Thumbnail thumbnail)
        : m_writer(out), m_wanted(std::move(composition)), m_thumbnail(std::move(thumbnail)) {}

    bool project(scene::Project& project) override { return m_writer.project(project); }
    bool composition(scene::Composition& composition) override {
        if (!m_isDone && (m_wanted.empty() || utf8(composition.name) == m_wanted)) {
            composition.thumbnail = m_thumbnail;
            m_isDone = true;
        }
        return m_writer.composition(composition);
    }
    bool end() { return m_writer.end(); }

private:
    scene::SceneWriter m_writer;
    const std::string m_wanted;
    const scene::Thumbnail m_thumbnail;
    bool m_isDone = false;
};

}  // namespace

int writeThumbnail(const RenderOptions& options, const std::string& path) {
    const std::string& project = options.scene.project;
    if (project == "-") throw std::runtime_error("-: a thumbnail needs a document that can be read twice");
    RenderScene scene(options.scene);
    long long first = scene.firstFrame(), last = first + scene.frameCount() - 1;
    if (options.frames) {
        first = std::max<long long>(first, options.frames->x);
        last = std::min<long long>(last, options.frames->y);
    }
    const long long frame = first + (last - first) / 2;
    if (last >= first) scene.check(frame, frame);
    if (last < first && scene.frameCount() > 0) scene.fault(0, "no frames in that range");
    if (!scene.reportFaults()) return 1;
    if (scene.sourceIdentities().contains(identity(path)))
        throw std::runtime_error(path + ": would overwrite a source");
    scene::Thumbnail thumbnail = draw(scene, frame, options.jobs);

    scene::DocumentFile file(path);
    KSXMLWriteStream stream(file.stream());
    Inserter inserter(stream, options.scene.composition, std::move(thumbnail));
    const auto reader =
        scene::SceneReader::open(project, inserter, [](long, const std::string&) {});  // reported already
    if (!reader->readDocument() || !inserter.end()) file.fail(0);
    if (const auto count = reader->unknownCount())
        std::fprintf(stderr, "kestrel render: %s: left out %lu unknown elements\n", project.c_str(), count);
    file.commit();
    return 0;
}

}  // namespace kestrel::tools::render
