// A frame of fresh memory, one byte of each page touched, and given back: beside KSBitmapBench.
#include <benchmark/benchmark.h>
#include <sys/mman.h>

namespace {

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

}  // namespace
