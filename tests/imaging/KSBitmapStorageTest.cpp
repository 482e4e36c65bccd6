// Storage: regions, copies, unmapping, refusals. The operations on pixels have tests of their own.
#include <kestrel/imaging/KSBitmap.h>
#include <kestrel/imaging/KSBitmapMemory.h>
#include <kestrel/imaging/KSBitmap_t.h>
#include <kestrel/imaging/KSImageAttributes.h>
#include <kestrel/platform/detail/MappableMemory.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <numeric>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace {

using testing::HasSubstr;

struct SizeRow {
    const char* name;
    unsigned width, height, bits, channels, format, padding, allocated;
};
constexpr auto sizeRows = std::to_array<SizeRow>({
    {"Empty", 0, 0, 8, 4, 0, 0, 4096},
    {"PageAlignedGetsAWholePageMore", 256, 3, 8, 4, 0, 0, 8192},  // 3072 + 1024 = 4096
    {"LargestOfWholePages", 50944, 1, 8, 4, 0, 0, 208896},        // 203776 + 1024 = 204800: not above
    {"SmallestOf32KiB", 50945, 1, 8, 4, 0, 0, 233472},            // 203780: (237571 & ~32767) + 4096
    {"Square256", 256, 256, 8, 4, 0, 0, 299008},
    {"Yuv640", 640, 480, 8, 2, 2, 0, 626688},
    {"TwoChannelsOfAnotherFormat", 640, 480, 16, 2, 6, 0, 1249280},
    {"PaddingThatFits", 10, 2, 8, 4, 0, 4, 4096},
    {"PaddingInPixelsThatDoesNot", 1, 100, 8, 4, 0, 1000, 430080},  // 400400 + 33791, rounded, a page more
    {"PaddingOfOneBytePixels", 1, 100, 8, 1, 0, 1000, 102400},      // 100100 + 1024, whole pages, one more
});

TEST(KSBitmapStorage, RegionsHaveTheSizesOfTheRule) {
    for (const SizeRow& row : sizeRows) {
        const KSBitmap bitmap(row.width, row.height, row.bits, row.channels, row.format, row.padding);
        ASSERT_NE(bitmap.getData(), nullptr) << row.name;
        ASSERT_EQ(bitmap.getAllocatedSize(), row.allocated) << row.name;
        EXPECT_EQ(std::count(bitmap.getData(), bitmap.getData() + row.allocated, 0), row.allocated);
        EXPECT_NE(bitmap.getMemoryPort(), 0u);
        EXPECT_EQ(bitmap.getKind(), 9u);
    }
    EXPECT_EQ(KSImage(10, 2, 8, 4, 4).getSize(), 112u);
    EXPECT_EQ(KSImage(1u << 20, 1u << 20, 8, 4, 0).getSize(), 0u) << "32-bit arithmetic";
}

static_assert(!std::is_assignable_v<KSImage&, const KSImage&>,
              "would change a bitmap's size, not its memory");

TEST(KSBitmapStorage, TheLargestSizeThatFits32BitsIsAsked) {
    testing::internal::CaptureStderr();
    const KSBitmap largest(4194271, 128, 8, 8, 0, 0);  // payload + 33791 is 2^32 - 1
    EXPECT_EQ(largest.getAllocatedSize(), 4294938624u);
    void* probe = ::mmap(nullptr, 4294938624u, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    EXPECT_EQ(largest.getData() != nullptr, probe != MAP_FAILED) << "as far as the system has that much";
    if (probe != MAP_FAILED) ::munmap(probe, 4294938624u);
    EXPECT_EQ(KSBitmap(4194272, 128, 8, 8, 0, 0).getData(), nullptr);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::EndsWith("of size 4096 because 12\n"));
}

struct OverflowRow {
    const char* name;
    unsigned width, height, bits, channels, format, padding;
    const char* message;
};
const auto overflowRows = std::to_array<OverflowRow>({
    {"Bits", 1u << 20, 1u << 20, 8, 4, 0, 0, "could not allocate vm of size 4096 because 12\n"},
    {"Payload", 32768, 32768, 8, 4, 0, 0, "could not allocate vm of size 4096 because 12\n"},
    {"Rounding", 32767, 32769, 8, 4, 0, 0, "because 12\n"},
    {"LargeFloat", 12000, 12000, 32, 4, 9, 0, "because 12\n"},
    {"Yuv", 32768, 32767, 8, 2, 2, 0, "because 12\n"},
    {"Padding", 1, 1u << 20, 8, 4, 0, 1u << 20, "because 12\n"},
    {"Everything", ~0u, ~0u, ~0u, ~0u, ~0u, ~0u, "because 12\n"},
});

