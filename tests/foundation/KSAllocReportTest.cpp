// What ksAllocEnd prints.
#include "AllocHelpers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace {

/// Two blocks with a file and one without are alive, one more has been freed.
struct Leaks {
    Leaks() {
        known[0] = fill(_ksAlloc("/long/path/one.cpp", 12, 70, false), 70);
        known[1] = fill(_ksAlloc("two.cpp", 34567, 3, true), 3);
        unknown = fill(_ksAlloc(nullptr, 9, 70, false), 70);
        _ksFree(_ksAlloc("/three.cpp", 1, 3, false), false);
    }
    Leaks(const Leaks&) = delete;
    Leaks& operator=(const Leaks&) = delete;
    ~Leaks() {
        for (void* block : {known[0], known[1], unknown}) _ksFree(block, true);
    }

    static char* fill(void* block, std::size_t size) {
        for (std::size_t i = 0; i < size; ++i) static_cast<char*>(block)[i] = static_cast<char>(i * 4 + 30);
        return static_cast<char*>(block);
    }
    /// The first 65 of those bytes; what is not printable in ASCII is a star.
    static std::string dump(std::size_t size) {
        std::string text = "   \"";
        for (std::size_t i = 0; i < std::min<std::size_t>(size, 65); ++i) {
            const std::size_t byte = (i * 4 + 30) % 256;
            text += byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '*';
        }
        return text + "\"\n";
    }

    std::string knownText(bool withDump) const {
        std::vector<std::string> lines = {
            "0x" + hex(known[0]) + ": Size:       70   Line:   12   File: one.cpp\n",
            "0x" + hex(known[1]) + ": Size:        3   Line: 34567   File: two.cpp\n"};
        if (withDump) {
            lines[0] += dump(70);
            lines[1] += dump(3);
        }
        if (known[0] > known[1]) std::swap(lines[0], lines[1]);
        return std::string(separator) + "Memory that was NOT freed (File known):\n" + lines[0] + lines[1];
    }
    std::string unknownText(bool withDump) const {
        const std::string address = hex(unknown);  // this line shows the low 32 bits
        return std::string(separator) + "Memory that was NOT freed (File unknown):\n0x" +
               address.substr(address.size() - 8) + ": Size:       70\n" + (withDump ? dump(70) : "");
    }
    std::string histogramText() const {
        return std::string(separator) +
               "Memory Histogram:\nSize        3: Count        2\nSize       70: Count        2\n";
    }
    std::string text(int level) const {
        std::string result;
        if (level < 0) return result;
        if (level >= 1) result += knownText(level >= 3);
        if (level >= 2) result += unknownText(level >= 3);
        if (level >= 3) result += histogramText();
        return result + totalsText(143, 3, 4, 4);
    }

    char* known[2];
    char* unknown;
};

}  // namespace

TEST(KSAllocReport, SaysMoreAtEachLevel) {
    const struct {
        int argument;
        const char* variable;  // overrides the argument
        int level;
    } rows[] = {
        {-1, nullptr, -1}, {0, nullptr, 0},     {1, nullptr, 1}, {2, nullptr, 2},
        {3, nullptr, 3},   {65535, nullptr, 3}, {0, "", 3},      {-1, "2", 2},
        {3, "0", 0},       {3, "-1", -1},       {3, "all", 0},   {-1, "99999999999999999999", 3},
    };
    for (const auto& row : rows) {
        AllocRun run("ksAlloc", row.variable);
        const Leaks leaks;
        EXPECT_EQ(run.end(row.argument), leaks.text(row.level))
            << row.argument << " " << (row.variable ? row.variable : "unset");
    }
}

TEST(KSAllocReport, IsShortWithoutLeaks) {
    AllocRun empty;
    EXPECT_EQ(empty.end(65535), totalsText(0, 0, 0, 0));
    AllocRun clean;
    ksFree(_ksAlloc("a", 1, 5, false));
    EXPECT_EQ(clean.end(65535), std::string(separator) +
                                    "Memory Histogram:\nSize        5: Count        1\n" +
                                    totalsText(0, 0, 1, 1));
}

TEST(KSAllocReport, HeadsTheKnownFilesEvenWhenAllAreUnknown) {
    AllocRun run;
    void* const block = objc_malloc(4);
    const std::string report = run.end(1);
    EXPECT_EQ(report,
              std::string(separator) + "Memory that was NOT freed (File known):\n" + totalsText(4, 1, 1, 1));
    ksFree(block);
}

TEST(KSAllocReport, FollowsReallocationsAndTheMaximum) {
    AllocRun run;
    void* a = _ksAlloc("a.cpp", 1, 10, true);
    void* b = _ksAlloc("a.cpp", 2, 10, false);
    _ksFree(b, false);
    a = _ksRealloc(a, 33, "b.cpp", 44);
    const std::string report = run.end(3);
    EXPECT_NE(report.find(": Size:       33   Line:   44   File: b.cpp\n"), std::string::npos);
    EXPECT_NE(report.find("Size       10: Count        2\nSize       33: Count        1\n"),
              std::string::npos);
    EXPECT_NE(report.find(totalsText(33, 1, 2, 2)), std::string::npos);
    ksFree(a);
}

TEST(KSAllocReport, ListsAMillionBlocksInAddressOrder) {
    constexpr std::size_t count = 1000000;
    AllocRun run("ksValidPtrCheck", "");
    std::vector<void*> blocks(count);
    for (std::size_t i = 0; i < count; ++i) blocks[i] = _ksAlloc("many.cpp", 1, i % 24, false);
    for (std::size_t i = 0; i < count; i += 2) {  // holes that new blocks fill
        _ksFree(blocks[i], false);
        EXPECT_FALSE(ksAllocValidPtrCheck(blocks[i]));
        blocks[i] = nullptr;
    }
    for (std::size_t i = 1; i < count; i += 2) ASSERT_TRUE(ksAllocValidPtrCheck(blocks[i]));
    for (std::size_t i = 0; i < count; i += 2) blocks[i] = _ksAlloc("many.cpp", 1, 8, false);

    const std::string report = run.end(1);
    std::sort(blocks.begin(), blocks.end());
    std::size_t position = 0;
    for (const void* block : blocks) {
        position = report.find("0x" + hex(block) + ": Size:", position);
        ASSERT_NE(position, std::string::npos);
    }
    for (void* block : blocks) _ksFree(block, false);
}
