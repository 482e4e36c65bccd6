// kestrel/platform/detail/MappableMemory.h - page-wise memory with a name, that can be unmapped and mapped.
//
// A region starts as fresh, zeroed, anonymous memory in huge pages where the system grants them: touching
// a new frame costs a fifth of what a file in memory costs. Its entry, a number, keeps it alive. Unmapping
// moves the pixels into the process's one sparse file in memory and frees the address range; mapping maps
// that part of the file. So any number of unmapped regions need one descriptor.
//
// Reuse      the memory of released regions of 64 KiB and more is kept mapped, within a limit, and given to
//            the next region of the same size, zeroed. Kept pages are marked as free for the system to
//            take under pressure; what nobody asked for within five seconds goes back at the next call,
//            and so does everything when the system refuses memory.
// Forks      anonymous regions are copies in the child. Parent and child share what had been unmapped
//            before the fork: neither writes new regions into that file or cuts holes into it afterwards;
//            its pages go when both have released them.
// Labels     the maps of the process call anonymous regions "kestrel bitmap" where the kernel can name
//            them; where it cannot, regions of 200 KiB and more (while there are fewer than 8192) follow an
//            inaccessible page that bears the name, which stops stray writes too.
// Threads    every function may be called on any thread.
// Errors     results are errno values, 0 for success.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace kestrel::detail {

/// Names a region for as long as it lives; 0 names none.
using MemoryEntry = std::uint32_t;

/// A zeroed region of size bytes, a whole number of pages. The address is the caller's to release.
int allocateRegion(std::size_t size, void** address);
/// Makes the entry that keeps the region alive while it is unmapped.
int makeRegionEntry(void* address, std::size_t size, MemoryEntry* entry);
/// Releases a mapping that is no longer used, for reuse or to the system. Entry is 0 when none was made.
int releaseRegion(void* address, std::size_t size, MemoryEntry entry);
/// Releases the entry, with the pixels if they are unmapped.
int releaseRegionEntry(MemoryEntry entry);

/// Takes the region out of the address space; its bytes stay in the entry. On failure it stays mapped.
int unmapRegion(void* address, std::size_t size, MemoryEntry entry);
/// Maps an unmapped region, anywhere.
int mapRegion(MemoryEntry entry, std::size_t size, void** address);

/// Regions with an entry, mapped or not.
std::size_t liveRegionCount();

/// How many bytes of released regions may be kept; 256 MiB unless set. A lower limit applies at once.
void setKeptRegionLimit(std::size_t bytes);
std::size_t keptRegionLimit();
std::size_t keptRegionBytes();
/// Returns to the system what was released at least this many seconds ago, everything for 0.
void dropKeptRegions(double seconds);

/// What the ages of kept regions are measured by, for tests that cannot wait; null for the steady clock.
using RegionClock = std::chrono::steady_clock::time_point (*)();
void setRegionClock(RegionClock now);

}  // namespace kestrel::detail
