#include <kestrel/foundation/detail/AllocReport.h>

#include <kestrel/foundation/KSPrint.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <vector>

namespace kestrel::detail {

namespace {

constexpr const char* separator = "\n=====================================================================\n";

// The report's numbers have 32 bits: what is larger prints as the largest.
int asInt(std::size_t value) { return static_cast<int>(std::min<std::size_t>(value, INT_MAX)); }

unsigned asUnsigned(std::size_t value) {
    return static_cast<unsigned>(std::min<std::size_t>(value, UINT_MAX));
}

const char* lastComponent(const char* file) {
    const char* slash = std::strrchr(file, '/');
    return slash ? slash + 1 : file;
}

void printDump(const Block& block) {
    char text[65];
    const std::size_t length = std::min<std::size_t>(block.size, sizeof text);
    for (std::size_t i = 0; i < length; ++i) {
        const char c = block.user[i];
        text[i] = c >= ' ' && c <= '~' ? c : '*';
    }
    KSPrint("   \"%.*s\"\n", static_cast<int>(length), text);
}

void printKnown(const Block& block) {
    KSPrint("0x%*.*lx: Size: %8d   Line: %4d   File: %s\n", 8, 8,
            static_cast<unsigned long>(reinterpret_cast<std::uintptr_t>(block.user)), asInt(block.size),
            absoluteLine(block), lastComponent(block.file));
}

void printUnknown(const Block& block) {
    KSPrint("0x%*.*x: Size: %8d\n", 8, 8, static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(block.user)),
            asInt(block.size));
}

void printHistogram(const SizeCounts& counts) {
    using Row = std::pair<std::size_t, std::size_t>;
    std::vector<Row, MallocAllocator<Row>> rows(counts.begin(), counts.end());
    std::sort(rows.begin(), rows.end());
    KSPrint("%s", separator);
    KSPrint("Memory Histogram:\n");
    for (const auto& [size, count] : rows) KSPrint("Size %8d: Count %8d\n", asInt(size), asInt(count));
}

}  // namespace

int absoluteLine(const Block& block) {
    // Without overflow for the smallest number.
    const auto line = static_cast<std::uint32_t>(block.line);
    return static_cast<int>(block.line < 0 ? 0u - line : line);
}

void printReport(int level, const BlockTable& blocks, const SizeCounts& counts, const AllocTotals& totals) {
    if (level >= 1 && totals.liveBlocks > 0) {
        const BlockTable::List list = blocks.sorted();
        const auto print = [&](bool isFileKnown, auto printLine) {
            for (const Block* block : list) {
                if (block->hasOutlived || (block->file != nullptr) != isFileKnown) continue;
                printLine(*block);
                if (level > 2) printDump(*block);
            }
        };
        KSPrint("%s", separator);
        KSPrint("Memory that was NOT freed (File known):\n");
        print(true, printKnown);

        const bool hasUnknown = std::any_of(
            list.begin(), list.end(), [](const Block* block) { return !block->hasOutlived && !block->file; });
        if (level >= 2 && hasUnknown) {
            KSPrint("%s", separator);
            KSPrint("Memory that was NOT freed (File unknown):\n");
            print(false, printUnknown);
        }
    }
    if (level >= 3 && !counts.empty()) printHistogram(counts);

    KSPrint("%s", separator);
    KSPrint("\n%u bytes NOT freed (%u blocks)\n", asUnsigned(totals.liveBytes),
            asUnsigned(totals.liveBlocks));
    KSPrint("Maximum blocks allocated at once: %u\n", asUnsigned(totals.mostLiveBlocks));
    KSPrint("Total blocks used: %u\n", asUnsigned(totals.liveBlocks + totals.freedBlocks));
    KSPrint("%s", separator + 1);
}

}  // namespace kestrel::detail
