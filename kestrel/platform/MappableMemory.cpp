#include <kestrel/platform/detail/MappableMemory.h>

#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <iterator>
#include <memory>
#include <mutex>
#include <new>
#include <unordered_map>
#include <vector>

// Names that older system headers lack.
#ifndef PR_SET_VMA
#define PR_SET_VMA 0x53564d41
#define PR_SET_VMA_ANON_NAME 0
#endif

namespace kestrel::detail {
namespace {

using Clock = std::chrono::steady_clock;

constexpr char label[] = "kestrel bitmap";
constexpr std::size_t smallestKept = 64 * 1024;
constexpr std::size_t smallestLabelled = 200 * 1024;
constexpr std::size_t mostLabelled = 8192;  // each label is a mapping, and the system limits their number
constexpr std::size_t smallestHuge = 2 * 1024 * 1024;
constexpr double idleSeconds = 5;

std::atomic<RegionClock> regionClock{&Clock::now};

/// The sparse file that unmapped regions live in. Offsets are never used twice.
struct BackingFile {
    BackingFile(int fd, std::uint64_t bytes) : descriptor(fd), size(bytes) {}
    BackingFile(const BackingFile&) = delete;
    BackingFile& operator=(const BackingFile&) = delete;
    ~BackingFile() { ::close(descriptor); }

    const int descriptor;
    const std::uint64_t size;
    std::uint64_t end = 0;
    bool shared = false;  // with another process, since a fork
};

/// A region with an entry; anonymous until it is unmapped for the first time.
struct Region {
    std::shared_ptr<BackingFile> file;
    std::uint64_t offset = 0;
    std::size_t size = 0;
};

struct Kept {
    void* address;
    std::size_t size;
    Clock::time_point since;
};

/// What the threads share.
struct Memory {
    std::mutex mutex;
    std::unordered_map<MemoryEntry, Region> regions;
    MemoryEntry lastEntry = 0;
    std::shared_ptr<BackingFile> file;  // where the next unmapped region goes
    std::vector<Kept> kept;             // oldest first
    std::size_t keptBytes = 0;
    std::size_t keptLimit = std::size_t{256} * 1024 * 1024;
};

/// Never destroyed: static bitmaps may outlive every other object.
Memory& memory() {
    static Memory* const instance = [] {
        static Memory* created = new Memory;
        const auto afterFork = [] {
            if (created->file) created->file->shared = true;
            created->file = nullptr;
            created->mutex.unlock();
        };
        ::pthread_atfork([] { created->mutex.lock(); }, afterFork, afterFork);
        return created;
    }();
    return *instance;
}

/// The file that takes regions; opened when first needed. Null with errno set. Call with the lock held.
std::shared_ptr<BackingFile> backingFile(Memory& m) {
    if (m.file) return m.file;
    rlimit limit{};  // growing a file beyond this limit would end the process
    std::uint64_t size = std::uint64_t{1} << 60;
    if (::getrlimit(RLIMIT_FSIZE, &limit) == 0) size = std::min<std::uint64_t>(size, limit.rlim_cur);
    const int descriptor = ::memfd_create(label, MFD_CLOEXEC);
    if (descriptor < 0) return nullptr;
    std::shared_ptr<BackingFile> file;
    try {
        file = std::make_shared<BackingFile>(descriptor, size);
    } catch (const std::bad_alloc&) {
        ::close(descriptor);
        errno = ENOMEM;
        return nullptr;
    }
    if (::ftruncate(descriptor, static_cast<off_t>(size)) != 0) return nullptr;
    return m.file = file;
}

/// Writes bytes into the file, which needs no addresses, as a second mapping would. 0 or an errno value.
int writeAt(const BackingFile& file, std::uint64_t offset, const void* bytes, std::size_t size) {
    rlimit limit{};
    if (::getrlimit(RLIMIT_FSIZE, &limit) == 0 && offset + size > limit.rlim_cur) return EFBIG;
    const char* from = static_cast<const char*>(bytes);
    for (std::size_t done = 0; done < size;) {
        const ssize_t written =
            ::pwrite(file.descriptor, from + done, size - done, static_cast<off_t>(offset + done));
        if (written > 0)
            done += static_cast<std::size_t>(written);
        else if (written == 0 || errno != EINTR)
            return written == 0 ? ENOSPC : errno;
    }
    return 0;
}

void punchHole(const BackingFile& file, std::uint64_t offset, std::size_t size) {
    ::fallocate(file.descriptor, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, static_cast<off_t>(offset),
                static_cast<off_t>(size));
}

std::size_t pageBytes() { return static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)); }

