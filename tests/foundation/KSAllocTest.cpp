// Blocks, guards, limits and injected failures.
#include "AllocHelpers.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace {

std::uint32_t wordAt(const void* place) {
    std::uint32_t word;
    std::memcpy(&word, place, sizeof word);
    return word;
}

std::uint32_t lowBits(const void* place) {
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(place));
}

std::vector<std::uint32_t> wordsAt(const void* place, std::size_t count) {
    std::vector<std::uint32_t> words(count);
    std::memcpy(words.data(), place, 4 * count);
    return words;
}

void expectFences(const char* user, std::size_t dataSize) {
    const char* const start = user - 16;
    const char* const back = user + dataSize;
    EXPECT_EQ(wordsAt(start, 4),
              (std::vector<std::uint32_t>{0xABADCAFE, 0xABADCAFE, 0xABADCAFE, lowBits(start)}));
    EXPECT_EQ(wordsAt(back, 4),
              (std::vector<std::uint32_t>{lowBits(back), 0xBEEF0BAD, 0xBEEF0BAD, 0xBEEF0BAD}));
}

char* allocate(std::size_t size, const char* file = "dir/a.cpp", int line = 7, bool isArray = false) {
    return static_cast<char*>(_ksAlloc(file, line, size, isArray));
}

/// A size that the compiler does not see.
unsigned long hidden(unsigned long size) {
    volatile unsigned long value = size;
    return value;
}

}  // namespace

TEST(KSAlloc, IsPlainMallocWhileTrackingIsOff) {
    char* block = static_cast<char*>(ksAlloc(10));
    std::memset(block, 1, 10);
    block = static_cast<char*>(ksRealloc(block, 20));
    EXPECT_EQ(block[9], 1);
    EXPECT_TRUE(ksAllocCheckFence(block));
    EXPECT_TRUE(ksAllocValidPtrCheck(&block));
    std::free(block);
    ksFree(std::malloc(10));
    ksArrFree(ksArrAlloc(10));
    EXPECT_EQ(ksRealloc(nullptr, 10), nullptr);
    EXPECT_EQ(ksAlloc(hidden(~0ul)), nullptr);
    EXPECT_EQ(ksCalloc(hidden(1ul << 33), hidden(1ul << 32)), nullptr);
    EXPECT_EQ(_ksCalloc("f", 1, -1, 5), nullptr);
    EXPECT_EQ(printedBy([] { ksAllocCheckAllFences(), ksAllocEnd(65535); }), "");
}

TEST(KSAlloc, PutsFencesAroundFilledAndAlignedData) {
    AllocRun run;
    for (std::size_t size : {0, 1, 3, 4, 5, 8, 33, 1000, 99997, 100000}) {
        SCOPED_TRACE(size);
        char* const user = allocate(size);
        const std::size_t dataSize = (size + 3) / 4 * 4;
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(user) % alignof(std::max_align_t), 0u);
        expectFences(user, dataSize);
        std::string filling;
        while (filling.size() < dataSize) filling += "\xFA\xCE\xBE\xEF";
        EXPECT_EQ(std::string(user, dataSize), filling);
        _ksFree(user, false);
    }
    char* user = allocate(100001);  // too large to be filled, new or dead
    std::memset(user, 'u', 100001);
    _ksFree(user, false);
    user = allocate(100001);
    expectFences(user, 100004);
    EXPECT_NE(wordsAt(user, 25001), std::vector<std::uint32_t>(25001, wordAt("\xFA\xCE\xBE\xEF")));
    _ksFree(user, false);
    EXPECT_EQ(run.end(0), totalsText(0, 0, 1, 12));
}

TEST(KSAlloc, CallocClearsWhateverItsFactors) {
    AllocRun run;
    char* blocks[] = {static_cast<char*>(ksCalloc(3, 5)), static_cast<char*>(_ksCalloc("f", 1, 5, 3)),
                      static_cast<char*>(_ksCalloc("f", 1, -5, -3))};
    for (char* block : blocks) {
        EXPECT_EQ(std::string(block, 15), std::string(15, '\0'));
        expectFences(block, 16);
        ksFree(block);
    }
    EXPECT_EQ(run.end(3).find("Size       15: Count        3\n") == std::string::npos, false);
}

