#include "Convert.h"

#include <Imath/half.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <set>
#include <stdexcept>
#include <type_traits>
#include <utility>
#include <vector>

#include "../Terminal.h"
#include "../Threads.h"
#include "FrameList.h"

namespace kestrel::tools {

namespace {

namespace fs = std::filesystem;

/// Multiplies alpha into the colours of 16-bit, half and float pixels; the library does 8-bit ones.
template <class Component>
void premultiplyPixels(KSBitmap& bitmap, float scale) {
    auto* pixel = reinterpret_cast<Component*>(bitmap.getData());
    const std::size_t count = std::size_t{bitmap.getWidth()} * bitmap.getHeight();
    for (std::size_t i = 0; i < count; ++i, pixel += 4)
        for (int c = 0; c < 3; ++c) {
            const float product = static_cast<float>(pixel[c]) * static_cast<float>(pixel[3]) / scale;
            if constexpr (std::is_integral_v<Component>)
                pixel[c] = static_cast<Component>(product + 0.5f);
            else
                pixel[c] = Component(product);
        }
}

void premultiply(KSBitmap& bitmap) {
    switch (bitmap.getPixelFormat()) {
        case 4:
            return premultiplyPixels<std::uint16_t>(bitmap, 65535);
        case 8:
            return premultiplyPixels<half>(bitmap, 1);
        case 9:
            return premultiplyPixels<float>(bitmap, 1);
        default:
            bitmap.preMult();
    }
}

BitmapPointer crop(const KSBitmap& source, const Window& window, const std::string& what) {
    BitmapPointer cut = makeBitmap(window.width, window.height, source.getPixelFormat(), what);
    cut->copyWithCropping(source, window.x, window.y, false);
    return cut;
}

/// Float to half, which the library leaves to its half type.
BitmapPointer toHalf(const KSBitmap& source, const std::string& what) {
    BitmapPointer result = makeBitmap(source.getWidth(), source.getHeight(), 8, what);
    const auto* from = reinterpret_cast<const float*>(source.getData());
    auto* to = reinterpret_cast<half*>(result->getData());
    const std::size_t count = std::size_t{source.getWidth()} * source.getHeight() * 4;
    for (std::size_t i = 0; i < count; ++i) to[i] = half(from[i]);
    return result;
}

BitmapPointer resize(const KSBitmap& source, unsigned int width, unsigned int height, KSBitDepth::Type depth,
                     const std::string& what) {
    const unsigned int format = formatOfDepth(depth);
    if (source.getPixelFormat() == format) {
        BitmapPointer result = makeBitmap(width, height, format, what);
        result->copyWithScaling(source);
        return result;
    }
    // The library converts into ARGB, 16 bits and float.
    const unsigned int target = depth == KSBitDepth::INTEGER_8 ? 1 : depth == KSBitDepth::HALF ? 9 : format;
    BitmapPointer result = makeBitmap(width, height, target, what);
    result->copyWithScalingAndDepthConversion(source);
    if (depth == KSBitDepth::INTEGER_8) result->convertToRGBA();
    return depth == KSBitDepth::HALF ? toHalf(*result, what) : std::move(result);
}

struct Task {
    Frame in;
    std::string out;
};

/// The frames that several threads share out among themselves.
class Work {
public:
    Work(const ConvertOptions& options, std::vector<Task> tasks)
        : m_options(options), m_tasks(std::move(tasks)), m_progress(m_tasks.size(), "frames") {}

    int run() {
        onThreads(static_cast<unsigned>(std::min<std::size_t>(m_options.jobs, m_tasks.size())), *this);
        return report();
    }

    /// What each thread does.
    void operator()() {
        for (;;) {
            const std::size_t index = m_next++;
            if (index >= m_tasks.size() || isInterrupted() || (m_options.strict && m_failed > 0)) return;
            const Task& task = m_tasks[index];
            try {
                convert(task);
                ++m_converted;
                m_progress.step(task.in.path + " -> " + task.out);
            } catch (const std::exception& error) {  // such as ImageError and bad_alloc
                ++m_failed;
                m_progress.say(std::string("kestrel frames: ") + error.what());
            }
        }
    }

private:
    void convert(const Task& task) {
        BitmapPointer picture = readImage(task.in.path);
        const KSBitDepth::Type own = depthOfFormat(picture->getPixelFormat());
        const KSBitDepth::Type depth = depthFor(task.out, m_options.conversion.depth, own);
        writeImage(task.out, *convertBitmap(std::move(picture), m_options.conversion, depth, task.in.path));
    }

