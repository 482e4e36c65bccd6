#include <kestrel/foundation/KSAlloc.h>

#include <kestrel/concurrency/KSMutex.h>
#include <kestrel/foundation/KSPrint.h>
#include <kestrel/foundation/KSUnreachable.h>
#include <kestrel/foundation/detail/AllocReport.h>
#include <kestrel/foundation/detail/AllocSettings.h>
#include <kestrel/foundation/detail/BlockTable.h>
#include <kestrel/foundation/detail/Fence.h>
#include <kestrel/foundation/detail/MallocAllocator.h>

#include <pthread.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <mutex>

using kestrel::detail::allocIsActive;
using kestrel::detail::Block;
using kestrel::detail::fencesSize;
using kestrel::detail::frontFenceSize;

constinit std::atomic<bool> kestrel::detail::allocIsActive{false};

namespace {

/// The quick-and-dirty linear congruential generator, as a float in [0, 1).
class MyRandom {
public:
    float draw() {
        m_state = m_state * 1664525u + 1013904223u;
        return std::bit_cast<float>((m_state & 0x007FFFFFu) | 0x3F800000u) - 1.0f;
    }

private:
    std::uint32_t m_state = 0;
};

/// Everything the allocator remembers. All of it is guarded by the mutex, except that the two switches
/// may be read without.
struct State {
    KSMutex mutex;
    std::atomic<bool> isTracking{false};
    std::atomic<bool> isFilling{false};
    kestrel::detail::BlockTable blocks;  // of this run, and those that outlived theirs
    kestrel::detail::SizeCounts counts;
    kestrel::detail::AllocTotals totals;
    kestrel::detail::AllocSettings settings;
    MyRandom random;

    /// Forgets a run, but not the blocks that are still alive: they stay recognisable by their address.
    void endRun();
    bool isRefused(std::size_t size);
    void record(const Block& block);
    /// The block that this run allocated at ptr, or null.
    Block* findTracked(const void* ptr);
};

/// Never destroyed, for blocks are freed until the very end of the process.
State& state() {
    alignas(State) static char memory[sizeof(State)];
    static State* const only = [] {
        State* fresh = ::new (static_cast<void*>(memory)) State;
        // A child must not inherit a mutex that another thread holds at the moment of the fork.
        pthread_atfork([] { state().mutex.lock(); }, [] { state().mutex.unlock(); },
                       [] { state().mutex.unlock(); });
        return fresh;
    }();
    return *only;
}

void State::endRun() {
    blocks.forEach([](Block& block) { block.hasOutlived = true; });
    if (blocks.getCount() == 0) blocks.clear();
    counts = {};
    totals = {};
    settings = {};
    isTracking.store(false, std::memory_order_relaxed);
    isFilling.store(false, std::memory_order_relaxed);
    allocIsActive.store(blocks.getCount() > 0, std::memory_order_relaxed);
}

bool State::isRefused(std::size_t size) {
    if (settings.blocksLimit != 0 && settings.blocksLimit <= totals.liveBlocks + 1) return true;
    if (settings.bytesLimit != 0 && settings.bytesLimit <= totals.liveBytes + size) return true;
    return settings.failureFraction > 0 && random.draw() >= settings.failureFraction;
}

void State::record(const Block& block) {
    blocks.insert(block);
    ++counts[block.size];
    totals.liveBytes += block.size;
    totals.mostLiveBytes = std::max(totals.mostLiveBytes, totals.liveBytes);
}

Block* State::findTracked(const void* ptr) {
    Block* block = blocks.find(ptr);
    return block && !block->hasOutlived ? block : nullptr;
}

Block makeBlock(char* user, const char* file, int line, std::size_t size, bool isResized) {
    Block block{};
    block.user = user;
    block.file = file;
    block.size = size & (~std::uint64_t{0} >> 2);  // malloc gives nothing that large
    block.isResized = isResized;
    block.line = line;
    return block;
}

char* startOf(const Block& block) { return block.user - frontFenceSize; }

/// The room between the fences.
std::size_t dataSizeOf(const Block& block) {
    return block.isResized ? std::size_t{block.size} : kestrel::detail::roundedSize(block.size);
}

unsigned long addressOf(const Block& block) { return reinterpret_cast<std::uintptr_t>(block.user); }

/// Prints a message for each damaged fence. True when both are intact.
bool checkFences(const Block& block) {
    const bool isFrontIntact = kestrel::detail::isFrontFenceIntact(startOf(block));
    if (!isFrontIntact && block.file)
        KSPrint("KSAlloc pre fence overwritten for 0x%lx allocated in '%s' at line %d\n", addressOf(block),
                block.file, absoluteLine(block));
    else if (!isFrontIntact)
        KSPrint("KSAlloc pre fence overwritten for 0x%lx\n", addressOf(block));

    const bool isBackIntact = kestrel::detail::isBackFenceIntact(startOf(block), dataSizeOf(block));
    if (!isBackIntact && block.file)
        KSPrint("KSAlloc post fence overwritten for 0x%lx allocated in '%s' at line %d\n", addressOf(block),
                block.file, absoluteLine(block));
    else if (!isBackIntact)
        KSPrint("KSAlloc post fence overwritten for 0x%lx\n", addressOf(block));
    return isFrontIntact && isBackIntact;
}

/// A copy of a block that outlived its run, as a block of plain malloc.
void* copyToPlainBlock(const Block& block, std::size_t size) {
    void* copy = std::malloc(size);
    if (copy) std::memcpy(copy, block.user, std::min<std::size_t>(block.size, size));
    return copy;
}

}  // namespace

