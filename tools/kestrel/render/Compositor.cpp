#include "Compositor.h"

#include <kestrel/concurrency/KSMutex.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <exception>
#include <mutex>
#include <optional>
#include <span>

#include "../Threads.h"
#include "BlendFormulas.h"
#include "Placement.h"

namespace kestrel::tools::render {
namespace {

constexpr std::size_t channels = 4;
constexpr int bandHeight = 8;  // pixels of the frame

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

std::size_t sizeOf(int number) { return static_cast<std::size_t>(number); }

/// A layer ready to be drawn.
struct Plane {
    std::size_t layer;
    Picture picture;  // or null for one colour
    std::array<float, channels> color;
    Placement placement;
    BlendRow blend;
    float opacity;
};

Plane makePlane(const LayerState& layer, const FrameState& state, Pictures& pictures) {
    Picture picture;
    int width = state.width, height = state.height;
    std::array<float, channels> color = layer.color;
    if (layer.file && layer.file->isBlack) {
        const ImageInfo info = readImageInfo(layer.file->path);
        width = static_cast<int>(info.width), height = static_cast<int>(info.height);
        color = {0, 0, 0, 1};
    } else if (layer.file || layer.checker) {
        picture =
            layer.file ? pictures.file(layer.file->path, layer.alpha) : pictures.checker(*layer.checker);
        width = static_cast<int>(picture->getWidth()), height = static_cast<int>(picture->getHeight());
    }
    for (std::size_t c = 0; c < 3; ++c) color[c] *= color[3];
    const Canvas& canvas = state.canvas;
    KSMatrix33 toCanvas = layer.matrix;
    const double density = static_cast<double>(canvas.samples) / canvas.proxy;
    toCanvas.scale(density, density);
    return {layer.layer,
            std::move(picture),
            color,
            Placement(toCanvas, width, height, canvas.width * canvas.samples, canvas.height * canvas.samples),
            blendRow(static_cast<KSBlendMode>(layer.blendMode)),
            layer.opacity};
}

/// Several threads call it; each takes bands until none is left.
class Painter {
public:
    Painter(const Canvas& canvas, std::span<const Plane> planes, KSBitmap& frame, LayerTimes& times)
        : m_canvas(canvas),
          m_planes(planes),
          m_pixels(reinterpret_cast<float*>(frame.getData())),
          m_times(times) {}

    void operator()() {
        try {
            Scratch scratch(m_canvas, m_times.size());
            for (int top; (top = m_next.fetch_add(bandHeight)) < m_canvas.height;)
                paint(top, std::min(bandHeight, m_canvas.height - top), scratch);
            const std::lock_guard guard(m_mutex);
            for (std::size_t i = 0; i < m_times.size(); ++i) m_times[i] += scratch.times[i];
        } catch (...) {
            const std::lock_guard guard(m_mutex);
            m_error = std::current_exception();
        }
    }
    void rethrow() const {
        if (m_error) std::rethrow_exception(m_error);
    }

private:
    /// What one thread needs besides the frame: rows of samples, channel by channel.
    struct Scratch {
        Scratch(const Canvas& canvas, std::size_t layers)
            : width(sizeOf(canvas.width * canvas.samples)),
              source(width * channels),
              band(source.size() * sizeOf(bandHeight * canvas.samples)),
              times(layers) {}

        Row<float> sourceRow() { return {source.data(), width}; }
        Row<float> bandRow(int row) { return {band.data() + sizeOf(row) * source.size(), width}; }

        std::size_t width;
        std::vector<float> source, band;
        LayerTimes times;
    };

    void paint(int top, int height, Scratch& scratch) {
        const int side = m_canvas.samples;
        std::fill(scratch.band.begin(), scratch.band.end(), 0.0f);
        for (const Plane& plane : m_planes) paint(plane, top * side, height * side, scratch);
        for (int y = 0; y < height; ++y)
            average(y, scratch, m_pixels + sizeOf(top + y) * sizeOf(m_canvas.width) * channels);
    }

    /// Lays a layer over the band whose first row of samples is top.
    void paint(const Plane& plane, int top, int height, Scratch& scratch) const {
        const int first = std::max(top, plane.placement.rows().begin);
        const int end = std::min(top + height, plane.placement.rows().end);
        if (first >= end) return;
        const auto start = Clock::now();
        const Row<float> source = scratch.sourceRow();
        if (!plane.picture)
            for (std::size_t c = 0; c < channels; ++c)
                std::fill_n(source.channel(c), scratch.width, plane.color[c]);
        for (int row = first; row < end; ++row) {
            const Placement::Span span = plane.placement.span(row);
            if (span.begin >= span.end) continue;
            if (plane.picture)
                plane.placement.sample(reinterpret_cast<const float*>(plane.picture->getData()), row, span,
                                       source);
            const Row<float> band = scratch.bandRow(row - top);
            plane.blend({band.data + span.begin, band.stride}, {source.data, source.stride},
                        sizeOf(span.end - span.begin), plane.opacity);
        }
        scratch.times[plane.layer] += secondsSince(start);
    }

    /// Each pixel of a row becomes the mean of its samples.
    void average(int y, Scratch& scratch, float* frame) const {
        const int side = m_canvas.samples;
        const float share = 1.0f / static_cast<float>(side * side);
        for (std::size_t c = 0; c < channels; ++c)
            for (int x = 0; x < m_canvas.width; ++x) {
                float sum = 0;
                for (int i = 0; i < side; ++i) {
                    const float* samples = scratch.bandRow(y * side + i).channel(c) + sizeOf(x * side);
                    for (int j = 0; j < side; ++j) sum += samples[j];
                }
                frame[sizeOf(x) * channels + c] = sum * share;
            }
    }

    const Canvas& m_canvas;
    const std::span<const Plane> m_planes;
    float* const m_pixels;
    std::atomic<int> m_next = 0;
    KSMutex m_mutex;
    LayerTimes& m_times;
    std::exception_ptr m_error;
};

}  // namespace

BitmapPointer drawFrame(const FrameState& state, Pictures& pictures, unsigned int threads,
                        LayerTimes& times) {
    std::vector<Plane> planes;
    for (const LayerState& layer : state.layers) {
        const auto start = Clock::now();
        planes.push_back(makePlane(layer, state, pictures));
        times[layer.layer] += secondsSince(start);
    }
    constexpr unsigned int rgbaFloat = 9;
    const Canvas& canvas = state.canvas;
    BitmapPointer frame = makeBitmap(static_cast<unsigned>(canvas.width),
                                     static_cast<unsigned>(canvas.height), rgbaFloat, "frame");
    Painter painter(canvas, planes, *frame, times);
    const auto bands = static_cast<unsigned>((canvas.height + bandHeight - 1) / bandHeight);
    onThreads(std::min(threads, bands), painter);
    painter.rethrow();
    return frame;
}

}  // namespace kestrel::tools::render
