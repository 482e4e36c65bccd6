#include "RenderJob.h"

#include <kestrel/concurrency/KSMutex.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>
#include <mutex>
#include <numeric>
#include <set>
#include <stdexcept>
#include <utility>

#include "../AtomicFile.h"
#include "../Terminal.h"
#include "../Threads.h"
#include "../frames/Sheet.h"
#include "BurnIn.h"
#include "Compositor.h"
#include "FrameCache.h"

namespace kestrel::tools::render {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t pictureMemory = std::size_t{512} << 20;
constexpr long long mostFrames = 10'000'000;

/// Frames that look the same: one is drawn, the others get copies of its file.
struct Task {
    std::vector<Frame> outputs;
};

/// The same bytes under another name.
void copyFile(const std::string& from, const std::string& to) {
    std::ifstream in(from, std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(in), {});
    if (!in || bytes.empty()) throw std::runtime_error(from + ": cannot be read again");
    AtomicFile file(to);
    file.write(bytes.data(), bytes.size());
    file.commit();
}

/// The tasks that several threads share out among themselves.
class Work {
public:
    Work(const RenderOptions& options, RenderScene& scene, std::vector<Task> tasks, std::size_t frames)
        : m_options(options),
          m_scene(scene),
          m_tasks(std::move(tasks)),
          m_frames(frames),
          m_times(scene.layerCount()),
          m_cache(options.cache),
          m_pictures(pictureMemory),
          m_progress(frames, "frames") {}

    int run() {
        const auto jobs = std::max(1u, options().jobs),
                   tasks = static_cast<unsigned>(std::max<std::size_t>(m_tasks.size(), 1));
        m_rowThreads = std::max(1u, jobs / tasks);  // more than one only where frames are few
        onThreads(std::min(jobs, tasks), *this);
        return report();
    }

    /// What each thread does.
    void operator()() {
        for (;;) {
            const std::size_t index = m_next++;
            if (index >= m_tasks.size() || isInterrupted() || (options().scene.strict && m_failed > 0))
                return;
            const Task& task = m_tasks[index];
            std::size_t done = 0;
            try {
                finish(task, done);
            } catch (const std::exception& error) {  // such as ImageError and bad_alloc
                m_failed += task.outputs.size() - done;
                m_progress.say(std::string("kestrel render: ") + error.what());
            }
            if (const std::string complaint = m_cache.takeComplaint(); !complaint.empty())
                m_progress.say("kestrel render: " + complaint);
        }
    }

private:
    const RenderOptions& options() const { return m_options; }

    /// Writes all outputs of a task and counts them.
    void finish(const Task& task, std::size_t& done) {
        const Frame& first = task.outputs.front();
        FrameState state;
        {
            const std::lock_guard guard(m_mutex);
            state = m_scene.stateAt(first.number);
        }
        const KSBitDepth::Type depth = depthFor(first.path, options().depth, KSBitDepth::INTEGER_8);
        const std::string description =
            state.describe() + "file " + depthName(depth) + fs::path(first.path).extension().string() + '\n';
        if (m_cache.fetch(description, first.path)) {
            ++m_fromCache;
            m_progress.step(first.path + " from the cache");
        } else {
            draw(state, depth, first.path);
            m_cache.store(description, first.path);
            ++m_drawn;
            m_progress.step(first.path);
        }
        for (done = 1; done < task.outputs.size() && !isInterrupted(); ++done) {
            copyFile(first.path, task.outputs[done].path);
            ++m_same;
            m_progress.step(task.outputs[done].path + " like frame " + std::to_string(first.number));
        }
    }

    void draw(const FrameState& state, KSBitDepth::Type depth, const std::string& path) {
        LayerTimes times(m_times.size());
        BitmapPointer frame = drawFrame(state, m_pictures, m_rowThreads, times);
        if (!state.timecode.empty()) burnIn(*frame, state.timecode);
        {
            const std::lock_guard guard(m_mutex);
            for (std::size_t i = 0; i < times.size(); ++i) m_times[i] += times[i];
        }
        Conversion conversion;  // files hold straight alpha
        conversion.unpremultiply = KSColor::BLACK;
        writeImage(path, *convertBitmap(std::move(frame), conversion, depth, path));
    }

    int report() {
        const double seconds = m_progress.getSeconds();
        m_progress.hide();
        const std::size_t done = m_drawn + m_fromCache + m_same;
        std::fprintf(stderr, "%zu of %zu frames in %.1f s, %.1f a second: %zu drawn", done, m_frames, seconds,
                     static_cast<double>(done) / std::max(seconds, 1e-6), m_drawn.load());
        if (m_same > 0) std::fprintf(stderr, ", %zu like another", m_same.load());
        if (m_fromCache > 0) std::fprintf(stderr, ", %zu from the cache", m_fromCache.load());
        if (m_failed > 0) std::fprintf(stderr, ", %zu failed", m_failed.load());
        std::fprintf(stderr, "%s\n", isInterrupted() ? "; interrupted: --resume goes on" : "");
        if (m_drawn > 0) reportTimes();
        return isInterrupted() ? interruptStatus() : m_failed > 0 ? 1 : 0;
    }

