// The operations on pixels, by what they must give; that vectors give the same is PixelKernelsTest's matter.
#include <kestrel/color/KSColor.h>
#include <kestrel/imaging/KSBitmapMemory.h>
#include <kestrel/imaging/KSBitmap_t.h>
#include <tests/imaging/BitmapOperations.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <hwy/targets.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstring>
#include <limits>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using Bytes = std::vector<std::uint8_t>;

void fill(KSBitmap& bitmap, const Bytes& bytes) { std::memcpy(bitmap.getData(), bytes.data(), bytes.size()); }

Bytes content(const KSBitmap& bitmap, std::size_t size) {
    return Bytes(bitmap.getData(), bitmap.getData() + size);
}

template <typename Component>
Component* components(KSBitmap& bitmap) {
    return reinterpret_cast<Component*>(bitmap.getData());
}

template <typename Component>
std::vector<float> numbers(KSBitmap& bitmap, std::size_t count) {
    const Component* c = components<Component>(bitmap);
    return std::vector<float>(c, c + count);
}

// ---- Premultiplication

TEST(KSBitmapAlpha, Premultiplies8BitFormatsOnly) {
    const Bytes pixels = {128, 255, 100, 1, 255, 7, 8, 9, 0, 7, 8, 9};
    KSBitmapARGB8 argb(3, 1);
    fill(argb, pixels);
    argb.preMult();
    EXPECT_THAT(content(argb, 12), ElementsAre(128, 128, 50, 0, 255, 7, 8, 9, 0, 0, 0, 0));
    KSBitmapRGBA8 rgba(3, 1);
    fill(rgba, pixels);
    rgba.preMult();
    EXPECT_THAT(content(rgba, 12), ElementsAre(0, 1, 0, 1, 9, 0, 0, 9, 0, 0, 0, 9));
    KSBitmapRGBA16 wide(3, 1);
    fill(wide, pixels);
    wide.preMult();
    EXPECT_EQ(content(wide, 12), pixels);
}

TEST(KSBitmapAlpha, RowsStepOverPaddingAndFlatWalksDoNot) {
    const Bytes pixels = {128, 255, 255, 255, 128, 255, 255, 255, 128, 255, 255, 255};
    KSBitmapARGB8 rows(1, 2, 4);  // the second row starts at byte 8
    fill(rows, pixels);
    rows.preMult();
    EXPECT_THAT(content(rows, 12), ElementsAre(128, 128, 128, 128, 128, 255, 255, 255, 128, 128, 128, 128));
    KSBitmapARGB8 flat(1, 2, 4);
    fill(flat, pixels);
    flat.invertAlpha();
    EXPECT_THAT(content(flat, 12), ElementsAre(127, 255, 255, 255, 127, 255, 255, 255, 128, 255, 255, 255));
}

// Two rows of one pixel, four bytes between them: byte 8 starts the second row, byte 4 the second flat pixel.
struct PaddedRow {
    const char* name;
    unsigned format;
    void (*run)(KSBitmap&);
    Bytes start, want;
};