TEST(KSBitmapStorage, WhatDoesNotFit32BitsIsARefusedAllocation) {
    for (const OverflowRow& row : overflowRows) {
        testing::internal::CaptureStderr();
        KSBitmap bitmap(row.width, row.height, row.bits, row.channels, row.format, row.padding);
        EXPECT_EQ(bitmap.getData(), nullptr) << row.name;
        EXPECT_EQ(bitmap.getMemoryPort(), 0u) << row.name;
        EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr(row.message)) << row.name;
        bitmap.flip();  // such a bitmap takes every operation
        bitmap.setConstantAlpha(1);
        bitmap.copy(bitmap);
        bitmap.setData(&row);
    }
}

TEST(KSBitmapStorage, TheFactoryKnowsNineFormats) {
    for (unsigned format = 0; format <= 10; ++format) {
        const std::unique_ptr<KSBitmap> bitmap(KSCreateBitmap(3, 2, format));
        ASSERT_EQ(bitmap == nullptr, format == 3 || format > 9) << format;
        if (!bitmap) continue;
        EXPECT_EQ(bitmap->getPixelFormat(), format);
        KSImageAttributes attributes;
        attributes.flagA = true;
        bitmap->getAttributes(attributes);
        EXPECT_EQ(attributes.kind, 9u);
        EXPECT_EQ(attributes.width, 3u);
        EXPECT_EQ(attributes.height, 2u);
        EXPECT_EQ(bitmap->getSize(), 6 * attributes.channels * attributes.bitsPerChannel / 8);
        EXPECT_TRUE(attributes.flagA);
    }
}

/// Bytes 1, 2, 3 ... over the whole region, so that every byte tells where it came from.
void number(KSBitmap& bitmap) {
    std::iota(bitmap.getData(), bitmap.getData() + bitmap.getAllocatedSize(), std::uint8_t{1});
}

TEST(KSBitmapStorage, ClonesTakeSizeAndFormatButNotPaddingAndKind) {
    KSBitmap source(6, 5, 16, 4, 8, 12);
    number(source);
    KSBitmap clone(1, 1, 8, 4, 0, 7);
    clone.clone(source);
    EXPECT_EQ(clone.getPixelFormat(), 8u);
    EXPECT_EQ(clone.getRowPadding(), 7u);
    EXPECT_EQ(clone.getSize(), (6u + 7) * 5 * 8);
    EXPECT_EQ(std::memcmp(clone.getData(), source.getData(), clone.getSize()), 0);
    EXPECT_EQ(clone.getData()[clone.getSize()], 0);

    const KSBitmap copy(source);
    EXPECT_EQ(copy.getRowPadding(), 12u);
    EXPECT_NE(copy.getData(), source.getData());
    EXPECT_EQ(std::memcmp(copy.getData(), source.getData(), copy.getSize()), 0);

    const std::vector<std::uint8_t> before(source.getData(), source.getData() + source.getSize());
    source.clone(source);
    EXPECT_EQ(std::memcmp(source.getData(), before.data(), before.size()), 0) << "the clone of itself stays";
    source.clear();
    EXPECT_EQ(source.getData(), nullptr);
    EXPECT_EQ(source.getSize(), 0u);
    EXPECT_EQ(source.getPixelFormat(), 0u);
    EXPECT_EQ(source.getRowPadding(), 12u);
}

