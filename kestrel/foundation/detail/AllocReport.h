// kestrel/foundation/detail/AllocReport.h - everything that the checking allocator prints at its end.
#pragma once

#include <kestrel/foundation/detail/BlockTable.h>
#include <kestrel/foundation/detail/MallocAllocator.h>

#include <cstddef>
#include <functional>
#include <unordered_map>
#include <utility>

namespace kestrel::detail {

/// How many allocations of each size there have been.
using SizeCounts =
    std::unordered_map<std::size_t, std::size_t, std::hash<std::size_t>, std::equal_to<std::size_t>,
                       MallocAllocator<std::pair<const std::size_t, std::size_t>>>;

struct AllocTotals {
    std::size_t liveBlocks = 0;
    std::size_t freedBlocks = 0;
    std::size_t mostLiveBlocks = 0;
    std::size_t liveBytes = 0;
    std::size_t mostLiveBytes = 0;
};

/// The line where a block was allocated, without the mark of an array.
int absoluteLine(const Block& block);

/// Prints the report of a level of 0 or more. Blocks of earlier runs are left out.
void printReport(int level, const BlockTable& blocks, const SizeCounts& counts, const AllocTotals& totals);

}  // namespace kestrel::detail