TEST(KSBitmapAlpha, EveryOperationKnowsItsWalk) {
    const Bytes argb = {255, 1, 2, 3, 51, 51, 51, 51, 51, 51, 102, 204};
    const Bytes rgba = {1, 2, 3, 255, 51, 51, 51, 51, 51, 102, 204, 51};
    const PaddedRow rows[] = {
        {"unPreMult",
         1,
         [](KSBitmap& b) { b.unPreMult(); },
         {51, 0, 51, 10, 51, 51, 51, 51, 51, 10, 20, 51},
         {51, 0, 255, 50, 51, 51, 51, 51, 51, 50, 100, 255}},
        {"unpremultiply",
         1,
         [](KSBitmap& b) { b.unpremultiply(KSColor::BLACK); },
         {51, 0, 51, 10, 51, 10, 20, 51, 51, 10, 20, 51},
         {51, 0, 255, 50, 51, 50, 100, 255, 51, 10, 20, 51}},
        {"setConstantAlpha",
         0,
         [](KSBitmap& b) { b.setConstantAlpha(1); },
         rgba,
         {1, 2, 3, 255, 51, 51, 51, 255, 51, 102, 204, 51}},
        {"duplicateAlphaToRGB",
         1,
         [](KSBitmap& b) { b.duplicateAlphaToRGB(); },
         {9, 1, 2, 3, 8, 1, 2, 3, 7, 1, 2, 3},
         {9, 9, 9, 9, 8, 8, 8, 8, 7, 1, 2, 3}},
        {"convertToARGB",
         0,
         [](KSBitmap& b) { b.convertToARGB(); },
         {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12},
         {4, 1, 2, 3, 8, 5, 6, 7, 9, 10, 11, 12}},
        {"convertToRGBA",
         1,
         [](KSBitmap& b) { b.convertToRGBA(); },
         {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12},
         {2, 3, 4, 1, 6, 7, 8, 5, 9, 10, 11, 12}},
        {"flip", 1, [](KSBitmap& b) { b.flip(); }, argb, {51, 51, 102, 204, 0, 0, 0, 0, 255, 1, 2, 3}},
    };
    for (const PaddedRow& row : rows) {
        KSBitmap bitmap(1, 2, 8, 4, row.format, 4);
        fill(bitmap, row.start);
        row.run(bitmap);
        EXPECT_EQ(content(bitmap, 12), row.want) << row.name;
    }
}

TEST(KSBitmapAlpha, CopyWithUnPreMultStepsEachBitmapByItsOwnStride) {
    KSBitmapARGB8 source(2, 2, 4), target(3, 1, 1);  // strides of 12 and 13: the source's size is walked
    fill(source, {51, 10, 20, 51, 255, 1, 2, 3, 9, 9, 9, 9, 51, 51, 10, 20, 0, 7, 7, 7});
    fill(target, Bytes(24, 77));
    target.copyWithUnPreMult(source, KSColor::BLACK);
    EXPECT_THAT(content(target, 24), ElementsAre(51, 50, 100, 255, 255, 1, 2, 3, 77, 77, 77, 77, 77, 51, 255,
                                                 50, 100, 0, 0, 0, 0, 77, 77, 77));
}

TEST(KSBitmapAlpha, UnPreMultReadsAnyFormatAsAlphaFirst) {
    const Bytes pixels = {128, 64, 128, 200, 0, 1, 2, 3};
    KSBitmapARGB8 argb(2, 1);
    fill(argb, pixels);
    argb.unPreMult();
    EXPECT_THAT(content(argb, 8), ElementsAre(128, 127, 255, 255, 0, 1, 2, 3));
    KSBitmapRGBA8 rgba(2, 1);
    fill(rgba, pixels);
    rgba.unPreMult();
    EXPECT_EQ(content(rgba, 8), content(argb, 8));
}

const KSColor purple(KSColor::RGB, 0.5f, 0, 1, 1);