TEST(KSBitmapStorage, CopyTakesItsOwnSizeAsFarAsTheSourceReaches) {
    KSBitmapRGBA8 small(4, 4), large(400, 400);
    number(small);
    number(large);
    const std::vector<std::uint8_t> wide(large.getData(), large.getData() + large.getAllocatedSize());
    small.copy(large);
    EXPECT_EQ(std::memcmp(small.getData(), wide.data(), 64), 0);
    EXPECT_EQ(small.getData()[64], std::uint8_t{65});
    std::memset(small.getData(), 7, small.getAllocatedSize());
    large.copy(small);
    const unsigned reached = small.getAllocatedSize();
    EXPECT_EQ(std::count(large.getData(), large.getData() + reached, 7), reached);
    EXPECT_EQ(std::memcmp(large.getData() + reached, &wide[reached], wide.size() - reached), 0);

    KSBitmapRGB16 other(4, 4);
    const std::vector<std::uint8_t> zeros(other.getAllocatedSize());
    other.copy(large);
    other.copyWithDepthConversion(KSBitmapRGBA16(4, 4));  // equal depth: a copy, which does nothing here
    large.copyWithDepthConversion(other);                 // into 8 bits: nothing
    KSBitmapRGBAFloat real(4, 4);
    real.copyWithDepthConversion(large);  // into 32 bits: nothing
    EXPECT_EQ(real.getData()[0], 0);
    EXPECT_EQ(std::memcmp(other.getData(), zeros.data(), zeros.size()), 0);
    EXPECT_EQ(large.getData()[0], 7);
    const auto refused = [&] {
        ::dup2(2, 1);  // the line goes to standard output
        other.copyWithDepthConversion(large);
    };
    EXPECT_EXIT(refused(), testing::KilledBySignal(SIGABRT),
                "^File KSBitmap, line 547 should not have been reached:\n\t");
}

TEST(KSBitmapStorage, SetDataReadsPaddingAsPixelsOrBytes) {
    std::vector<std::uint8_t> bytes(200);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
    KSBitmapRGBA8 plain(3, 2);
    plain.setData(bytes.data());
    EXPECT_EQ(plain.getData()[23], 24);
    EXPECT_EQ(plain.getData()[24], 0);
    KSBitmapRGBA8 padded(3, 2, 5);
    padded.setData(bytes.data());
    EXPECT_EQ(padded.getData()[33], 34);
    EXPECT_EQ(padded.getData()[34], 0);
    padded.setData(nullptr);
    EXPECT_EQ(padded.getData()[0], 1);
}

TEST(KSBitmapStorage, ChecksHaveSquaresOfEight) {
    std::vector<std::uint8_t> pixels(4 * 20 * 17 + 4, 1);
    KSMakeCheckerImage(pixels.data(), 20, 17);
    for (unsigned y = 0; y < 17; ++y)
        for (unsigned x = 0; x < 20; ++x) {
            const std::uint8_t* pixel = &pixels[4 * (20 * y + x)];
            const int shade = (x / 8 + y / 8) % 2 == 0 ? 192 : 255;
            ASSERT_THAT(std::vector<int>(pixel, pixel + 4), testing::ElementsAre(255, shade, shade, shade));
        }
    EXPECT_EQ(pixels[4 * 20 * 17], 1);
    KSMakeCheckerImage(nullptr, 5, 0);
}

// ---- Mapping

TEST(KSBitmapStorage, UnmappedPixelsComeBack) {
    const std::size_t before = KSBitmapMemory::getRegionCount();
    {
        KSBitmapRGBA8 bitmap(300, 200);
        number(bitmap);
        const std::uint32_t port = bitmap.getMemoryPort();
        for (int round = 0; round < 3; ++round) {
            bitmap.unmapFromMemory();
            ASSERT_EQ(bitmap.getData(), nullptr);
            bitmap.unmapFromMemory();
            bitmap.flip();  // nothing to turn
            bitmap.mapIntoMemory();
            ASSERT_NE(bitmap.getData(), nullptr);
            bitmap.mapIntoMemory();
            ASSERT_EQ(bitmap.getMemoryPort(), port);
            KSBitmapRGBA8 same(300, 200);
            number(same);
            if (round) same.getData()[5] = 99;
            ASSERT_EQ(std::memcmp(bitmap.getData(), same.getData(), bitmap.getAllocatedSize()), 0) << round;
            bitmap.getData()[5] = 99;  // what is written after mapping is kept too
        }
        bitmap.allocateMemory();
        EXPECT_EQ(bitmap.getData()[5], 0);
        bitmap.unmapFromMemory();
        EXPECT_EQ(KSBitmapMemory::getRegionCount(), before + 1);
    }
    EXPECT_EQ(KSBitmapMemory::getRegionCount(), before) << "an unmapped region goes with its bitmap";
    KSBitmap none;
    testing::internal::CaptureStderr();
    none.mapIntoMemory();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Could not map 0 because 22\n");
    EXPECT_EQ(none.getData(), nullptr);
}

long residentPages() {
    std::ifstream statm("/proc/self/statm");
    long size = 0, resident = 0;
    statm >> size >> resident;
    return resident;
}