void kestrel::detail::stopForMemory(unsigned long size) {
    KSPrint("Memory allocation failed allocing '%lu' bytes\n", size);
    KS_UNREACHABLE("KSAlloc", 526, "Memory allocation failed");
}

void ksAllocStart() {
    State& books = state();
    const std::lock_guard guard(books.mutex);
    books.endRun();
    books.settings = kestrel::detail::AllocSettings::fromEnvironment();
    books.random = MyRandom();
    books.isFilling.store(books.settings.isFill, std::memory_order_relaxed);
    books.isTracking.store(true, std::memory_order_relaxed);
    allocIsActive.store(true, std::memory_order_relaxed);
}

void ksAllocEnd(int level) {
    State& books = state();
    const std::lock_guard guard(books.mutex);
    if (!books.isTracking.load(std::memory_order_relaxed)) return;
    level = kestrel::detail::reportLevel(level);
    if (level >= 0) printReport(level, books.blocks, books.counts, books.totals);
    books.endRun();
}

void* _ksAlloc(const char* file, int line, unsigned long size, bool isArray) {
    if (!allocIsActive.load(std::memory_order_relaxed)) return std::malloc(size);
    State& books = state();
    if (!books.isTracking.load(std::memory_order_relaxed)) return std::malloc(size);

    const std::size_t dataSize = kestrel::detail::roundedSize(size);
    void* memory = size > kestrel::detail::largestFencedSize ? nullptr : std::malloc(dataSize + fencesSize);
    if (!memory) kestrel::detail::stopForMemory(size);
    char* const start = static_cast<char*>(memory);
    char* const user = start + frontFenceSize;
    if (dataSize <= kestrel::detail::largestFilledSize && books.isFilling.load(std::memory_order_relaxed))
        kestrel::detail::fillAsNew(user, dataSize);
    kestrel::detail::writeFences(start, dataSize);

    const std::lock_guard guard(books.mutex);
    if (!books.isTracking.load(std::memory_order_relaxed)) {  // another thread has just ended the run
        std::free(start);
        return std::malloc(size);
    }
    if (books.isRefused(size)) {
        std::free(start);
        return nullptr;
    }
    if (size == books.settings.sizePrint && size != 0 && file)
        KSPrint("Pointer of size %lu allocated in '%s' at line '%d'\n", size, file, line);
    // Negated without overflow for the smallest number.
    const int storedLine = isArray ? static_cast<int>(0u - static_cast<unsigned>(line)) : line;
    books.record(makeBlock(user, file, storedLine, size, false));
    ++books.totals.liveBlocks;
    books.totals.mostLiveBlocks = std::max(books.totals.mostLiveBlocks, books.totals.liveBlocks);
    return user;
}