TEST(KSBitmapAlpha, UnpremultiplyTakesTheMatteAway) {
    KSBitmapARGB8 argb(3, 1);
    fill(argb, {0, 1, 2, 3, 128, 192, 64, 255, 255, 5, 6, 7});
    argb.unpremultiply(purple);
    // (192/255 - 0.5 * 127/255) / (128/255) = 1.0039 clamped; 64/128 * 255 = 127.5; (255 - 127)/128 * 255
    EXPECT_THAT(content(argb, 12),
                ElementsAre(0, 128, 0, 255, 128, 255, testing::AnyOf(127, 128), 255, 255, 5, 6, 7));
    KSBitmapRGBA8 rgba(1, 1);
    fill(rgba, {1, 2, 3, 0});
    rgba.unpremultiply(KSColor(KSColor::HSV, 0, 1, 1, 1));  // red, whatever its model
    EXPECT_THAT(content(rgba, 4), ElementsAre(255, 0, 0, 0));
    KSBitmapRGBA16 wide(2, 1);
    const std::uint16_t values[] = {1, 2, 3, 0, 16384, 8192, 60000, 32768};
    std::memcpy(wide.getData(), values, sizeof values);
    wide.unpremultiply(purple);
    EXPECT_THAT(std::vector<int>(components<std::uint16_t>(wide), components<std::uint16_t>(wide) + 8),
                ElementsAre(32768, 0, 65535, 0, 1, 16384, 54465, 32768));
    KSBitmapRGBAFloat real(3, 1);
    const float reals[] = {3, 4, 5, 0, 0.5f, 0.25f, 2, 0.5f, 1, 2, 3, -1};
    std::memcpy(real.getData(), reals, sizeof reals);
    real.unpremultiply(purple);
    EXPECT_THAT(numbers<float>(real, 12), ElementsAre(0.5f, 0, 1, 0, 0.5f, 0.5f, 3, 0.5f, 0.5f, 0, 1, -1));
    KSBitmapRGBAHalfFloat halves(2, 1);
    for (int i = 0; i < 8; ++i) components<half>(halves)[i] = half(reals[i]);
    halves.unpremultiply(purple);
    EXPECT_THAT(numbers<half>(halves, 8), ElementsAre(0.5f, 0, 1, 0, 0.5f, 0.5f, 3, 0.5f));
}

TEST(KSBitmapAlpha, CopyWithUnPreMultTruncates) {
    KSBitmapARGB8 source(3, 1), target(3, 1);
    fill(source, {0, 1, 2, 3, 128, 192, 63, 255, 255, 5, 6, 7});
    target.copyWithUnPreMult(source, purple);
    EXPECT_THAT(content(target, 12), ElementsAre(0, 127, 0, 255, 128, 255, 125, 255, 255, 5, 6, 7));
}

struct AlphaRow {
    const char* name;
    unsigned format;
    Bytes start, constantHalf, inverted, duplicated;
};
const std::vector<AlphaRow>& alphaRows() {
    static const std::vector<AlphaRow> rows = {
        {"RGBA8", 0, {1, 2, 3, 4}, {1, 2, 3, 128}, {1, 2, 3, 251}, {4, 4, 4, 4}},
        {"ARGB8", 1, {1, 2, 3, 4}, {128, 2, 3, 4}, {254, 2, 3, 4}, {1, 1, 1, 1}},
        {"Yuv", 2, {1, 2, 3, 4}, {1, 2, 3, 128}, {1, 2, 3, 251}, {4, 4, 4, 4}},
        {"RGBA16",
         4,
         {1, 2, 3, 4, 5, 6, 7, 8},
         {1, 2, 3, 4, 5, 6, 0, 128},
         {1, 2, 3, 4, 5, 6, 248, 247},
         {7, 8, 7, 8, 7, 8, 7, 8}},
        {"RGB16AsBytes", 5, {1, 2, 3, 4}, {1, 2, 3, 128}, {1, 2, 3, 251}, {4, 4, 4, 4}},
        {"LuminanceAlpha16", 6, {1, 2, 3, 4}, {1, 2, 0, 128}, {1, 2, 252, 251}, {4, 4, 4, 4}},
        {"Luminance16AsBytes", 7, {1, 2, 3, 4}, {1, 2, 3, 128}, {1, 2, 3, 251}, {4, 4, 4, 4}},
        {"Half",
         8,
         {1, 2, 3, 4, 5, 6, 0, 0x34},
         {1, 2, 3, 4, 5, 6, 0, 0x38},
         {1, 2, 3, 4, 5, 6, 0, 0x3A},
         {0, 0x34, 0, 0x34, 0, 0x34, 0, 0x34}},
        {"Float",
         9,
         {1, 2, 3, 4, 5, 6, 7, 8, 9, 9, 9, 9, 0, 0, 0x80, 0x3E},
         {1, 2, 3, 4, 5, 6, 7, 8, 9, 9, 9, 9, 0, 0, 0, 0x3F},
         {1, 2, 3, 4, 5, 6, 7, 8, 9, 9, 9, 9, 0, 0, 0x40, 0x3F},
         {0, 0, 0x80, 0x3E, 0, 0, 0x80, 0x3E, 0, 0, 0x80, 0x3E, 0, 0, 0x80, 0x3E}},
    };
    return rows;
}

