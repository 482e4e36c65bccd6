// KSBitmap's operations, beside memcpy of the same frames (see PixelOperations.h). What an operation must do
// is the tests' affair: here it must do something, and other libraries are compared with it.
#include "PixelOperations.h"

#include <kestrel/color/KSColor.h>
#include <kestrel/imaging/KSBitmapMemory.h>
#include <kestrel/imaging/KSBitmap_t.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>
#include <random>
#include <type_traits>
#include <vector>

namespace {

enum Format : unsigned { RGBA8 = 0, ARGB8 = 1, YUV8 = 2, RGBA16 = 4, Half = 8, Float = 9 };

enum class How {
    inPlace,   ///< again and again on the same frame: no kernel's time depends on values
    restored,  ///< in place, from the same pixels each time, restored outside the clock
    copying    ///< from one frame to another
};

struct PixelOperation {
    const char* name;
    How how;
    Format to, from;
    int toPart, fromPart;  ///< sizes of both frames, as parts of the full one
    void (*run)(KSBitmap& to, const KSBitmap& from);
};

void scaled(KSBitmap& to, const KSBitmap& from) { to.copyWithScaling(from); }
void converted(KSBitmap& to, const KSBitmap& from) { to.copyWithScalingAndDepthConversion(from); }
void divided(KSBitmap& to, const KSBitmap&) { to.unpremultiply(KSColor::BLACK); }

#define RUN(call) [](KSBitmap& to, [[maybe_unused]] const KSBitmap& from) { call; }

constexpr PixelOperation operations[] = {
    {"memcpy/8", How::copying, RGBA8, RGBA8, 1, 1,
     RUN(std::memcpy(to.getData(), from.getData(), to.getSize()))},
    {"memcpy/16", How::copying, RGBA16, RGBA16, 1, 1,
     RUN(std::memcpy(to.getData(), from.getData(), to.getSize()))},
    {"memcpy/float", How::copying, Float, Float, 1, 1,
     RUN(std::memcpy(to.getData(), from.getData(), to.getSize()))},

    {"premultiply8", How::inPlace, RGBA8, RGBA8, 1, 1, RUN(to.preMult())},
    {"unPreMult8", How::inPlace, ARGB8, ARGB8, 1, 1, RUN(to.unPreMult())},
    {"unpremultiply8", How::restored, RGBA8, RGBA8, 1, 1, divided},
    {"unpremultiply8Matte", How::restored, RGBA8, RGBA8, 1, 1, RUN(to.unpremultiply(KSColor::RED))},
    {"unpremultiply16", How::restored, RGBA16, RGBA16, 1, 1, divided},
    {"unpremultiplyHalf", How::restored, Half, Half, 1, 1, divided},
    {"unpremultiplyFloat", How::restored, Float, Float, 1, 1, divided},
    {"copyWithUnPreMult", How::copying, ARGB8, ARGB8, 1, 1, RUN(to.copyWithUnPreMult(from, KSColor::BLACK))},

    {"swizzleInPlace", How::inPlace, RGBA8, RGBA8, 1, 1,
     RUN(to.getPixelFormat() == RGBA8 ? to.convertToARGB() : to.convertToRGBA())},
    {"swizzleCopying", How::copying, RGBA8, ARGB8, 1, 1, RUN(to.copyWithSwizzleARGBToRGBA(from))},
    {"rotateFloat", How::inPlace, Float, Float, 1, 1, RUN(to.convertToARGB())},
    {"flipInPlace", How::inPlace, RGBA8, RGBA8, 1, 1, RUN(to.flip())},
    {"flipCopying", How::copying, RGBA8, RGBA8, 1, 1, RUN(to.copyWithFlip(from))},
    {"yuvToArgb", How::copying, ARGB8, YUV8, 1, 1, RUN(to.copy(from))},
    {"argbToYuv", How::copying, YUV8, ARGB8, 1, 1, RUN(to.copy(from))},
    {"constantAlpha8", How::inPlace, RGBA8, RGBA8, 1, 1, RUN(to.setConstantAlpha(1.0))},
    {"invertAlpha8", How::inPlace, RGBA8, RGBA8, 1, 1, RUN(to.invertAlpha())},
    {"alphaToRGB8", How::inPlace, RGBA8, RGBA8, 1, 1, RUN(to.duplicateAlphaToRGB())},

    {"scaleDown8", How::copying, RGBA8, RGBA8, 2, 1, scaled},
    {"scaleUp8", How::copying, RGBA8, RGBA8, 1, 2, scaled},
    {"scaleDown16", How::copying, RGBA16, RGBA16, 2, 1, scaled},
    {"scaleUp16", How::copying, RGBA16, RGBA16, 1, 2, scaled},
    {"scaleDownFloat", How::copying, Float, Float, 2, 1, scaled},
    {"scaleUpFloat", How::copying, Float, Float, 1, 2, scaled},
    {"scaleOddly8", How::copying, RGBA8, RGBA8, 3, 2, scaled},
    {"scaleOddly16", How::copying, RGBA16, RGBA16, 3, 2, scaled},
    {"scaleOddlyFloat", How::copying, Float, Float, 3, 2, scaled},

    {"from8To16", How::copying, RGBA16, RGBA8, 1, 1, converted},
    {"from16To8", How::copying, ARGB8, RGBA16, 1, 1, converted},
    {"from8ToFloat", How::copying, Float, RGBA8, 1, 1, converted},
    {"from16ToFloat", How::copying, Float, RGBA16, 1, 1, converted},
    {"fromHalfToFloat", How::copying, Float, Half, 1, 1, converted},
    {"fromHalfTo8", How::copying, ARGB8, Half, 1, 1, converted},
    {"fromHalfTo16", How::copying, RGBA16, Half, 1, 1, converted},
    {"fromFloatTo8", How::copying, ARGB8, Float, 1, 1, converted},
    {"fromFloatTo16", How::copying, RGBA16, Float, 1, 1, converted},
};

// ---- Frames

/// As many random components as make a pattern: of 0 to 1 in floats, of all values in integers.
template <typename Component, typename Draw>
std::vector<std::uint8_t> pattern(Draw draw) {
    std::mt19937 random(5);
    std::vector<Component> components(65521);
    for (auto& component : components) component = static_cast<Component>(draw(random));
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(components.data());
    return {bytes, bytes + sizeof(Component) * components.size()};
}

void randomize(KSBitmap& bitmap) {
    static const auto bytes = pattern<std::uint16_t>([](auto& random) { return random(); });
    static const auto halves = pattern<std::uint16_t>([](auto& random) { return random() % 0x3C01; });
    static const auto floats =
        pattern<float>([](auto& random) { return static_cast<float>(random() % 4096) / 4095.0f; });
    const unsigned format = bitmap.getPixelFormat();
    const auto& repeated = format == Float ? floats : format == Half ? halves : bytes;
    for (std::size_t done = 0; done < bitmap.getSize(); done += repeated.size())
        std::memcpy(bitmap.getData() + done, repeated.data(),
                    std::min<std::size_t>(repeated.size(), bitmap.getSize() - done));
}

using Bitmap = std::unique_ptr<KSBitmap>;

Bitmap frame(std::int64_t height, Format format, int part = 1) {
    const auto rows = static_cast<unsigned>(height / part);
    Bitmap bitmap(KSCreateBitmap(rows * 16 / 9, rows, format));
    randomize(*bitmap);
    return bitmap;
}

struct Frames {
    Frames(const PixelOperation& operation, std::int64_t height)
        : to(frame(height, operation.to, operation.toPart)),
          from(frame(height, operation.from, operation.fromPart)) {
        if (operation.how == How::copying) std::memset(to->getData(), 0x5A, to->getSize());
    }
    Bitmap to, from;
};

// ---- Comparison

/// Integers by what they differ, floats by which part of themselves.
template <typename Component>
std::string differences(const KSBitmap& a, const KSBitmap& b) {
    const auto* left = reinterpret_cast<const Component*>(a.getData());
    const auto* right = reinterpret_cast<const Component*>(b.getData());
    const std::size_t count = a.getSize() / sizeof(Component);
    std::size_t differing = 0;
    double most = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (left[i] == right[i]) continue;
        ++differing;
        const auto ours = static_cast<double>(left[i]), theirs = static_cast<double>(right[i]);
        most =
            std::max(most, std::fabs(ours - theirs) / (std::is_integral_v<Component> ? 1 : std::fabs(ours)));
    }
    if (differing == 0) return "equal";
    char text[80];
    std::snprintf(text, sizeof text, "%.3g%% differ, by up to %.3g",
                  100.0 * static_cast<double>(differing) / static_cast<double>(count), most);
    return text;
}

