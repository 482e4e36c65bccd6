#include <kestrel/platform/detail/MemoryStatistics.h>

#include <unistd.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <memory>

namespace kestrel::detail {

namespace {

constexpr std::uint64_t windowStart = 0x70000000;
constexpr std::uint64_t windowEnd = 0x90000000;
constexpr std::uint64_t kernelStart = std::uint64_t{1} << 63;  // the kernel's half of the addresses

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

File openTable(const std::string& tables, const char* name) {
    return File(std::fopen((tables + name).c_str(), "re"));
}

bool readMachine(const std::string& tables, MemoryStatistics& out) {
    const File file = openTable(tables, "/meminfo");
    if (!file) return false;
    bool haveTotal = false;
    bool haveFree = false;
    char line[256];
    std::uint64_t kibibytes;
    while (std::fgets(line, sizeof line, file.get())) {
        if (std::sscanf(line, "MemTotal: %" SCNu64, &kibibytes) == 1) {
            out.total = kibibytes * 1024;
            haveTotal = true;
        } else if (std::sscanf(line, "MemFree: %" SCNu64, &kibibytes) == 1) {
            out.free = kibibytes * 1024;
            haveFree = true;
        }
    }
    return haveTotal && haveFree;
}

bool readResidentSize(const std::string& tables, MemoryStatistics& out) {
    const File file = openTable(tables, "/self/statm");
    std::uint64_t pages;
    if (!file || std::fscanf(file.get(), "%*u %" SCNu64, &pages) != 1) return false;
    out.resident = pages * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
    return true;
}

bool readRegions(const std::string& tables, MemoryStatistics& out) {
    const File file = openTable(tables, "/self/maps");
    if (!file) return false;
    std::uint64_t previousEnd = 0;
    bool any = false;
    std::uint64_t start;
    std::uint64_t end;
    while (std::fscanf(file.get(), "%" SCNx64 "-%" SCNx64 "%*[^\n]", &start, &end) == 2) {
        if (end < start) return false;
        if (start >= kernelStart) break;  // a page that the kernel shows to every process
        out.regions += end - start;
        const std::uint64_t inWindowStart = std::clamp(start, windowStart, windowEnd);
        out.sharedWindow += std::clamp(end, windowStart, windowEnd) - inWindowStart;
        if (any && start > previousEnd) out.largestGap = std::max(out.largestGap, start - previousEnd);
        previousEnd = end;
        any = true;
    }
    return any;
}

}  // namespace

bool readMemoryStatistics(MemoryStatistics& out, const std::string& tables) {
    MemoryStatistics read;
    const bool complete =
        readMachine(tables, read) && readResidentSize(tables, read) && readRegions(tables, read);
    out = complete ? read : MemoryStatistics{};
    return complete;
}

}  // namespace kestrel::detail