    int report() const {
        const double seconds = m_progress.getSeconds();
        std::fprintf(stderr, "%zu of %zu frames in %.1f s, %.1f a second%s%s\n", m_converted.load(),
                     m_tasks.size(), seconds, static_cast<double>(m_converted) / std::max(seconds, 1e-6),
                     m_failed > 0 ? (", " + std::to_string(m_failed) + " failed").c_str() : "",
                     isInterrupted() ? ", interrupted: --resume goes on" : "");
        return isInterrupted() ? interruptStatus() : m_failed > 0 ? 1 : 0;
    }

    const ConvertOptions& m_options;
    const std::vector<Task> m_tasks;
    Progress m_progress;
    std::atomic<std::size_t> m_next = 0;
    std::atomic<std::size_t> m_converted = 0;
    std::atomic<std::size_t> m_failed = 0;
};

std::vector<Task> planTasks(const ConvertOptions& options) {
    FrameList input = FrameList::read(options.input);
    std::set<std::string> inputs;  // also those that --frames leaves out
    for (const Frame& frame : input.getFrames()) inputs.insert(identity(frame.path));
    if (options.frames) input.restrictTo(options.frames->x, options.frames->y);
    if (input.getFrames().empty()) throw std::runtime_error(options.input + ": no frames in that range");
    const bool toSequence = KSURL(options.output.c_str(), false).isSequence();
    if (input.isSequence() && !toSequence)
        throw std::runtime_error(options.output +
                                 ": needs a placeholder such as [####] for a sequence of frames");
    if (!input.isSequence() && toSequence)
        throw std::runtime_error(options.output + ": is a sequence, but the input is a single file");

    std::vector<Task> tasks;
    for (std::size_t i = 0; i < input.getFrames().size(); ++i) {
        const Frame& frame = input.getFrames()[i];
        Task task{frame, FrameList::outputPath(options.output, i, frame.number)};
        if (inputs.contains(identity(task.out)))
            throw std::runtime_error(task.out + ": would overwrite an input");
        tasks.push_back(std::move(task));
    }
    return tasks;
}

}  // namespace

BitmapPointer convertBitmap(BitmapPointer bitmap, const Conversion& conversion, KSBitDepth::Type depth,
                            const std::string& what) {
    if (conversion.crop) bitmap = crop(*bitmap, *conversion.crop, what);
    if (conversion.premultiply) premultiply(*bitmap);
    bitmap->doOutputConversion(conversion.unpremultiply.has_value(), false, conversion.alphaToRGB,
                               conversion.unpremultiply.value_or(KSColor::BLACK));
    if (conversion.opaque) bitmap->setConstantAlpha(1.0);  // after alphaToRGB too
    if (conversion.flip) bitmap->flip();
    const unsigned int width = conversion.size ? conversion.size->width : bitmap->getWidth();
    const unsigned int height = conversion.size ? conversion.size->height : bitmap->getHeight();
    const bool same = width == bitmap->getWidth() && height == bitmap->getHeight() &&
                      formatOfDepth(depth) == bitmap->getPixelFormat();
    return same ? std::move(bitmap) : resize(*bitmap, width, height, depth, what);
}

int convertFrames(const ConvertOptions& options) {
    std::vector<Task> tasks = planTasks(options);
    depthFor(tasks[0].out, options.conversion.depth, KSBitDepth::INTEGER_8);  // all have one extension
    if (options.resume) {  // a frame that is there is complete, since it gets its name last
        const std::size_t all = tasks.size();
        std::erase_if(tasks, [](const Task& task) {
            std::error_code error;
            return fs::exists(task.out, error);
        });
        if (tasks.size() < all) std::fprintf(stderr, "%zu frames are there already\n", all - tasks.size());
    }
    catchInterrupts();
    return Work(options, std::move(tasks)).run();
}

}  // namespace kestrel::tools