TEST(KSAlloc, ReportsADamagedFenceAndGoesOn) {
    // A block of 5 bytes has 8 bytes of data: from -16 to 7 + 16 every byte but the data is guarded.
    for (int offset = -16; offset < 8 + 16; ++offset) {
        SCOPED_TRACE(offset);
        for (const char* file : {"dir/a.cpp", static_cast<const char*>(nullptr)}) {
            AllocRun run;
            char* const user = allocate(5, file, 7, true);
            char* const sound = allocate(5);
            char* const byte = user + offset;
            *byte = static_cast<char>(*byte ^ 0x10);

            const bool isIntact = offset >= 0 && offset < 8;
            std::string message;
            if (!isIntact) {
                message = std::string("KSAlloc ") + (offset < 0 ? "pre" : "post") +
                          " fence overwritten for 0x" + hex(user, 0);
                message += file ? " allocated in 'dir/a.cpp' at line 7\n" : "\n";
            }
            EXPECT_EQ(printedBy([&] { EXPECT_EQ(ksAllocCheckFence(user), isIntact); }), message);
            EXPECT_EQ(printedBy([&] { ksAllocCheckAllFences(); }), message);
            EXPECT_TRUE(ksAllocCheckFence(sound) && ksAllocCheckFence(nullptr) && ksAllocCheckFence(&run));
            EXPECT_EQ(printedBy([&] { _ksFree(user, true); }), message);
            _ksFree(sound, false);
            EXPECT_EQ(run.end(0), totalsText(0, 0, 2, 2));
        }
    }
}

TEST(KSAlloc, ReportsBothFencesPreFirstAndAllBlocksInAddressOrder) {
    AllocRun run;
    std::array<char*, 20> blocks;
    for (char*& block : blocks) {
        block = allocate(4, nullptr);
        block[-1] = static_cast<char>(block[-1] + 1);
        block[4] = static_cast<char>(block[4] + 1);
    }
    std::sort(blocks.begin(), blocks.end());
    std::string expected;
    for (const char* block : blocks)
        for (const char* which : {"pre", "post"})
            expected += std::string("KSAlloc ") + which + " fence overwritten for 0x" + hex(block, 0) + "\n";
    EXPECT_EQ(printedBy(ksAllocCheckAllFences), expected);
    printedBy([&] {
        for (char* block : blocks) _ksFree(block, false);
    });
}

TEST(KSAlloc, ReallocationPutsTheRearFenceRightBehindTheSize) {
    AllocRun run;
    char* user = allocate(6, "old.cpp", 7, true);
    std::memcpy(user, "abcdef", 6);
    std::string content = "abcdef";
    for (const unsigned long size : {5ul, 3ul, 70001ul, 9ul, 0ul, 11ul}) {
        SCOPED_TRACE(size);
        user = static_cast<char*>(_ksRealloc(user, size, "dir/new.cpp", 12));
        expectFences(user, size);
        EXPECT_TRUE(ksAllocCheckFence(user));
        content.resize(std::min<std::size_t>(content.size(), size));
        EXPECT_EQ(std::string(user, content.size()), content);
    }
    // No longer an array: the line is the new one, and a plain free is right.
    user[11] = '!';
    const std::string damaged =
        "KSAlloc post fence overwritten for 0x" + hex(user, 0) + " allocated in 'dir/new.cpp' at line 12\n";
    EXPECT_EQ(printedBy([&] { user = static_cast<char*>(_ksRealloc(user, 11, "dir/new.cpp", 12)); }),
              damaged);
    EXPECT_EQ(printedBy([&] { _ksFree(user, false); }), "");

    void* const foreign = std::malloc(10);
    std::free(ksRealloc(foreign, 3000));
    EXPECT_EQ(ksRealloc(nullptr, 10), nullptr);
    EXPECT_EQ(run.end(0), totalsText(0, 0, 1, 1));
}

TEST(KSAlloc, IgnoresForeignPointers) {
    AllocRun run;
    void* const foreign = std::malloc(10);
    char* const user = allocate(10);
    _ksFree(foreign, false);
    _ksFree(user + 4, true);
    _ksFree(nullptr, false);
    std::memset(foreign, 1, 10);  // still there
    std::free(foreign);
    EXPECT_EQ(run.end(0), totalsText(10, 1, 1, 1));
    _ksFree(user, false);
}

TEST(KSAlloc, ReportsAnArrayThatIsFreedAsAPlainBlock) {
    const std::string known = "' at line 7\n";
    const struct {
        const char* name;
        const char* file;
        int line;
        bool isArray, isFreedAsArray, isReported;
    } rows[] = {
        {"array as plain", "a.cpp", 7, true, false, true},
        {"array as array", "a.cpp", 7, true, true, false},
        {"plain as array", "a.cpp", 7, false, true, false},
        {"plain as plain", "a.cpp", 7, false, false, false},
        {"a negative line is an array's", "a.cpp", -7, false, false, true},
        {"without a file there is nothing to name", nullptr, 7, true, false, false},
        {"line 0 has no sign", "a.cpp", 0, true, false, false},
    };
    AllocRun run;
    for (const auto& row : rows) {
        char* const user = allocate(9, row.file, row.line, row.isArray);
        const std::string message = "KSInternalFree: ksDelete called instead of ksArrDelete on ptr 0x" +
                                    hex(user, 0) + " allocated in 'a.cpp' at line 7\n";
        EXPECT_EQ(printedBy([&] { _ksFree(user, row.isFreedAsArray); }), row.isReported ? message : "")
            << row.name;
    }
    void* const fromRuntime = objc_malloc(9);
    EXPECT_EQ(printedBy([&] { _ksFree(fromRuntime, false); }), "");
    // The smallest line number has no positive counterpart.
    void* const extreme = allocate(1, "a.cpp", -0x7FFFFFFF - 1, true);
    EXPECT_NE(printedBy([&] { _ksFree(extreme, false); }), "");
}

