// The tables of formats, depths and attributes.
#include <kestrel/imaging/KSBitDepth.h>
#include <kestrel/imaging/KSImageAttributes.h>
#include <kestrel/imaging/KSPixelFormat.h>
#include <kestrel/serialization/KSHashWriteStream.h>

#include <gtest/gtest.h>

#include <array>
#include <limits>

namespace {

struct FormatRow {
    unsigned format;
    bool hasAlpha;
    unsigned bitsPerPixel, bitsPerChannel, internalFormat, dataFormat, dataType, back;
};
constexpr auto formatRows = std::to_array<FormatRow>({
    {0, true, 32, 8, 0x8058, 0x1908, 0x8367, 0},
    {1, true, 32, 8, 0x1908, 0x80E1, 0x8035, 1},
    {2, false, 32, 8, 0x1908, 0x85B9, 0x85BA, 2},
    {3, false, 32, 8, 0x1908, 0x80E1, 0x8035, 1},
    {4, true, 64, 16, 0x805B, 0x1908, 0x1403, 4},
    {5, false, 48, 16, 0x1908, 0x1907, 0x1403, 5},
    {6, true, 32, 16, 0x1908, 0x190A, 0x1403, 6},
    {7, false, 16, 16, 0x1908, 0x1909, 0x1403, 7},
    {8, true, 64, 16, 0x881A, 0x1908, 0x140B, 8},
    {9, true, 128, 32, 0x8814, 0x1908, 0x1406, 9},
    {10, false, 32, 8, 0x1908, 0x80E1, 0x8035, 1},
    {std::numeric_limits<unsigned>::max(), false, 32, 8, 0x1908, 0x80E1, 0x8035, 1},
});

TEST(KSPixelFormat, AnswersForEveryNumber) {
    for (const FormatRow& row : formatRows) {
        SCOPED_TRACE(row.format);
        EXPECT_EQ(KSPixelFormat::hasAlpha(row.format), row.hasAlpha);
        EXPECT_EQ(KSPixelFormat::getBitsPerPixel(row.format), row.bitsPerPixel);
        EXPECT_EQ(KSPixelFormat::getBitsPerChannel(row.format), row.bitsPerChannel);
        EXPECT_EQ(KSPixelFormat::getGLInternalFormat(row.format), row.internalFormat);
        EXPECT_EQ(KSPixelFormat::getGLDataFormat(row.format), row.dataFormat);
        EXPECT_EQ(KSPixelFormat::getGLDataType(row.format), row.dataType);
        EXPECT_EQ(KSPixelFormat::getPixelFormat(row.dataFormat, row.dataType), row.back);
    }
    EXPECT_EQ(KSPixelFormat::getPixelFormat(0x1234, 0x1403), 4u) << "16 bits of any other order";
    EXPECT_EQ(KSPixelFormat::getPixelFormat(0x1909, 0x1406), 9u) << "the type decides first";
}

TEST(KSBitDepth, TablesAndInverse) {
    const struct {
        KSBitDepth::Type type;
        unsigned bitsPerPixel, bitsPerChannel, format;
    } rows[] = {{KSBitDepth::INTEGER_8, 32, 8, 0x1908},
                {KSBitDepth::INTEGER_16, 64, 16, 0x1908},
                {KSBitDepth::HALF, 64, 16, 0x881A},
                {KSBitDepth::FLOAT, 128, 32, 0x8814}};
    for (const auto& row : rows) {
        EXPECT_EQ(KSBitDepth::getBitsPerPixel(row.type), row.bitsPerPixel);
        EXPECT_EQ(KSBitDepth::getBitsPerChannel(row.type), row.bitsPerChannel);
        EXPECT_EQ(KSBitDepth::getPixelFormat(row.type), row.format);
        const bool integer = row.type != KSBitDepth::HALF;
        EXPECT_EQ(KSBitDepth::getFromBitsPerPixel(static_cast<int>(row.bitsPerPixel), integer), row.type);
        EXPECT_EQ(KSBitDepth::getFromBitsPerChannel(static_cast<int>(row.bitsPerChannel), integer), row.type);
    }
    EXPECT_EQ(KSBitDepth::getFromBitsPerPixel(48, false), KSBitDepth::INTEGER_16);
    EXPECT_EQ(KSBitDepth::getFromBitsPerChannel(12, false), KSBitDepth::INTEGER_16);
    for (const int bits :
         {0, 16, 24, 32, -64, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
        EXPECT_EQ(KSBitDepth::getFromBitsPerPixel(bits, true), KSBitDepth::INTEGER_8) << bits;
    EXPECT_EQ(KSBitDepth::getFromBitsPerChannel(std::numeric_limits<int>::max(), true),
              KSBitDepth::INTEGER_8);
}

/// A change of one field, and whether equality and the cache key notice it.
struct FieldRow {
    const char* name;
    void (*change)(KSImageAttributes&);
    bool compared, hashed;
};
constexpr auto fieldRows = std::to_array<FieldRow>({
    {"kind", [](KSImageAttributes& a) { a.kind = 9; }, true, true},
    {"width", [](KSImageAttributes& a) { a.width = 1; }, true, true},
    {"height", [](KSImageAttributes& a) { a.height = 1; }, true, true},
    {"bitsPerChannel", [](KSImageAttributes& a) { a.bitsPerChannel = 16; }, true, true},
    {"channels", [](KSImageAttributes& a) { a.channels = 3; }, true, true},
    {"rowPadding", [](KSImageAttributes& a) { a.rowPadding = 1; }, true, false},
    {"extra", [](KSImageAttributes& a) { a.extra = 1; }, true, true},
    {"textureTarget", [](KSImageAttributes& a) { a.textureTarget = 1; }, true, true},
    {"storageHint", [](KSImageAttributes& a) { a.storageHint = 1; }, false, false},
    {"flagA", [](KSImageAttributes& a) { a.flagA = true; }, false, false},
    {"flagB", [](KSImageAttributes& a) { a.flagB = false; }, false, true},
    {"reserved1", [](KSImageAttributes& a) { a.reserved1 = 1; }, false, false},
    {"reserved2", [](KSImageAttributes& a) { a.reserved2 = 1; }, false, false},
});

TEST(KSImageAttributes, EqualityAndKeyLookAtTheirOwnFields) {
    const KSImageAttributes base;
    EXPECT_EQ(base.textureTarget, 0x84F5u);
    EXPECT_EQ(base.storageHint, 0x85BDu);
    for (const FieldRow& row : fieldRows) {
        KSImageAttributes changed;
        row.change(changed);
        EXPECT_EQ(changed == base, !row.compared) << row.name;
        EXPECT_EQ(changed.getCacheHashKey() == base.getCacheHashKey(), !row.hashed) << row.name;
    }
}

TEST(KSImageAttributes, KeyIsTheDigestOfTheFieldsInOrder) {
    KSImageAttributes attributes;
    attributes.kind = 9;
    attributes.width = 1920;
    attributes.height = 1080;
    attributes.extra = 0xFFFFFFFF;
    KSHashWriteStream stream;
    stream.writeValue(9);
    stream.writeValue(1920u);
    stream.writeValue(1080u);
    stream.writeValue(8u);
    stream.writeValue(4u);
    stream.writeValue(1);
    stream.writeValue(0x84F5);
    stream.writeValue(-1);
    EXPECT_TRUE(attributes.getCacheHashKey() == stream.getHash());
}

}  // namespace
