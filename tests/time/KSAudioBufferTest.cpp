#include <kestrel/time/KSAudioBuffer.h>

#include <gtest/gtest.h>

#include <array>
#include <cstring>

namespace {

struct SizeRow {
    unsigned long long frames;
    unsigned int channels, sampleSize;
    bool isFloat;
    std::uint32_t size;
    std::size_t allocated;
};
const auto sizeRows = std::to_array<SizeRow>({
    {100, 2, 4, true, 800, 3200},  // four bytes counted twice
    {100, 2, 2, false, 400, 400},
    {0, 2, 2, false, 0, 0},
    {100, 0, 4, true, 0, 0},
    {0x100000064, 2, 2, false, 400, 400},              // the low 32 bits of the frame count
    {0x40000000, 2, 2, false, 0, 0},                   // exactly 4 GiB wraps to nothing
    {0x80000001, 2, 3, false, 6, 6},                   // frames * channels wraps first
    {0xFFFFFFFFFFFFFFFF, 0xFFFFFFFF, 5, true, 5, 20},  // -1 * -1
});

TEST(KSAudioBuffer, SizesWrapIn32BitsAndTheMemoryFollowsThem) {
    for (const auto& row : sizeRows) {
        KSAudioBuffer buffer(row.frames, row.channels, 44100.5, row.sampleSize, row.isFloat);
        EXPECT_EQ(buffer.getFrameCount(), row.frames);
        EXPECT_EQ(buffer.getChannelCount(), row.channels);
        EXPECT_EQ(buffer.getSampleSize(), row.sampleSize);
        EXPECT_EQ(buffer.getSampleRate(), 44100.5);
        EXPECT_EQ(buffer.isFloat(), row.isFloat);
        EXPECT_EQ(buffer.getSize(), row.size) << row.frames;
        EXPECT_EQ(buffer.getAllocatedSize(), row.allocated) << row.frames;
        ASSERT_NE(buffer.getSamples(), nullptr);
        std::memset(buffer.getSamples(), 0x5A, row.allocated);  // the sanitizer checks the last byte
    }
}

TEST(KSAudioBuffer, FlagIsTheApplications) {
    KSAudioBuffer buffer(1, 1, 8000, 1, false);
    EXPECT_FALSE(buffer.getFlag());
    buffer.setFlag(true);
    EXPECT_TRUE(buffer.getFlag());
}

}  // namespace