    /// The slowest layers, all threads together.
    void reportTimes() const {
        constexpr std::size_t most = 12;
        std::vector<std::size_t> order(m_times.size());
        std::iota(order.begin(), order.end(), std::size_t{0});
        std::stable_sort(order.begin(), order.end(),
                         [&](std::size_t a, std::size_t b) { return m_times[a] > m_times[b]; });
        const double all = std::accumulate(m_times.begin(), m_times.end(), 0.0);
        std::fprintf(stderr, "layers, with their sources: %.2f s on all threads together\n", all);
        double rest = all;
        for (std::size_t i = 0; i < std::min(most, order.size()); ++i) {
            rest -= m_times[order[i]];
            std::fprintf(stderr, "  %8.3f s  %s\n", m_times[order[i]], m_scene.layerName(order[i]).c_str());
        }
        if (order.size() > most) std::fprintf(stderr, "  %8.3f s  %zu others\n", rest, order.size() - most);
    }

    const RenderOptions& m_options;
    RenderScene& m_scene;
    const std::vector<Task> m_tasks;
    const std::size_t m_frames;
    KSMutex m_mutex;  // of the scene and of the times
    LayerTimes m_times;
    FrameCache m_cache;
    Pictures m_pictures;
    Progress m_progress;
    unsigned int m_rowThreads = 1;
    std::atomic<std::size_t> m_next = 0, m_drawn = 0, m_fromCache = 0, m_same = 0, m_failed = 0;
};

/// Every frame and its file; what is wrong with them becomes a fault of the scene.
std::vector<Frame> planOutputs(const RenderOptions& options, RenderScene& scene) {
    const long long start = scene.firstFrame();
    long long first = start, last = start + scene.frameCount() - 1;
    if (options.frames) {
        first = std::max<long long>(first, options.frames->x);
        last = std::min<long long>(last, options.frames->y);
    }
    std::vector<Frame> outputs;
    if (last < first) {
        if (scene.frameCount() > 0) scene.fault(0, "no frames in that range");
        return outputs;
    }
    if (last - first >= mostFrames) {
        scene.fault(0, std::to_string(last - first + 1) + " frames at once; --frames names a part of them");
        return outputs;
    }
    scene.check(first, last);

    const KSURL url(options.output.c_str(), false);
    const bool isSequence = url.isSequence(),
               isRenumbered = url.getSequenceStart() >= 0 && url.getSequenceEnd() >= 0;
    if (last > first && !isSequence)
        throw std::runtime_error(options.output + ": needs a placeholder such as [####] for " +
                                 std::to_string(last - first + 1) + " frames");
    std::set<std::string> taken = scene.sourceIdentities();
    taken.insert(identity(options.scene.project));
    for (long long number = first; number <= last; ++number) {
        if ((number < 0 && isSequence && !isRenumbered) || number < std::numeric_limits<int>::min() ||
            number > std::numeric_limits<int>::max())
            throw std::runtime_error(options.output + ": no file can have the number " +
                                     std::to_string(number));
        Frame output{static_cast<int>(number),
                     FrameList::outputPath(options.output, static_cast<std::size_t>(number - start),
                                           static_cast<int>(number))};
        if (!taken.insert(identity(output.path)).second)
            throw std::runtime_error(output.path +
                                     ": would overwrite a source, the project or another frame");
        outputs.push_back(std::move(output));
    }
    depthFor(outputs[0].path, options.depth, KSBitDepth::INTEGER_8);  // all have one extension
    if (!options.sheet.empty()) {
        depthFor(options.sheet, {}, KSBitDepth::INTEGER_8);  // throws for a name that cannot be written
        if (taken.contains(identity(options.sheet)))
            throw std::runtime_error(options.sheet + ": would overwrite a source, the project or a frame");
    }
    return outputs;
}

/// Puts frames with the same state together, in the order of their first ones.
std::vector<Task> planTasks(RenderScene& scene, const std::vector<Frame>& outputs) {
    std::vector<Task> tasks;
    std::map<std::array<std::uint32_t, 4>, std::size_t> known;
    for (const Frame& output : outputs) {
        const KSHash128 digest = digestOf(scene.stateAt(output.number).describe());
        const auto [entry, isNew] = known.try_emplace(std::to_array(digest.words), tasks.size());
        if (isNew) tasks.emplace_back();
        tasks[entry->second].outputs.push_back(output);
    }
    return tasks;
}

}  // namespace

int renderProject(const RenderOptions& options) {
    RenderScene scene(options.scene);
    const std::vector<Frame> all = planOutputs(options, scene);
    if (!scene.reportFaults()) return 1;
    std::vector<Frame> outputs = all;
    if (options.resume) {  // a frame that is there is complete, since it gets its name last
        std::erase_if(outputs, [](const Frame& output) {
            std::error_code error;
            return fs::exists(output.path, error);
        });
        if (outputs.size() < all.size())
            std::fprintf(stderr, "%zu frames are there already\n", all.size() - outputs.size());
    }
    catchInterrupts();
    std::vector<Task> tasks = planTasks(scene, outputs);
    const int status = Work(options, scene, std::move(tasks), outputs.size()).run();
    if (options.sheet.empty() || isInterrupted()) return status;
    SheetOptions sheet;
    sheet.output = options.sheet;
    return std::max(status, makeSheet(all, sheet));
}

}  // namespace kestrel::tools::render