TEST(KSBitmapStorage, TensOfThousandsLiveUnderTheDefaultLimitsAndGiveTheirPagesBack) {
    constexpr std::size_t count = 40000;
    const std::size_t before = KSBitmapMemory::getRegionCount();
    const long pages = residentPages();
    std::vector<std::unique_ptr<KSBitmap>> bitmaps;
    for (std::size_t i = 0; i < count; ++i) {
        bitmaps.emplace_back(KSCreateBitmap(16, 16, 0));
        ASSERT_NE(bitmaps.back()->getData(), nullptr) << i;
        bitmaps.back()->getData()[1000] = static_cast<std::uint8_t>(i);
        if (i % 4 == 0) bitmaps.back()->unmapFromMemory();
    }
    EXPECT_EQ(KSBitmapMemory::getRegionCount(), before + count);
    for (std::size_t i = 0; i < count; i += 2) bitmaps[i].reset();
    for (std::size_t i = 1; i < count; i += 2)
        ASSERT_EQ(bitmaps[i]->getData()[1000], static_cast<std::uint8_t>(i));
    bitmaps.clear();
    EXPECT_EQ(KSBitmapMemory::getRegionCount(), before);
    EXPECT_LT(residentPages(), pages + static_cast<long>(count) / 4);
}

TEST(KSBitmapStorage, TheMapsNameLargeRegionsOfWhichTensOfThousandsMayLiveToo) {
    std::vector<std::unique_ptr<KSBitmap>> bitmaps;
    for (std::size_t i = 0; i < 40000; ++i) {
        bitmaps.emplace_back(KSCreateBitmap(256, 256, 0));
        ASSERT_NE(bitmaps.back()->getData(), nullptr) << i;
    }
    std::ifstream maps("/proc/self/maps");
    const std::string text((std::istreambuf_iterator<char>(maps)), std::istreambuf_iterator<char>());
    EXPECT_THAT(text, HasSubstr("kestrel bitmap"));
}

// ---- Reuse

TEST(KSBitmapStorage, FreedRegionsAreKeptWithinTheLimitAndComeZeroed) {
    KSBitmapMemory::releaseKept();
    const std::size_t limit = KSBitmapMemory::getKeptLimit();
    {
        KSBitmapRGBA8 bitmap(640, 480);
        number(bitmap);
    }
    EXPECT_EQ(KSBitmapMemory::getKeptBytes(), 1249280u);
    {
        const KSBitmapRGBA8 again(640, 480);
        EXPECT_EQ(KSBitmapMemory::getKeptBytes(), 0u);
        const std::uint8_t* end = again.getData() + again.getAllocatedSize();
        EXPECT_EQ(std::find_if(again.getData(), end, [](auto b) { return b != 0; }), end);
    }
    EXPECT_NE(KSBitmapMemory::getKeptBytes(), 0u);
    KSBitmapMemory::setKeptLimit(3000000);  // two of these, not three
    { const KSBitmapRGBA8 a(640, 480), b(640, 480), c(640, 480); }
    EXPECT_EQ(KSBitmapMemory::getKeptBytes(), 2 * 1249280u);
    KSBitmapMemory::setKeptLimit(2000000);
    EXPECT_EQ(KSBitmapMemory::getKeptBytes(), 1249280u);
    KSBitmapMemory::setKeptLimit(1000);
    EXPECT_EQ(KSBitmapMemory::getKeptBytes(), 0u);
    { const KSBitmapRGBA8 a(640, 480); }
    EXPECT_EQ(KSBitmapMemory::getKeptBytes(), 0u);
    KSBitmapMemory::setKeptLimit(limit);
    { const KSBitmapRGBA8 a(640, 480); }
    KSBitmapMemory::releaseKept();
    EXPECT_EQ(KSBitmapMemory::getKeptBytes(), 0u);
}

std::chrono::steady_clock::time_point pretendedNow;