TEST(KSBitmapAlpha, EveryFormatHasItsPlaceForAlpha) {
    for (const AlphaRow& row : alphaRows()) {
        SCOPED_TRACE(row.name);
        const std::unique_ptr<KSBitmap> bitmap(KSCreateBitmap(1, 1, row.format));
        const auto after = [&](auto operation) {
            fill(*bitmap, row.start);
            operation();
            return content(*bitmap, row.start.size());
        };
        EXPECT_EQ(after([&] { bitmap->setConstantAlpha(0.5); }), row.constantHalf);
        EXPECT_EQ(after([&] { bitmap->invertAlpha(); }), row.inverted);
        EXPECT_EQ(after([&] { bitmap->duplicateAlphaToRGB(); }), row.duplicated);
        EXPECT_EQ(after([&] { bitmap->doOutputConversion(false, true, true, purple); }), row.duplicated);
        EXPECT_EQ(after([&] {
                      bitmap->setConstantAlpha(0);
                      bitmap->invertAlpha();
                      bitmap->setConstantAlpha(0.5);
                  }),
                  row.constantHalf);
    }
    KSBitmapRGBAHalfFloat halves(1, 1);
    halves.setConstantAlpha(-0.0);
    EXPECT_EQ(components<half>(halves)[3].bits(), 0) << "zero is +0";
    KSBitmapRGBA16 wide(1, 1);
    for (const auto& [alpha, want] :
         {std::pair{2.0, 65535}, {-1.0, 0}, {std::numeric_limits<double>::quiet_NaN(), 0}}) {
        wide.setConstantAlpha(alpha);
        EXPECT_EQ(components<std::uint16_t>(wide)[3], want);
    }
}

TEST(KSBitmapAlpha, OutputConversionsChain) {
    KSBitmapARGB8 source(2, 1), target(2, 1);
    fill(source, {128, 64, 64, 64, 0, 1, 2, 3});
    target.copyWithOutputConversion(source, true, true, false, KSColor::RED);
    EXPECT_THAT(content(target, 8), ElementsAre(255, 0, 127, 127, 255, 255, 0, 0));
    target.copyWithOutputConversion(source, false, true, true, KSColor::RED);
    EXPECT_THAT(content(target, 8), ElementsAre(128, 128, 128, 128, 0, 0, 0, 0)) << "alpha to RGB wins";
    source.doOutputConversion(true, true, false, KSColor::BLACK);
    EXPECT_THAT(content(source, 8), ElementsAre(255, 128, 128, 128, 255, 0, 0, 0));
}

// ---- Order

TEST(KSBitmapOrder, RotatesComponentsAndChangesOnly8BitFormats) {
    for (const unsigned format : {0u, 4u, 9u}) {
        const std::unique_ptr<KSBitmap> bitmap(KSCreateBitmap(2, 1, format));
        const std::size_t size = bitmap->getBitsPerChannel() / 8, bytes = 8 * size;
        for (std::size_t i = 0; i < bytes; ++i) bitmap->getData()[i] = static_cast<std::uint8_t>(i);
        const Bytes start = content(*bitmap, bytes);
        Bytes want;
        for (const std::size_t component : {3, 0, 1, 2, 7, 4, 5, 6})
            for (std::size_t i = 0; i < size; ++i)
                want.push_back(static_cast<std::uint8_t>(component * size + i));
        bitmap->convertToARGB();
        EXPECT_EQ(content(*bitmap, bytes), want) << format;
        EXPECT_EQ(bitmap->getPixelFormat(), format == 0 ? 1 : format);
        bitmap->convertToRGBA();
        EXPECT_EQ(content(*bitmap, bytes), start) << format;
        EXPECT_EQ(bitmap->getPixelFormat(), format);
    }
    const struct {
        void (KSBitmap::*convert)();
        unsigned leftAlone[6];
    } rows[] = {{&KSBitmap::convertToARGB, {1, 2, 5, 6, 7, 8}},
                {&KSBitmap::convertToRGBA, {0, 2, 5, 6, 7, 8}}};
    for (const auto& row : rows)
        for (const unsigned format : row.leftAlone) {
            const std::unique_ptr<KSBitmap> bitmap(KSCreateBitmap(1, 1, format));
            fill(*bitmap, {1, 2, 3, 4, 5, 6, 7, 8});
            (bitmap.get()->*row.convert)();
            EXPECT_THAT(content(*bitmap, 8), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8)) << format;
            EXPECT_EQ(bitmap->getPixelFormat(), format);
        }
}