void* kestrel::detail::allocateZeroed(const char* file, int line, unsigned long count, unsigned long size) {
    unsigned long total;
    if (__builtin_mul_overflow(count, size, &total)) total = ~0ul;  // more than there is
    if (!allocIsActive.load(std::memory_order_relaxed)) return std::calloc(total, 1);
    void* memory = _ksAlloc(file, line, total, false);
    if (memory) std::memset(memory, 0, total);
    return memory;
}

void* _ksCalloc(const char* file, int line, int count, int size) {
    // Exact in 64 bits; a negative product is a size that nothing has.
    const auto total = static_cast<unsigned long>(static_cast<long>(count) * size);
    return kestrel::detail::allocateZeroed(file, line, total, 1);
}

void* _ksRealloc(void* ptr, unsigned long size, const char* file, int line) {
    if (!ptr) return nullptr;
    if (!allocIsActive.load(std::memory_order_relaxed)) return std::realloc(ptr, size);
    State& books = state();
    const std::lock_guard guard(books.mutex);
    const Block* const found = books.blocks.find(ptr);
    if (!found) return std::realloc(ptr, size);

    const Block old = *found;
    if (old.hasOutlived) {
        void* copy = copyToPlainBlock(old, size);
        if (copy) {
            books.blocks.erase(ptr);
            std::free(startOf(old));
        }
        return copy;
    }
    checkFences(old);
    void* memory = size > kestrel::detail::largestFencedSize
                       ? nullptr
                       : std::realloc(static_cast<void*>(startOf(old)), size + fencesSize);
    if (!memory) kestrel::detail::stopForMemory(size);
    char* const start = static_cast<char*>(memory);
    kestrel::detail::writeFences(start, size);  // the size is not rounded up here
    books.blocks.erase(ptr);
    books.totals.liveBytes -= old.size;
    books.record(makeBlock(start + frontFenceSize, file, line, size, true));
    return start + frontFenceSize;
}

void _ksFree(void* ptr, bool isArray) {
    if (!ptr) return;
    if (!allocIsActive.load(std::memory_order_relaxed)) return std::free(ptr);
    State& books = state();
    std::unique_lock guard(books.mutex);
    const bool isTracking = books.isTracking.load(std::memory_order_relaxed);
    const Block* const found = books.blocks.find(ptr);
    if (!found) {
        guard.unlock();
        if (!isTracking) std::free(ptr);  // under tracking, a foreign pointer is ignored
        return;
    }
    const Block block = *found;
    if (!block.hasOutlived) {
        checkFences(block);
        ++books.totals.freedBlocks;
        --books.totals.liveBlocks;
        books.totals.liveBytes -= block.size;
        if (!isArray && block.line < 0 && block.file)
            KSPrint(
                "KSInternalFree: ksDelete called instead of ksArrDelete on ptr 0x%lx allocated in '%s' at "
                "line %d\n",
                addressOf(block), block.file, absoluteLine(block));
        if (block.size <= kestrel::detail::largestFilledSize && books.settings.isFill)
            kestrel::detail::fillAsDead(block.user, dataSizeOf(block));
    }
    books.blocks.erase(ptr);
    if (!isTracking && books.blocks.getCount() == 0) allocIsActive.store(false, std::memory_order_relaxed);
    guard.unlock();
    std::free(startOf(block));
}

bool ksAllocCheckFence(void* ptr) {
    if (!allocIsActive.load(std::memory_order_relaxed) || !ptr) return true;
    State& books = state();
    const std::lock_guard guard(books.mutex);
    const Block* const block = books.findTracked(ptr);
    return !block || checkFences(*block);
}

void ksAllocCheckAllFences() {
    if (!allocIsActive.load(std::memory_order_relaxed)) return;
    State& books = state();
    const std::lock_guard guard(books.mutex);
    for (const Block* block : books.blocks.sorted())
        if (!block->hasOutlived) checkFences(*block);
}

bool ksAllocValidPtrCheck(void* ptr) {
    if (!allocIsActive.load(std::memory_order_relaxed) || !ptr) return true;
    State& books = state();
    const std::lock_guard guard(books.mutex);
    return !books.settings.isValidPtrCheck || books.findTracked(ptr);
}

void* objc_malloc(unsigned long size) { return _ksAlloc(nullptr, -1, size, false); }