TEST(KSBitmapStorage, WhatNobodyAskedForWithinFiveSecondsGoesBackAtTheNextCall) {
    using namespace std::chrono_literals;
    KSBitmapMemory::releaseKept();
    kestrel::detail::setRegionClock([] { return pretendedNow; });
    const auto keptAt = [](auto age) {  // after a call for a region of another size, too small to be kept
        pretendedNow += age;
        const KSBitmapRGBA8 other(8, 8);
        return KSBitmapMemory::getKeptBytes();
    };
    { const KSBitmapRGBA8 a(640, 480); }
    EXPECT_EQ(keptAt(3s), 1249280u);
    { const KSBitmapRGBA8 a(320, 480), b(320, 480); }  // younger ones stay
    const std::size_t younger = KSBitmapMemory::getKeptBytes() - 1249280u;
    EXPECT_NE(younger, 0u);
    EXPECT_EQ(keptAt(1999ms), younger + 1249280u);
    EXPECT_EQ(keptAt(1ms), younger);
    EXPECT_EQ(keptAt(3s), 0u);
    kestrel::detail::setRegionClock(nullptr);
}

bool holds(const KSBitmap& bitmap, std::uint8_t value) {
    const std::uint8_t* end = bitmap.getData() + bitmap.getSize();
    return std::count(bitmap.getData(), end, value) == end - bitmap.getData();
}

TEST(KSBitmapStorage, ThreadsMayAllocateAtOnce) {
    const std::size_t before = KSBitmapMemory::getRegionCount();
    std::vector<std::thread> threads;
    for (unsigned t = 0; t < 4; ++t)
        threads.emplace_back([t] {
            for (unsigned i = 0; i < 50; ++i) {
                KSBitmapRGBA8 bitmap(200 + i % 3, 200);
                ASSERT_EQ(bitmap.getData()[i], 0);
                std::memset(bitmap.getData(), static_cast<int>(t + 1), bitmap.getSize());
                if (i % 5 == 0) bitmap.unmapFromMemory(), bitmap.mapIntoMemory();
                ASSERT_TRUE(holds(bitmap, static_cast<std::uint8_t>(t + 1)));
            }
        });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(KSBitmapMemory::getRegionCount(), before);
}

/// Runs check in a forked child; its result must be true.
template <typename Check>
void expectInChild(Check check) {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) ::_exit(check() ? 0 : 1);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
}

TEST(KSBitmapStorage, ParentAndChildNeverShareARegionThatEitherGetsAfterAFork) {
    KSBitmapRGBA8 mapped(200, 200), unmapped(200, 200);
    std::memset(mapped.getData(), 1, mapped.getSize());
    std::memset(unmapped.getData(), 2, unmapped.getSize());
    unmapped.unmapFromMemory();
    { const KSBitmapRGBA8 kept(200, 200); }  // a region for both to reuse
    expectInChild([&] {
        KSBitmapRGBA8 fresh(200, 200), moved(200, 200);
        std::memset(fresh.getData(), 3, fresh.getSize());
        std::memset(moved.getData(), 4, moved.getSize());
        moved.unmapFromMemory();  // into a file of the child's own
        std::memset(mapped.getData(), 5, mapped.getSize());
        unmapped.mapIntoMemory();
        const bool whole = holds(unmapped, 2);
        unmapped.deallocateMemory();  // must not cut the parent's pixels
        moved.mapIntoMemory();
        return whole && holds(moved, 4) && holds(fresh, 3);
    });
    EXPECT_TRUE(holds(mapped, 1));
    unmapped.mapIntoMemory();
    EXPECT_TRUE(holds(unmapped, 2));
    const KSBitmapRGBA8 reused(200, 200);
    EXPECT_TRUE(holds(reused, 0));
}

// ---- Refusals, in children whose limits are lowered

unsigned calledWith = 0;

bool lowerLimit(decltype(RLIMIT_AS) which, rlim_t value) {
    rlimit limit{};
    ::getrlimit(which, &limit);
    limit.rlim_cur = value;
    return ::setrlimit(which, &limit) == 0;
}

TEST(KSBitmapStorage, TheCallbackHearsOfSizesThatDoNotFitAndIsTriedOnce) {
    static int calls;
    calls = 0;
    KSBitmap::setGuaranteeMemoryCallback([](unsigned bytes) {
        calledWith = bytes;
        return ++calls != 0;  // what it returns is ignored
    });
    testing::internal::CaptureStderr();
    const KSBitmap bitmap(32767, 32769, 8, 4, 0, 0);
    KSBitmap::setGuaranteeMemoryCallback(nullptr);
    EXPECT_EQ(bitmap.getData(), nullptr);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(calledWith, bitmap.getAllocatedSize());
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::EndsWith(" because 12\n"));
}