TEST(KSBitmapOrder, SwizzlesAndFlipsWhileCopying) {
    KSBitmapARGB8 source(1, 3, 4);
    fill(source, {1, 2, 3, 4, 0, 0, 0, 0, 5, 6, 7, 8, 0, 0, 0, 0, 9, 10, 11, 12});
    KSBitmapRGBA8 target(1, 3);
    target.copyWithSwizzleARGBToRGBA(source);
    EXPECT_THAT(content(target, 12), ElementsAre(2, 3, 4, 1, 6, 7, 8, 5, 10, 11, 12, 9));
    target.copyWithSwizzleRGBToARGB(source);
    EXPECT_THAT(content(target, 12), ElementsAre(4, 1, 2, 3, 8, 5, 6, 7, 12, 9, 10, 11));
    KSBitmapRGBA8 padded(1, 3, 4);
    padded.copyWithFlipAndSwizzleARGBtoRGBA(source);
    EXPECT_THAT(content(padded, 20),
                ElementsAre(10, 11, 12, 9, 0, 0, 0, 0, 6, 7, 8, 5, 0, 0, 0, 0, 2, 3, 4, 1));
    padded.copyWithFlip(source);  // no swizzle between formats
    EXPECT_THAT(content(padded, 20),
                ElementsAre(9, 10, 11, 12, 0, 0, 0, 0, 5, 6, 7, 8, 0, 0, 0, 0, 1, 2, 3, 4));
    padded.flip();
    EXPECT_EQ(content(padded, 20), content(source, 20));
}

struct AbortRow {
    const char* line;
    void (KSBitmap::*copy)(const KSBitmap&);
    const KSBitmap& source;
};

/// Copies of frames that are too large for the caches go another way, which must give the same.
TEST(KSBitmapOrder, CopiesFramesBeyondTheCaches) {
    constexpr unsigned width = 2044, height = 1603;  // every other row starts within a vector
    KSBitmapRGBA8 source(width, height), target(width, height);
    std::mt19937 random(1603);
    for (std::size_t i = 0; i < source.getSize(); ++i)
        source.getData()[i] = static_cast<std::uint8_t>(random());
    constexpr std::size_t stride = 4 * width;
    const auto row = [](KSBitmap& bitmap, unsigned y) { return bitmap.getData() + y * stride; };

    target.copy(source);
    EXPECT_EQ(std::memcmp(target.getData(), source.getData(), source.getSize()), 0);
    target.copyWithFlip(source);
    for (unsigned y = 0; y < height; ++y)
        ASSERT_EQ(std::memcmp(row(target, y), row(source, height - 1 - y), stride), 0) << y;
    target.copyWithSwizzleARGBToRGBA(source);
    for (std::size_t i = 0; i < source.getSize(); ++i)
        ASSERT_EQ(target.getData()[i], source.getData()[i - i % 4 + (i + 1) % 4]) << i;

    KSBitmapYUV8 yuv(width, height), strip(width, 1);
    KSBitmapARGB8 argb(width, height), line(width, 1);
    std::memcpy(yuv.getData(), source.getData(), yuv.getSize());
    KSBitmap::convertYUVtoRGBA(&argb, &yuv);
    for (unsigned y = 0; y < height; ++y) {
        std::memcpy(strip.getData(), yuv.getData() + y * stride / 2, stride / 2);
        KSBitmap::convertYUVtoRGBA(&line, &strip);
        ASSERT_EQ(std::memcmp(row(argb, y), line.getData(), stride), 0) << y;
    }
}