bool kernelNamesMemory() {
    static const bool can = [] {
        const std::size_t page = pageBytes();
        void* probe = ::mmap(nullptr, page, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (probe == MAP_FAILED) return false;
        const bool named = ::prctl(PR_SET_VMA, PR_SET_VMA_ANON_NAME, probe, page, label) == 0;
        ::munmap(probe, page);
        return named;
    }();
    return can;
}

/// Bytes of the label page below an anonymous region.
std::size_t labelBytes(std::size_t size) {
    if (size < smallestLabelled || kernelNamesMemory()) return 0;
    return pageBytes();
}

void* mapAnonymous(std::size_t size) {
    const std::size_t before = labelBytes(size);
    if (size + before < size) {
        errno = ENOMEM;
        return nullptr;
    }
    void* start = ::mmap(nullptr, size + before, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (start == MAP_FAILED) return nullptr;
    if (before) {
        const std::scoped_lock lock(memory().mutex);
        if (memory().regions.size() < mostLabelled) {
            // The label is a service to people: a region without one is as good.
            const auto file = backingFile(memory());
            if (!file ||
                ::mmap(start, before, PROT_NONE, MAP_SHARED | MAP_FIXED, file->descriptor, 0) == MAP_FAILED)
                ::mprotect(start, before, PROT_NONE);
        }
    }
    void* address = static_cast<char*>(start) + before;
    if (kernelNamesMemory()) ::prctl(PR_SET_VMA, PR_SET_VMA_ANON_NAME, address, size, label);
    if (size >= smallestHuge) ::madvise(address, size, MADV_HUGEPAGE);
    return address;
}

/// Gives pages and addresses back. At the system's limit of mappings, where cutting one in two is refused,
/// the pages go and the addresses stay taken.
int unmapAnonymous(void* address, std::size_t size) {
    const std::size_t before = labelBytes(size);
    if (::munmap(static_cast<char*>(address) - before, size + before) == 0) return 0;
    const int error = errno;
    return error == ENOMEM && ::madvise(address, size, MADV_DONTNEED) == 0 ? 0 : error;
}

/// Drops the oldest kept regions while the condition holds. Call with the lock held.
template <typename Condition>
void dropWhile(Memory& m, Condition condition) {
    auto end = m.kept.begin();
    for (; end != m.kept.end() && condition(*end); ++end) {
        m.keptBytes -= end->size;
        unmapAnonymous(end->address, end->size);
    }
    m.kept.erase(m.kept.begin(), end);
}

void dropOlderThan(Memory& m, double seconds) {
    const auto limit = regionClock.load()() -
                       std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    dropWhile(m, [limit](const Kept& region) { return region.since <= limit; });
}

void* takeKept(std::size_t size) {
    Memory& m = memory();
    const std::scoped_lock lock(m.mutex);
    dropOlderThan(m, idleSeconds);
    for (auto region = m.kept.rbegin(); region != m.kept.rend(); ++region) {  // the warmest first
        if (region->size != size) continue;
        void* address = region->address;
        m.keptBytes -= size;
        m.kept.erase(std::next(region).base());
        return address;
    }
    return nullptr;
}

bool keep(void* address, std::size_t size) {
    if (size < smallestKept) return false;
    Memory& m = memory();
    const std::scoped_lock lock(m.mutex);
    dropOlderThan(m, idleSeconds);
    if (size > m.keptLimit) return false;
    dropWhile(m, [&](const Kept&) { return m.keptBytes > m.keptLimit - size; });
    try {
        m.kept.push_back({address, size, regionClock.load()()});
    } catch (const std::bad_alloc&) {
        return false;
    }
    m.keptBytes += size;
    ::madvise(address, size, MADV_FREE);
    return true;
}

}  // namespace

int allocateRegion(std::size_t size, void** address) {
    *address = takeKept(size);
    if (*address) {
        std::memset(*address, 0, size);
        return 0;
    }
    *address = mapAnonymous(size);
    if (*address) return 0;
    dropKeptRegions(0);
    *address = mapAnonymous(size);
    return *address ? 0 : errno;
}

int makeRegionEntry(void* /*address*/, std::size_t size, MemoryEntry* entry) {
    Memory& m = memory();
    const std::scoped_lock lock(m.mutex);
    try {
        do {
            ++m.lastEntry;
        } while (m.lastEntry == 0 || m.regions.contains(m.lastEntry));
        m.regions[m.lastEntry].size = size;
    } catch (const std::bad_alloc&) {
        return ENOMEM;
    }
    *entry = m.lastEntry;
    return 0;
}

int releaseRegion(void* address, std::size_t size, MemoryEntry entry) {
    bool fromFile = false;
    if (entry) {
        const std::scoped_lock lock(memory().mutex);
        const auto region = memory().regions.find(entry);
        if (region == memory().regions.end()) return EINVAL;
        fromFile = region->second.file != nullptr;
    }
    if (fromFile) return ::munmap(address, size) == 0 ? 0 : errno;
    return keep(address, size) ? 0 : unmapAnonymous(address, size);
}

int releaseRegionEntry(MemoryEntry entry) {
    Memory& m = memory();
    const std::scoped_lock lock(m.mutex);
    const auto found = m.regions.find(entry);
    if (found == m.regions.end()) return EINVAL;
    const Region& region = found->second;
    if (region.file && !region.file->shared) punchHole(*region.file, region.offset, region.size);
    m.regions.erase(found);
    return 0;
}

int unmapRegion(void* address, std::size_t size, MemoryEntry entry) {
    Memory& m = memory();
    const std::scoped_lock lock(m.mutex);
    const auto found = m.regions.find(entry);
    if (found == m.regions.end()) return EINVAL;
    Region& region = found->second;
    if (region.file) return ::munmap(address, size) == 0 ? 0 : errno;

    const auto file = backingFile(m);
    if (!file) return errno;
    const std::size_t page = pageBytes();
    const std::uint64_t room = (std::uint64_t{size} + page - 1) / page * page;  // offsets are whole pages
    if (room > file->size - file->end) return ENOSPC;
    if (const int error = writeAt(*file, file->end, address, size)) {
        punchHole(*file, file->end, size);
        return error;
    }
    region.file = file;
    region.offset = file->end;
    file->end += room;
    return unmapAnonymous(address, size);
}

int mapRegion(MemoryEntry entry, std::size_t size, void** address) {
    Memory& m = memory();
    const std::scoped_lock lock(m.mutex);
    const auto found = m.regions.find(entry);
    if (found == m.regions.end() || !found->second.file) return EINVAL;
    void* mapped = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, found->second.file->descriptor,
                          static_cast<off_t>(found->second.offset));
    if (mapped == MAP_FAILED) return errno;
    *address = mapped;
    return 0;
}

std::size_t liveRegionCount() {
    const std::scoped_lock lock(memory().mutex);
    return memory().regions.size();
}

void setRegionClock(RegionClock now) { regionClock = now ? now : &Clock::now; }

void setKeptRegionLimit(std::size_t bytes) {
    Memory& m = memory();
    const std::scoped_lock lock(m.mutex);
    m.keptLimit = bytes;
    dropWhile(m, [&](const Kept&) { return m.keptBytes > m.keptLimit; });
}

std::size_t keptRegionLimit() {
    const std::scoped_lock lock(memory().mutex);
    return memory().keptLimit;
}

std::size_t keptRegionBytes() {
    const std::scoped_lock lock(memory().mutex);
    return memory().keptBytes;
}

void dropKeptRegions(double seconds) {
    const std::scoped_lock lock(memory().mutex);
    dropOlderThan(memory(), seconds);
}

}  // namespace kestrel::detail