TEST(KSAlloc, LimitsRefuseBeforeTheyAreReached) {
    static constexpr struct {
        const char *name, *variable, *value;
        unsigned succeeding;  // of ten blocks of 10 bytes
    } rows[] = {
        {"one block", "ksAllocatedBlocksLimit", "1", 0},
        {"four blocks", "ksAllocatedBlocksLimit", "4", 3},
        {"no limit on blocks", "ksAllocatedBlocksLimit", "0", 10},
        {"no number", "ksAllocatedBlocksLimit", "many", 10},
        {"decimal only", "ksAllocatedBlocksLimit", "0x2", 10},
        {"thirty bytes", "ksAllocatedBytesLimit", "30", 2},
        {"one more", "ksAllocatedBytesLimit", "31", 3},
        {"a byte", "ksAllocatedBytesLimit", "1", 0},
        {"no limit on bytes", "ksAllocatedBytesLimit", "", 10},
    };
    for (const auto& row : rows) {
        AllocRun run(row.variable, row.value);
        std::vector<void*> live;
        for (int round = 0; round < 2; ++round) {  // what is freed may be allocated again
            for (int i = 0; i < 10; ++i)
                if (void* block = ksAlloc(10)) live.push_back(block);
            EXPECT_EQ(live.size(), row.succeeding) << row.name;
            for (void* block : live) ksFree(block);
            live.clear();
        }
        EXPECT_EQ(run.end(0), totalsText(0, 0, row.succeeding, 2 * row.succeeding)) << row.name;
    }
}

TEST(KSAlloc, InjectsFailuresByTheGeneratorsExactSequence) {
    const char* const before = std::setlocale(LC_NUMERIC, nullptr);
    const std::string locale = before ? before : "C";
    std::setlocale(LC_NUMERIC, "de_DE.UTF-8");  // where it exists, a decimal comma changes nothing
    // The published first numbers for the seed 0, as fractions of the low 23 bits.
    constexpr std::uint32_t published[] = {0x3C6EF35F, 0x47502932, 0xD1CCF6E9, 0xAAF95334,
                                           0x6252E503, 0x9F2EC686, 0x57FE6C2D, 0xA3D95FA8,
                                           0x81FDBEE7, 0x94F0AF1A, 0xCBF633B1};
    for (const char* percentage : {"50", "12.5", "86.7", "1", " +99.75", "100", "0", "-3", "x"}) {
        AllocRun run("ksFailurePercentage", percentage);
        const float fraction = std::strtof(percentage, nullptr) == 86.0f
                                   ? 0.867f  // as read in that locale
                                   : static_cast<float>(std::strtod(percentage, nullptr) / 100);
        for (const std::uint32_t state : published) {
            const float drawn = static_cast<float>(state & 0x7FFFFF) / 0x800000;
            void* const block = ksAlloc(1);
            EXPECT_EQ(block == nullptr, fraction > 0 && drawn >= fraction) << percentage << " " << drawn;
            ksFree(block);
        }
    }
    std::setlocale(LC_NUMERIC, locale.c_str());

    for (const auto& [percentage, least, most] :
         {std::array{100, 10000, 10000}, std::array{50, 4700, 5300}, std::array{10, 850, 1150}}) {
        const std::string text = std::to_string(percentage);
        AllocRun run("ksFailurePercentage", text.c_str());
        int succeeded = 0;
        for (int i = 0; i < 10000; ++i) {
            void* const block = ksAlloc(4);
            succeeded += block != nullptr;
            ksFree(block);
        }
        EXPECT_GE(succeeded, least);
        EXPECT_LE(succeeded, most);
    }
}