/// How a peer's frame compares with ours; the peers leave components in their order when only depth changes.
std::string comparison(const PixelOperation& operation, std::int64_t height, const KSBitmap& theirs) {
    Frames ours(operation, height);
    operation.run(*ours.to, *ours.from);
    if (operation.run == converted && operation.to == ARGB8) ours.to->convertToRGBA();
    if (ours.to->getSize() != theirs.getSize()) return "of another size";
    switch (operation.to) {
        case RGBA16:
            return differences<std::uint16_t>(*ours.to, theirs);
        case Half:
            return differences<half>(*ours.to, theirs);
        case Float:
            return differences<float>(*ours.to, theirs);
        default:
            return differences<std::uint8_t>(*ours.to, theirs);
    }
}

// ---- Measurement

/// Measures prepare's run; with a label when it is a peer's, which is formed once.
void measure(benchmark::State& state, const PixelOperation& operation, const PixelPeer& prepare,
             std::string* label) {
    const Frames frames(operation, state.range(0));
    KSBitmap &to = *frames.to, &from = *frames.from;
    const std::vector<std::uint8_t> before(to.getData(), to.getData() + to.getSize());
    const PixelRun run = prepare(to, from);
    run();
    if (std::memcmp(before.data(), to.getData(), before.size()) == 0)
        return state.SkipWithError("the operation did nothing");
    if (label) {
        if (label->empty()) *label = comparison(operation, state.range(0), to);
        state.SetLabel(*label);
    }
    for (auto _ : state) {
        if (operation.how == How::restored) {
            state.PauseTiming();
            std::memcpy(to.getData(), from.getData(), to.getSize());
            state.ResumeTiming();
        }
        run();
        benchmark::ClobberMemory();
    }
    const std::size_t read = operation.how == How::copying ? from.getSize() : to.getSize();
    state.SetBytesProcessed(static_cast<std::int64_t>(to.getSize() + read) * state.iterations());
}

