// Operations on frames of 1920x1080 and 3840x2160, in bytes read plus written a second, beside memcpy of the
// same frame. Each item checks first that its operation does something to these pixels; what it must do is
// the tests' affair.
#include <kestrel/color/KSColor.h>
#include <kestrel/imaging/KSBitmapMemory.h>
#include <kestrel/imaging/KSBitmap_t.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

namespace {

using Bitmap = std::unique_ptr<KSBitmap>;

void randomize(KSBitmap& bitmap) {
    std::mt19937_64 random(5);
    const unsigned format = bitmap.getPixelFormat();
    if (format == 9) {
        auto* f = reinterpret_cast<float*>(bitmap.getData());
        for (unsigned i = 0; i < bitmap.getSize() / 4; ++i)
            f[i] = static_cast<float>(random() % 4096) / 4095.0f;
    } else if (format == 8) {
        auto* h = reinterpret_cast<std::uint16_t*>(bitmap.getData());
        for (unsigned i = 0; i < bitmap.getSize() / 2; ++i)
            h[i] = static_cast<std::uint16_t>(random() % 0x3C01);
    } else {
        for (unsigned i = 0; i + 8 <= bitmap.getSize(); i += 8) {
            const std::uint64_t bits = random();
            std::memcpy(bitmap.getData() + i, &bits, 8);
        }
    }
}

Bitmap frame(const benchmark::State& state, unsigned format, int part = 1) {
    const auto height = static_cast<unsigned>(state.range(0) / part);
    Bitmap bitmap(KSCreateBitmap(height * 16 / 9, height, format));
    randomize(*bitmap);
    return bitmap;
}

void count(benchmark::State& state, std::size_t bytes) {
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
}

/// Runs an operation that must change the bitmap; tells Google Benchmark when it does not.
template <typename Operation>
bool changes(benchmark::State& state, KSBitmap& bitmap, Operation operation) {
    const std::vector<std::uint8_t> before(bitmap.getData(), bitmap.getData() + bitmap.getSize());
    operation();
    const bool changed = std::memcmp(before.data(), bitmap.getData(), before.size()) != 0;
    if (!changed) state.SkipWithError("the operation did nothing");
    return changed;
}

#define FRAMES ->Arg(1080)->Arg(2160)->Unit(benchmark::kMicrosecond)

template <unsigned format>
void copyFrame(benchmark::State& state) {
    const Bitmap a = frame(state, format), b = frame(state, format);
    for (auto _ : state) {
        std::memcpy(b->getData(), a->getData(), a->getSize());
        benchmark::ClobberMemory();
    }
    count(state, 2 * std::size_t{a->getSize()});
}
BENCHMARK(copyFrame<0>)->Name("memcpy/8") FRAMES;
BENCHMARK(copyFrame<4>)->Name("memcpy/16") FRAMES;
BENCHMARK(copyFrame<9>)->Name("memcpy/float") FRAMES;

/// An operation in place. Data that an operation changes run by run would drift, but no kernel's time
/// depends on values; mutating operations are restored by their own inverse or by nothing at all.
template <unsigned format, typename Operation>
void inPlace(benchmark::State& state, Operation operation) {
    const Bitmap bitmap = frame(state, format);
    if (!changes(state, *bitmap, [&] { operation(*bitmap); })) return;
    for (auto _ : state) {
        operation(*bitmap);
        benchmark::ClobberMemory();
    }
    count(state, 2 * std::size_t{bitmap->getSize()});
}

/// Unpremultiplication of the same random pixels each time: the frame is restored outside the clock.
template <unsigned format>
void unpremultiply(benchmark::State& state, const KSColor& matte) {
    const Bitmap source = frame(state, format), bitmap = frame(state, format);
    if (!changes(state, *bitmap, [&] { bitmap->unpremultiply(matte); })) return;
    for (auto _ : state) {
        state.PauseTiming();
        std::memcpy(bitmap->getData(), source->getData(), source->getSize());
        state.ResumeTiming();
        bitmap->unpremultiply(matte);
        benchmark::ClobberMemory();
    }
    count(state, 2 * std::size_t{bitmap->getSize()});
}

/// From one bitmap to another, the destination a fraction of the size.
template <unsigned to, unsigned from, int toPart = 1, int fromPart = 1, typename Operation>
void copying(benchmark::State& state, Operation operation) {
    const Bitmap target = frame(state, to, toPart), source = frame(state, from, fromPart);
    std::memset(target->getData(), 0x5A, target->getSize());
    if (!changes(state, *target, [&] { operation(*target, *source); })) return;
    for (auto _ : state) {
        operation(*target, *source);
        benchmark::ClobberMemory();
    }
    count(state, std::size_t{target->getSize()} + source->getSize());
}

#define IN_PLACE(name, format, call)                         \
    void name(benchmark::State& state) {                     \
        inPlace<format>(state, [](KSBitmap& b) { b.call; }); \
    }                                                        \
    BENCHMARK(name) FRAMES
#define COPYING(name, to, from, call)                                                            \
    void name(benchmark::State& state) {                                                         \
        copying<to, from>(state, [](KSBitmap& target, const KSBitmap& source) { target.call; }); \
    }                                                                                            \
    BENCHMARK(name) FRAMES
#define SCALING(name, to, from, toPart, fromPart, call)                                                     \
    void name(benchmark::State& state) {                                                                    \
        copying<to, from, toPart, fromPart>(state,                                                          \
                                            [](KSBitmap& target, const KSBitmap& source) { target.call; }); \
    }                                                                                                       \
    BENCHMARK(name) FRAMES

IN_PLACE(premultiply8, 1, preMult());
IN_PLACE(unPreMult8, 1, unPreMult());
void unpremultiply8(benchmark::State& state) { unpremultiply<1>(state, KSColor::BLACK); }
BENCHMARK(unpremultiply8) FRAMES;
void unpremultiply8Matte(benchmark::State& state) { unpremultiply<1>(state, KSColor::RED); }
BENCHMARK(unpremultiply8Matte) FRAMES;
void unpremultiply16(benchmark::State& state) { unpremultiply<4>(state, KSColor::BLACK); }
BENCHMARK(unpremultiply16) FRAMES;
void unpremultiplyHalf(benchmark::State& state) { unpremultiply<8>(state, KSColor::BLACK); }
BENCHMARK(unpremultiplyHalf) FRAMES;
void unpremultiplyFloat(benchmark::State& state) { unpremultiply<9>(state, KSColor::BLACK); }
BENCHMARK(unpremultiplyFloat) FRAMES;
COPYING(copyWithUnPreMult, 1, 1, copyWithUnPreMult(source, KSColor::BLACK));

void swizzleInPlace(benchmark::State& state) {
    inPlace<0>(state, [](KSBitmap& b) { b.getPixelFormat() == 0 ? b.convertToARGB() : b.convertToRGBA(); });
}
BENCHMARK(swizzleInPlace) FRAMES;
COPYING(swizzleCopying, 0, 1, copyWithSwizzleARGBToRGBA(source));
IN_PLACE(rotateFloat, 9, convertToARGB());
IN_PLACE(flipInPlace, 0, flip());
COPYING(flipCopying, 0, 0, copyWithFlip(source));
COPYING(yuvToArgb, 1, 2, copy(source));
COPYING(argbToYuv, 2, 1, copy(source));
IN_PLACE(constantAlpha8, 0, setConstantAlpha(1.0));
IN_PLACE(invertAlpha8, 0, invertAlpha());
IN_PLACE(alphaToRGB8, 0, duplicateAlphaToRGB());

SCALING(scaleDown8, 0, 0, 2, 1, copyWithScaling(source));
SCALING(scaleUp8, 0, 0, 1, 2, copyWithScaling(source));
SCALING(scaleDown16, 4, 4, 2, 1, copyWithScaling(source));
SCALING(scaleUp16, 4, 4, 1, 2, copyWithScaling(source));
SCALING(scaleDownFloat, 9, 9, 2, 1, copyWithScaling(source));
SCALING(scaleUpFloat, 9, 9, 1, 2, copyWithScaling(source));
SCALING(scaleOddly8, 0, 0, 3, 2, copyWithScaling(source));

COPYING(from8To16, 4, 0, copyWithScalingAndDepthConversion(source));
COPYING(from16To8, 1, 4, copyWithScalingAndDepthConversion(source));
COPYING(from8ToFloat, 9, 0, copyWithScalingAndDepthConversion(source));
COPYING(from16ToFloat, 9, 4, copyWithScalingAndDepthConversion(source));
COPYING(fromHalfToFloat, 9, 8, copyWithScalingAndDepthConversion(source));
COPYING(fromHalfTo8, 1, 8, copyWithScalingAndDepthConversion(source));
COPYING(fromFloatTo8, 1, 9, copyWithScalingAndDepthConversion(source));
COPYING(fromFloatTo16, 4, 9, copyWithScalingAndDepthConversion(source));

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