#ifndef KESTREL_SANITIZED  // a sanitizer's own memory fails too when addresses run out
bool countingCallback(unsigned bytes) {
    calledWith = bytes;
    return false;
}

bool freeingCallback(unsigned bytes) {
    calledWith = bytes;
    rlimit limit{RLIM_INFINITY, RLIM_INFINITY};
    ::getrlimit(RLIMIT_AS, &limit);
    limit.rlim_cur = limit.rlim_max;
    return ::setrlimit(RLIMIT_AS, &limit) == 0;
}

KSBitmap* victim = nullptr;

TEST(KSBitmapStorage, ACallbackFreesAddressesByUnmapping) {
    expectInChild([] {
        KSBitmapMemory::releaseKept();
        KSBitmapRGBA8 first(4096, 4096);  // 64 MiB
        std::memset(first.getData(), 8, first.getSize());
        std::ifstream statm("/proc/self/statm");
        rlim_t pages = 0;
        statm >> pages;
        // Room for another half: neither for a second bitmap nor for a second copy of the first.
        if (!lowerLimit(RLIMIT_AS, pages * static_cast<rlim_t>(::sysconf(_SC_PAGESIZE)) + (32u << 20)))
            return false;
        victim = &first;
        KSBitmap::setGuaranteeMemoryCallback([](unsigned) {
            victim->unmapFromMemory();
            return true;
        });
        {
            const KSBitmapRGBA8 second(4096, 4096);
            if (!second.getData() || first.getData()) return false;
        }
        KSBitmapMemory::releaseKept();
        first.mapIntoMemory();
        return first.getData() && holds(first, 8);
    });
}

TEST(KSBitmapStorage, ARefusedMappingIsReportedAfterOneMoreTry) {
    ASSERT_TRUE(lowerLimit(RLIMIT_AS, RLIM_INFINITY));
    expectInChild([] {
        if (!lowerLimit(RLIMIT_AS, rlim_t{1} << 30)) return false;
        testing::internal::CaptureStderr();
        const KSBitmapRGBAFloat refused(11000, 8000);
        if (refused.getData() || refused.getMemoryPort()) return false;
        KSBitmap::setGuaranteeMemoryCallback(countingCallback);
        const KSBitmapRGBA8 large(20000, 20000);
        if (large.getData() || calledWith != large.getAllocatedSize()) return false;
        if (testing::internal::GetCapturedStderr() !=
            "could not allocate vm of size 1408012288 because 12\n"
            "could not allocate vm of size 1600032768 because 12\n")
            return false;
        KSBitmap::setGuaranteeMemoryCallback(freeingCallback);
        testing::internal::CaptureStderr();
        const KSBitmapRGBA8 granted(20000, 20000);
        return granted.getData() && testing::internal::GetCapturedStderr().empty();
    });
}
#endif

TEST(KSBitmapStorage, WithoutDescriptorsPixelsStayMapped) {
    expectInChild([] {
        KSBitmapRGBA8 bitmap(100, 100);  // small enough not to open the file for its label
        std::memset(bitmap.getData(), 6, bitmap.getSize());
        testing::internal::CaptureStderr();
        if (!lowerLimit(RLIMIT_NOFILE, 3)) return false;  // standard streams only
        bitmap.unmapFromMemory();
        if (!bitmap.getData() || !holds(bitmap, 6)) return false;
        if (!lowerLimit(RLIMIT_NOFILE, 64)) return false;  // to read the report
        return testing::internal::GetCapturedStderr() ==
               std::string("Could not unmap: ") + std::strerror(EMFILE) + "\n";
    });
}

TEST(KSBitmapStorage, WhereTheFileMayNotGrowPixelsStayMapped) {
    expectInChild([] {
        KSBitmapRGBA8 bitmap(100, 100), moved(100, 100);
        moved.unmapFromMemory();  // the file is open
        std::memset(bitmap.getData(), 6, bitmap.getSize());
        if (!lowerLimit(RLIMIT_FSIZE, 50000)) return false;  // beyond it a write would end the process
        testing::internal::CaptureStderr();
        bitmap.unmapFromMemory();
        const bool kept = bitmap.getData() && holds(bitmap, 6) &&
                          testing::internal::GetCapturedStderr() ==
                              std::string("Could not unmap: ") + std::strerror(EFBIG) + "\n";
        moved.mapIntoMemory();
        return kept && holds(moved, 0);
    });
}

}  // namespace