benchmark::internal::Benchmark* add(const std::string& name, const PixelOperation& operation,
                                    PixelPeer prepare, std::shared_ptr<std::string> label) {
    return benchmark::RegisterBenchmark(name.c_str(),
                                        [&operation, prepare, label](benchmark::State& state) {
                                            measure(state, operation, prepare, label.get());
                                        })
        ->Arg(1080)
        ->Arg(2160)
        ->Unit(benchmark::kMicrosecond);
}

[[maybe_unused]] const bool ours = [] {
    for (const PixelOperation& operation : operations)
        add(
            operation.name, operation,
            [&operation](KSBitmap& to, KSBitmap& from) {
                return [&operation, &to, &from] { operation.run(to, from); };
            },
            nullptr);
    return true;
}();

/// A 4K frame allocated, one byte of each page touched, and freed.
void allocateFrame(benchmark::State& state) {
    for (auto _ : state) {
        KSBitmapRGBA8 bitmap(3840, 2160);
        auto* bytes = static_cast<volatile std::uint8_t*>(bitmap.getData());
        if (!bytes || bytes[bitmap.getSize() - 1]) return state.SkipWithError("no zeroed memory");
        for (std::size_t i = 0; i < bitmap.getSize(); i += 4096) bytes[i] = 1;
    }
}
BENCHMARK(allocateFrame)->Name("allocate 4K frame, reused")->Unit(benchmark::kMicrosecond);

void allocateFreshFrame(benchmark::State& state) {
    KSBitmapMemory::setKeptLimit(0);
    allocateFrame(state);
    KSBitmapMemory::setKeptLimit(std::size_t{256} * 1024 * 1024);
}
BENCHMARK(allocateFreshFrame)->Name("allocate 4K frame, fresh")->Unit(benchmark::kMicrosecond);

}  // namespace

void addPixelPeer(const std::string& operation, const std::string& library, PixelPeer peer) {
    const auto* found = std::find_if(std::begin(operations), std::end(operations),
                                     [&](const PixelOperation& each) { return operation == each.name; });
    if (found == std::end(operations)) std::abort();  // a name that the table does not have
    // The time of all threads counts, should a library have some of its own.
    add(operation + ", " + library, *found, std::move(peer), std::make_shared<std::string>())
        ->MeasureProcessCPUTime();
}
