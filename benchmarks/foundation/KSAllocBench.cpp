// The checking allocator beside malloc: switched off, and tracking one or a million live blocks.
//
// bytesPerBlock is what a live block costs beyond its size, from the allocator's own account of the heap.
#include <kestrel/foundation/KSAlloc.h>

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstddef>
#include <cstdlib>
#include <random>
#include <vector>

namespace {

constexpr std::size_t blockSize = 64;
constexpr std::size_t million = 1000000;

struct Malloc {
    static void start() {}
    static void end() {}
    static void* allocate(std::size_t size) { return std::malloc(size); }
    static void release(void* block) { std::free(block); }
};
struct Off : Malloc {
    static void* allocate(std::size_t size) { return ksAlloc(size); }
    static void release(void* block) { ksFree(block); }
};
struct Tracking : Off {
    static void start() { ksAllocStart(); }
    static void end() { ksAllocEnd(-1); }
};

bool isUsable(char* block, std::size_t size) {
    if (!block) return false;
    for (std::size_t i = 0; i < size; ++i) block[i] = static_cast<char>(i);
    return ksAllocCheckFence(block);
}

std::size_t heapInUse() {
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

template <class Allocator>
class LiveBlocks {
public:
    explicit LiveBlocks(std::size_t count) : m_blocks(count) {
        Allocator::start();
        const std::size_t before = heapInUse();
        for (void*& block : m_blocks) block = Allocator::allocate(blockSize);
        m_bytes = static_cast<double>(heapInUse() - before);
        isGood = isUsable(static_cast<char*>(m_blocks.back()), blockSize);
    }
    LiveBlocks(const LiveBlocks&) = delete;
    LiveBlocks& operator=(const LiveBlocks&) = delete;
    ~LiveBlocks() {
        for (void* block : m_blocks) Allocator::release(block);
        Allocator::end();
    }
    std::vector<void*>& blocks() { return m_blocks; }
    double bytesBeyondRequest() const {
        return m_bytes / static_cast<double>(m_blocks.size()) - static_cast<double>(blockSize);
    }
    bool isGood = false;

private:
    std::vector<void*> m_blocks;
    double m_bytes = 0;
};

/// Allocates and frees one block while others stay alive.
template <class Allocator>
void pair(benchmark::State& state) {
    LiveBlocks<Allocator> live(static_cast<std::size_t>(state.range(0)));
    if (!live.isGood) return state.SkipWithError("the block cannot be used");
    for (auto _ : state) {
        void* const block = Allocator::allocate(blockSize);
        benchmark::DoNotOptimize(block);
        Allocator::release(block);
    }
    if (live.blocks().size() == million) state.counters["bytesPerBlock"] = live.bytesBeyondRequest();
}
BENCHMARK(pair<Malloc>)->Arg(1)->Arg(million);
BENCHMARK(pair<Off>)->Arg(1)->Arg(million);
BENCHMARK(pair<Tracking>)->Arg(1)->Arg(million);

/// Replaces a random one of the live blocks.
template <class Allocator>
void replace(benchmark::State& state) {
    LiveBlocks<Allocator> live(static_cast<std::size_t>(state.range(0)));
    if (!live.isGood) return state.SkipWithError("the block cannot be used");
    std::minstd_rand random(7);
    for (auto _ : state) {
        void*& block = live.blocks()[random() % live.blocks().size()];
        Allocator::release(block);
        block = Allocator::allocate(blockSize);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(replace<Malloc>)->Arg(1)->Arg(million);
BENCHMARK(replace<Off>)->Arg(1)->Arg(million);
BENCHMARK(replace<Tracking>)->Arg(1)->Arg(million);

}  // namespace
