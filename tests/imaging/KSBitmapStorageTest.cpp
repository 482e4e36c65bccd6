#include <kestrel/imaging/KSBitmap.h>
#include <kestrel/imaging/KSBitmapMemory.h>
#include <kestrel/imaging/KSBitmap_t.h>
#include <kestrel/imaging/KSImageAttributes.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace {

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
    }
}

}  // namespace