TEST(KSAlloc, AnnouncesOneSizeOnRequest) {
    const struct {
        const char* value;
        unsigned long size;
        const char* file;
        const char* expected;
    } rows[] = {
        {"24", 24, "d/x.cpp", "Pointer of size 24 allocated in 'd/x.cpp' at line '-3'\n"},
        {"0x18", 24, "d/x.cpp", "Pointer of size 24 allocated in 'd/x.cpp' at line '-3'\n"},
        {"030", 24, "d/x.cpp", "Pointer of size 24 allocated in 'd/x.cpp' at line '-3'\n"},
        {"24", 23, "d/x.cpp", ""},
        {"24", 24, nullptr, ""},
        {"0", 0, "d/x.cpp", ""},
    };
    for (const auto& row : rows) {
        AllocRun run("ksSizePrint", row.value);
        void* block = nullptr;
        EXPECT_EQ(printedBy([&] { block = _ksAlloc(row.file, -3, row.size, true); }), row.expected)
            << row.value << " " << row.size;
        _ksFree(block, true);
    }
}

TEST(KSAlloc, ValidPointersAreLiveTrackedBlocks) {
    for (const bool isSwitchedOn : {false, true}) {
        AllocRun run("ksValidPtrCheck", isSwitchedOn ? "" : nullptr);
        char* const user = allocate(8);
        EXPECT_TRUE(ksAllocValidPtrCheck(user));
        EXPECT_TRUE(ksAllocValidPtrCheck(nullptr));
        EXPECT_EQ(ksAllocValidPtrCheck(user + 1), !isSwitchedOn);
        EXPECT_EQ(ksAllocValidPtrCheck(&run), !isSwitchedOn);
        _ksFree(user, false);
        EXPECT_EQ(ksAllocValidPtrCheck(user), !isSwitchedOn);
    }
}

TEST(KSAlloc, BlocksThatOutliveTheirRunDoNoHarm) {
    for (const bool isTrackedAgain : {false, true}) {
        SCOPED_TRACE(isTrackedAgain);
        std::vector<char*> blocks;
        {
            AllocRun run("ksValidPtrCheck", "");
            for (int i = 0; i < 100; ++i) {
                char* block = allocate(100, "a.cpp", 5, i % 2 == 1);
                if (i % 3 == 0) block = static_cast<char*>(_ksRealloc(block, 101, "b.cpp", 6));
                std::memset(block, i, 100);
                blocks.push_back(block);
            }
        }
        AllocEnvironment environment("ksValidPtrCheck", "");
        if (isTrackedAgain) ksAllocStart();
        EXPECT_EQ(ksAllocValidPtrCheck(blocks[0]), !isTrackedAgain);
        const std::string printed = printedBy([&] {
            for (std::size_t i = 0; i < blocks.size(); ++i) {
                EXPECT_TRUE(ksAllocCheckFence(blocks[i]));
                if (i % 4 >= 2) {
                    blocks[i] = static_cast<char*>(ksRealloc(blocks[i], i % 4 == 2 ? 50 : 5000));
                    EXPECT_EQ(std::string(blocks[i], 50), std::string(50, static_cast<char>(i)));
                    std::free(blocks[i]);  // now a plain block
                } else {
                    ksFree(blocks[i]);
                }
            }
            ksAllocEnd(0);
        });
        EXPECT_EQ(printed, isTrackedAgain ? totalsText(0, 0, 0, 0) : "");
    }
    void* const plain = ksAlloc(10);  // malloc again
    std::free(plain);
}

TEST(KSAlloc, StartingAgainBeginsAFreshRun) {
    AllocRun run;
    char* const first = allocate(10);
    ksAllocStart();
    char* const second = allocate(20);
    EXPECT_EQ(run.end(3), std::string(separator) + "Memory that was NOT freed (File known):\n0x" +
                              hex(second) + ": Size:       20   Line:    7   File: a.cpp\n   \"" +
                              std::string(20, '*') + "\"\n" + separator +
                              "Memory Histogram:\nSize       20: Count        1\n" + totalsText(20, 1, 1, 1));
    _ksFree(first, false);
    _ksFree(second, false);
}

TEST(KSAllocDeathTest, StopsWhenMemoryReallyRunsOut) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto stop = [](auto action) {
        dup2(2, 1);
        ksAllocStart();
        action();
    };
    const std::string place = "File KSAlloc, line 526 should not have been reached:\n\t$";
    for (const unsigned long size : {~0ul, ~0ul - 31, ~0ul - 34, ~0ul - 35, 1ul << 62}) {
        EXPECT_DEATH(stop([&] { ksAlloc(hidden(size)); }),
                     "Memory allocation failed allocing '" + std::to_string(size) + "' bytes\n" + place);
        EXPECT_DEATH(stop([&] { ksRealloc(ksAlloc(5), hidden(size)); }),
                     "allocing '" + std::to_string(size) + "' bytes\n" + place);
    }
    EXPECT_DEATH(stop([] { ksCalloc(hidden(1ul << 33), hidden(1ul << 31)); }), place);
    EXPECT_DEATH(stop([] { _ksCalloc("f", 1, -1, 1); }), "allocing '18446744073709551615' bytes\n" + place);
}