TEST(KSBitmapOrder, CopiesThatCannotBeAbort) {
    KSBitmapRGBA8 target(1, 3);
    const KSBitmapARGB8 padded(1, 3, 4);
    const KSBitmapYUV8 yuv(1, 3);
    const AbortRow rows[] = {
        {"704", &KSBitmap::copyWithFlipAndSwizzleARGBtoRGBA, padded},
        {"667", &KSBitmap::copyWithFlip, padded},
        {"645", &KSBitmap::copyWithFlip, yuv},
    };
    for (const AbortRow& row : rows) {
        const auto copy = [&] {
            ::dup2(2, 1);  // the line goes to standard output
            (target.*row.copy)(row.source);
        };
        EXPECT_EXIT(copy(), testing::KilledBySignal(SIGABRT),
                    "^File KSBitmap, line " + std::string(row.line) + " should not have been reached:\n\t");
    }
}

TEST(KSBitmapOrder, ABitmapMayBeItsOwnSource) {
    const Bytes pixels = {1, 2, 3, 4, 5, 6, 7, 8, 255, 10, 11, 12};
    struct {
        const char* name;
        void (*run)(KSBitmap&);
        Bytes want;
    } const cases[] = {
        {"copy", [](KSBitmap& b) { b.copy(b); }, pixels},
        {"clone", [](KSBitmap& b) { b.clone(b); }, pixels},
        {"setData", [](KSBitmap& b) { b.setData(b.getData()); }, pixels},
        {"scaling", [](KSBitmap& b) { b.copyWithScaling(b); }, pixels},
        {"depth", [](KSBitmap& b) { b.copyWithScalingAndDepthConversion(b); }, pixels},
        {"cropping", [](KSBitmap& b) { b.copyWithCropping(b, 0, 0, false); }, pixels},
        {"flip", [](KSBitmap& b) { b.copyWithFlip(b); }, {255, 10, 11, 12, 5, 6, 7, 8, 255, 10, 11, 12}},
        {"swizzle",
         [](KSBitmap& b) { b.copyWithSwizzleARGBToRGBA(b); },
         {2, 3, 4, 1, 6, 7, 8, 5, 10, 11, 12, 255}},
        {"unPreMult",
         [](KSBitmap& b) { b.copyWithUnPreMult(b, KSColor::BLACK); },
         {1, 255, 255, 255, 5, 255, 255, 255, 255, 10, 11, 12}},
    };
    for (const auto& [name, run, want] : cases) {
        KSBitmapARGB8 bitmap(1, 3);
        fill(bitmap, pixels);
        run(bitmap);
        EXPECT_EQ(content(bitmap, 12), want) << name;
    }
}

struct CropRow {
    const char* name;
    int x, y;
    bool flip;
    Bytes want;  // a window of 2 by 2, its pixels 99 before
};

TEST(KSBitmapOrder, CropsThePartThatLiesInside) {
    KSBitmapLuminance16 source(3, 3);  // the low bytes: 1 2 3 / 4 5 6 / 7 8 9
    for (std::size_t i = 0; i < 9; ++i)
        components<std::uint16_t>(source)[i] = static_cast<std::uint16_t>(i + 1);
    const CropRow rows[] = {
        {"Inside", 1, 1, false, {5, 6, 8, 9}},
        {"Flipped", 1, 1, true, {8, 9, 5, 6}},
        {"TopLeft", -1, -1, false, {99, 99, 99, 1}},
        {"BottomRight", 2, 2, false, {9, 99, 99, 99}},
        {"FlippedBelow", 0, 2, true, {99, 99, 7, 8}},
        {"Right", 3, 0, false, {99, 99, 99, 99}},
        {"FarLeft", std::numeric_limits<int>::min(), 0, false, {99, 99, 99, 99}},
        {"FarBelow", 0, std::numeric_limits<int>::max(), true, {99, 99, 99, 99}},
    };
    for (const CropRow& row : rows) {
        KSBitmapLuminance16 target(2, 2);
        std::fill_n(components<std::uint16_t>(target), 4, std::uint16_t{99});
        target.copyWithCropping(source, row.x, row.y, row.flip);
        EXPECT_THAT(Bytes(components<std::uint16_t>(target), components<std::uint16_t>(target) + 4),
                    ElementsAreArray(row.want))
            << row.name;
    }
    KSBitmapRGBA8 other(2, 2);
    other.copyWithCropping(source, 0, 0, false);
    EXPECT_THAT(content(other, 4), ElementsAre(0, 0, 0, 0)) << "pixel sizes differ";
}

