// Pixel work of KSBitmapBench on libyuv, the fastest of the common libraries for 8-bit pixels, and fresh
// memory. Names and units as there: bytes read plus written a second.
#include <benchmark/benchmark.h>
#include <sys/mman.h>

#ifdef KESTREL_PEER_LIBYUV
#include <libyuv.h>
#endif

#include <cstdint>
#include <random>
#include <vector>

namespace {

/// A 4K frame of fresh memory, one byte of each page touched, and given back.
void freshFrame(benchmark::State& state) {
    constexpr std::size_t size = std::size_t{3840} * 2160 * 4;
    for (auto _ : state) {
        void* memory = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        auto* bytes = static_cast<volatile char*>(memory);
        for (std::size_t i = 0; i < size; i += 4096) bytes[i] = 1;
        ::munmap(memory, size);
    }
}
BENCHMARK(freshFrame)->Name("allocate 4K frame, mmap")->Unit(benchmark::kMicrosecond);

#ifdef KESTREL_PEER_LIBYUV
std::vector<std::uint8_t> randomBytes(std::size_t size) {
    std::mt19937 random(5);
    std::vector<std::uint8_t> bytes(size);
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
    return bytes;
}

struct Frame {
    explicit Frame(const benchmark::State& state, int part = 1)
        : height(static_cast<int>(state.range(0)) / part),
          width(height * 16 / 9),
          bytes(randomBytes(std::size_t{4} * static_cast<unsigned>(width * height))) {}
    int height, width;
    std::vector<std::uint8_t> bytes;
    std::uint8_t* data() { return bytes.data(); }
    int stride() const { return 4 * width; }
};

template <typename Operation>
void run(benchmark::State& state, std::size_t moved, Operation operation) {
    if (operation() != 0) return state.SkipWithError("refused");
    for (auto _ : state) {
        operation();
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(moved));
}

#define PEER(name, moved, call)                                                                 \
    void name(benchmark::State& state) {                                                        \
        Frame a(state), b(state), half(state, 2);                                               \
        [[maybe_unused]] const std::size_t frame = a.bytes.size(), quarter = half.bytes.size(); \
        run(state, moved, [&] { return call; });                                                \
    }                                                                                           \
    BENCHMARK(name)->Name(#name ", libyuv")->Arg(1080)->Arg(2160)->Unit(benchmark::kMicrosecond)

using namespace libyuv;
PEER(premultiply8, 2 * frame, ARGBAttenuate(a.data(), a.stride(), a.data(), a.stride(), a.width, a.height));
PEER(unpremultiply8, 2 * frame,
     ARGBUnattenuate(a.data(), a.stride(), b.data(), a.stride(), a.width, a.height));
PEER(swizzleCopying, 2 * frame, ARGBToRGBA(a.data(), a.stride(), b.data(), a.stride(), a.width, a.height));
PEER(flipCopying, 2 * frame, ARGBCopy(a.data(), a.stride(), b.data(), a.stride(), a.width, -a.height));
PEER(yuvToArgb, frame + frame / 2,
     UYVYToARGB(a.data(), 2 * a.width, b.data(), b.stride(), a.width, a.height));
PEER(argbToYuv, frame + frame / 2,
     ARGBToUYVY(a.data(), a.stride(), b.data(), 2 * a.width, a.width, a.height));
PEER(scaleDown8, frame + quarter,
     ARGBScale(a.data(), a.stride(), a.width, a.height, half.data(), half.stride(), half.width, half.height,
               kFilterNone));
PEER(scaleUp8, frame + quarter,
     ARGBScale(half.data(), half.stride(), half.width, half.height, a.data(), a.stride(), a.width, a.height,
               kFilterNone));
#endif

}  // namespace
