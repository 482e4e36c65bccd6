// kestrel/platform/detail/MemoryStatistics.h - what the kernel says of the machine's and the process's
// memory.
#pragma once

#include <cstdint>
#include <string>

namespace kestrel::detail {

/// All sizes in bytes.
struct MemoryStatistics {
    std::uint64_t total = 0;         ///< memory that the kernel manages
    std::uint64_t free = 0;          ///< pages that nothing uses, not even as a cache
    std::uint64_t resident = 0;      ///< of this process, in memory now
    std::uint64_t regions = 0;       ///< sum of the sizes of this process's mappings
    std::uint64_t sharedWindow = 0;  ///< the part of them in the addresses 0x70000000 to 0x8FFFFFFF
    std::uint64_t largestGap = 0;    ///< between two consecutive mappings
};

/// Reads `<tables>/meminfo`, `<tables>/self/statm` and `<tables>/self/maps`, whose formats proc(5) describes.
/// False, with everything 0, when one of them cannot be read or makes no sense.
bool readMemoryStatistics(MemoryStatistics& out, const std::string& tables = "/proc");

}  // namespace kestrel::detail