TEST(KSBitmapOrder, Crops422AtEvenAndOddColumns) {
    KSBitmapYUV8 source(6, 1);
    fill(source, {10, 1, 20, 2, 30, 3, 40, 4, 50, 5, 61, 6});
    const auto cropped = [&](int x) {
        KSBitmapYUV8 target(4, 1);
        target.copyWithCropping(source, x, 0, false);
        return content(target, 8);
    };
    EXPECT_THAT(cropped(2), ElementsAre(30, 3, 40, 4, 50, 5, 61, 6));
    EXPECT_THAT(cropped(1), ElementsAre(20, 2, 30, 3, 40, 4, 51, 5)) << "chroma is the rounded mean";
    EXPECT_THAT(cropped(-1), ElementsAre(0, 0, 20, 1, 20, 2, 30, 3)) << "only one neighbour at the edge";
}

// ---- 4:2:2

TEST(KSBitmapYUV, ConvertsByTheFormulas) {
    KSBitmapYUV8 yuv(4, 1);
    fill(yuv, {128, 16, 128, 235, 90, 81, 240, 0});
    KSBitmapARGB8 argb(4, 1);
    argb.copy(yuv);
    EXPECT_THAT(content(argb, 16), ElementsAre(255, 0, 0, 0, 255, 254, 254, 254,  // (298 * 219) >> 8
                                               255, 254, 0, 0, 255, 160, 0, 0));
    const KSBitmapARGB8 before(argb);
    argb.copy(KSBitmapRGB16(4, 1));
    EXPECT_EQ(content(argb, 16), content(before, 16));
    yuv.copy(argb);
    // U = (-38 * 127 + ...) of the mean of black and grey 254
    EXPECT_THAT(content(yuv, 8), ElementsAre(128, 16, 128, 234, 97, 81, 218, 57));
    KSBitmapYUV8 odd(3, 1);
    odd.copy(argb);  // the source's pairs: four pixels; the third and fourth byte pair lie in the region
    EXPECT_THAT(content(odd, 8), ElementsAreArray(content(yuv, 8)));
    KSBitmapARGB8 oddSource(3, 1);
    KSBitmapYUV8 rest(3, 1);
    fill(rest, {1, 1, 1, 1, 1, 1});
    rest.copy(oddSource);
    EXPECT_THAT(content(rest, 6), ElementsAre(128, 16, 128, 16, 1, 1)) << "the last of an odd number stays";
    KSBitmapARGB8::convertRGBAtoYUV(&rest, &rest);
    KSBitmapARGB8 none(0, 0);
    rest.copy(none);
    EXPECT_THAT(content(rest, 6), ElementsAre(128, 16, 128, 16, 1, 1));
}

TEST(KSBitmapYUV, FlipsWhileConverting) {
    KSBitmapYUV8 yuv(34, 3);
    std::mt19937 random(7);
    for (unsigned i = 0; i < yuv.getSize(); ++i) yuv.getData()[i] = static_cast<std::uint8_t>(random());
    KSBitmapARGB8 flipped(34, 3), plain(34, 3);
    flipped.copyWithFlip(yuv);
    plain.copy(yuv);
    plain.flip();
    EXPECT_EQ(content(flipped, flipped.getSize()), content(plain, plain.getSize()));
}

TEST(KSBitmapYUV, AnOddNumberOfPixelsReadsTheLumaOfAWholePair) {
    KSBitmapYUV8 yuv(3, 1);
    fill(yuv, {128, 16, 128, 235, 128, 235, 128, 16});  // the last byte lies behind the third pixel
    KSBitmapARGB8 argb(3, 1);
    fill(argb, Bytes(20, 7));
    argb.copy(yuv);
    EXPECT_THAT(content(argb, 20), ElementsAre(255, 0, 0, 0, 255, 254, 254, 254, 255, 254, 254, 254,  //
                                               255, 0, 0, 0, 7, 7, 7, 7))
        << "each pair writes two pixels";
    KSBitmapYUV8 rows(3, 2);
    fill(rows, {128, 16, 128, 235, 128, 235, 128, 16, 128, 16, 128, 235, 128, 16});
    KSBitmapARGB8 flipped(3, 2);
    flipped.copyWithFlip(rows);
    // Rows of six bytes: the last pixel takes its V from what follows in memory.
    EXPECT_THAT(content(flipped, 24), ElementsAre(255, 0, 0, 0, 255, 0, 0, 0, 255, 254, 254, 254,  //
                                                  255, 0, 0, 0, 255, 254, 254, 254, 255, 254, 254, 254));
}

// ---- All shapes, all formats, mismatched

/// A page that may not be touched, mapped where the next region will end, as the system maps downwards.
struct Guard {
    void* page = ::mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    Guard() = default;
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;
    ~Guard() { ::munmap(page, 4096); }
};

std::unique_ptr<KSBitmap> randomBitmap(std::mt19937& random) {
    static constexpr unsigned formats[][3] = {{0, 8, 4},  {1, 8, 4},  {2, 8, 2},  {4, 16, 4}, {5, 16, 3},
                                              {6, 16, 2}, {7, 16, 1}, {8, 16, 4}, {9, 32, 4}, {0, 16, 1}};
    const auto& [format, bits, channels] = formats[random() % std::size(formats)];
    const unsigned large = random() % 8 == 0 ? 300 : 40;
    auto bitmap = std::make_unique<KSBitmap>(random() % large, random() % 20, bits, channels, format,
                                             random() % 4 ? 0 : random() % 300);
    for (unsigned i = 0; i < bitmap->getAllocatedSize(); ++i)
        bitmap->getData()[i] = static_cast<std::uint8_t>(random());
    return bitmap;
}

TEST(KSBitmapShapes, EveryOperationStaysInsideAndEqualsThePlainestTarget) {
    const std::int64_t plainest = hwy::SupportedAndGeneratedTargets().back();
    const std::size_t limit = KSBitmapMemory::getKeptLimit();
    KSBitmapMemory::setKeptLimit(0);
    std::mt19937 random(42);
    const KSColor colors[] = {KSColor::BLACK, purple, KSColor(KSColor::HSL, 200, 0.5f, 2, 1)};
    for (int round = 0; round < 3000; ++round) {
        const BitmapOperation& operation = bitmapOperations[random() % bitmapOperations.size()];
        const Guard above;
        const auto vector = randomBitmap(random);
        const Guard between;
        const auto source = randomBitmap(random);
        const Guard below;
        KSBitmap plain(*vector);
        std::memcpy(plain.getData(), vector->getData(), plain.getAllocatedSize());
        const KSColor& color = colors[random() % std::size(colors)];
        const int number = static_cast<int>(random() % 50);
        operation.run(*vector, *source, color, number);
        hwy::SetSupportedTargetsForTest(plainest);
        operation.run(plain, *source, color, number);
        hwy::SetSupportedTargetsForTest(0);
        ASSERT_EQ(vector->getAllocatedSize(), plain.getAllocatedSize());
        ASSERT_EQ(std::memcmp(vector->getData(), plain.getData(), plain.getAllocatedSize()), 0)
            << operation.name << ", round " << round;
    }
    KSBitmapMemory::setKeptLimit(limit);
}

}  // namespace
