#include <kestrel/imaging/KSBitmapScaling.h>
#include <kestrel/imaging/KSBitmap_t.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <vector>

namespace {

using testing::ElementsAre;

template <typename Component>
Component* components(KSBitmap& bitmap) {
    return reinterpret_cast<Component*>(bitmap.getData());
}

void randomize(KSBitmap& bitmap) {
    std::mt19937 random(11);
    for (unsigned i = 0; i < bitmap.getAllocatedSize(); ++i)
        bitmap.getData()[i] = static_cast<std::uint8_t>(random());
}

struct ScaleRow {
    const char* name;
    unsigned source, destination;
    std::vector<int> columns;
};

TEST(KSBitmapScaling, TakesTheNearestColumnsAndRows) {
    const ScaleRow rows[] = {
        {"Double", 2, 4, {0, 0, 1, 1}}, {"Half", 4, 2, {0, 2}},
        {"ThreeToTwo", 3, 2, {0, 1}},   {"TwoToThree", 2, 3, {0, 0, 1}},
        {"Same", 3, 3, {0, 1, 2}},      {"FiveToTwelve", 5, 12, {0, 0, 0, 1, 1, 2, 2, 2, 3, 3, 4, 4}},
    };
    for (const ScaleRow& row : rows) {
        KSBitmapLuminance16 across(row.source, 1), along(1, row.source);
        for (unsigned i = 0; i < row.source; ++i)
            components<std::uint16_t>(across)[i] = components<std::uint16_t>(along)[i] =
                static_cast<std::uint16_t>(i);
        KSBitmapLuminance16 columns(row.destination, 1), lines(1, row.destination);
        columns.copyWithScaling(across);
        lines.copyWithScaling(along);
        const auto* x = components<std::uint16_t>(columns);
        const auto* y = components<std::uint16_t>(lines);
        EXPECT_EQ(std::vector<int>(x, x + row.destination), row.columns) << row.name;
        EXPECT_EQ(std::vector<int>(y, y + row.destination), row.columns) << row.name;
    }
}

/// The rule, pixel by pixel.
std::vector<std::uint8_t> scaledPlainly(const KSBitmap& source, unsigned width, unsigned height,
                                        std::size_t pixel) {
    std::vector<std::uint8_t> out;
    const double xScale = static_cast<double>(source.getWidth()) / width;
    const double yScale = static_cast<double>(source.getHeight()) / height;
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x) {
            const auto sx = static_cast<std::size_t>(std::floor(x * xScale + 1e-7));
            const auto sy = static_cast<std::size_t>(std::floor(y * yScale + 1e-7));
            const std::uint8_t* from = source.getData() + (sy * source.getWidth() + sx) * pixel;
            out.insert(out.end(), from, from + pixel);
        }
    return out;
}

TEST(KSBitmapScaling, MovesPixelsOfEveryFormatWhole) {
    const unsigned sizes[][2] = {{1, 1}, {7, 5}, {14, 10}, {13, 9}, {26, 3}, {3, 31}, {28, 20}, {100, 1}};
    for (unsigned format = 0; format <= 9; ++format) {
        if (format == 3) continue;
        const std::unique_ptr<KSBitmap> source(KSCreateBitmap(14, 10, format));
        randomize(*source);
        KSBitmapARGB8 argb(14, 10);
        argb.copy(*source);  // what a 4:2:2 source is turned into first
        const KSBitmap& read = format == 2 ? static_cast<const KSBitmap&>(argb) : *source;
        for (const auto& [width, height] : sizes) {
            const std::unique_ptr<KSBitmap> scaled(KSCreateBitmap(width, height, format));
            scaled->copyWithScaling(*source);
            const std::size_t pixel = scaled->getSize() / (width * height);
            const auto want = scaledPlainly(read, width, height, pixel);
            EXPECT_EQ(std::memcmp(scaled->getData(), want.data(), want.size()), 0)
                << format << ' ' << width << 'x' << height;
        }
    }
}

TEST(KSBitmapScaling, RoundingErrorsDoNotMoveTheColumn) {
    struct {
        unsigned source, destination, column, want;
    } const rows[] = {{30, 22, 11, 15}, {30, 26, 13, 15}};  // 11 * (30 / 22.0) lies just below 15
    for (const auto& row : rows) {
        KSBitmapLuminance16 source(row.source, row.source), target(row.destination, row.destination);
        for (unsigned i = 0; i < row.source * row.source; ++i)
            components<std::uint16_t>(source)[i] = static_cast<std::uint16_t>(i);
        target.copyWithScaling(source);
        EXPECT_EQ(components<std::uint16_t>(target)[row.column], row.want);
        EXPECT_EQ(components<std::uint16_t>(target)[row.column * row.destination], row.want * row.source);
    }
}

TEST(KSBitmapScaling, FormatsWithoutAClassMoveFourBytesAPixel) {
    KSBitmapRGBA8 source(2, 1);
    randomize(source);
    for (const unsigned format : {3u, 10u}) {
        KSBitmap target(4, 1, 8, 4, format, 0);
        target.copyWithScaling(source);
        for (const std::size_t x : {0, 1, 2, 3})
            EXPECT_EQ(std::memcmp(target.getData() + 4 * x, source.getData() + 4 * (x / 2), 4), 0) << format;
        EXPECT_EQ(target.getData()[16], 0);
    }
}

TEST(KSBitmapScaling, ReadsTheSourceAsItsOwnLayoutAndNotPastItsRegion) {
    KSBitmapLuminance16 source(4, 4);  // 32 bytes of 4096, read as 16 pixels of 16 bytes
    randomize(source);
    KSBitmapRGBAFloat scaled(4, 4);
    scaled.copyWithScaling(source);
    EXPECT_EQ(std::memcmp(scaled.getData(), source.getData(), 256), 0);
    KSBitmapLuminance16 tall(1, 3000);  // 6000 bytes in 8192: 512 pixels of 16 bytes
    randomize(tall);
    KSBitmapRGBAFloat wide(1, 3000);
    wide.copyWithScaling(tall);
    EXPECT_EQ(std::memcmp(wide.getData(), tall.getData(), 8192), 0);
    EXPECT_EQ(wide.getData()[8192], 0) << "what lies outside is not read";
}

TEST(KSBitmapScaling, EmptyAndHugeScales) {
    KSBitmapRGBA8 source(2, 2), none(0, 5), wide(30000000, 1);
    randomize(source);
    none.copyWithScaling(source);
    KSBitmapRGBA8 target(2, 2);
    target.copyWithScaling(none);
    EXPECT_EQ(target.getData()[0], 0);
    wide.copyWithScaling(source);
    EXPECT_EQ(std::memcmp(wide.getData() + 4 * 29999999, source.getData() + 4, 4), 0)
        << "the last column, clamped";
    source.copyWithScaling(source);
}

// ---- Depths

void setPixel(KSBitmap& bitmap, const std::vector<float>& rgba) {
    for (std::size_t i = 0; i < 4; ++i) switch (bitmap.getPixelFormat()) {
            case 0:
                bitmap.getData()[i] = static_cast<std::uint8_t>(rgba[i] * 255);
                break;
            case 1:
                bitmap.getData()[(i + 1) % 4] = static_cast<std::uint8_t>(rgba[i] * 255);
                break;
            case 4:
                components<std::uint16_t>(bitmap)[i] = static_cast<std::uint16_t>(rgba[i] * 65535);
                break;
            case 8:
                components<half>(bitmap)[i] = half(rgba[i]);
                break;
            default:
                components<float>(bitmap)[i] = rgba[i];
        }
}

TEST(KSBitmapScaling, ConvertsBetweenAllDepthsInTheRightOrder) {
    for (const unsigned format : {0u, 1u, 4u, 8u, 9u}) {
        SCOPED_TRACE(format);
        const std::unique_ptr<KSBitmap> source(KSCreateBitmap(1, 1, format));
        setPixel(*source, {0, 0.2f, 0.6f, 1});  // multiples of 1/255 and of 1/65535
        KSBitmapRGBAFloat real(37, 2);
        real.copyWithScalingAndDepthConversion(*source);
        KSBitmapRGBA16 wide(37, 2);
        wide.copyWithScalingAndDepthConversion(*source);
        KSBitmapARGB8 narrow(37, 2);
        narrow.copyWithScalingAndDepthConversion(*source);
        for (const std::size_t pixel : {0, 36, 73}) {
            const float* f = components<float>(real) + 4 * pixel;
            EXPECT_THAT(std::vector<float>(f, f + 4),
                        testing::Pointwise(testing::FloatNear(2e-4f), {0.0f, 0.2f, 0.6f, 1.0f}));
            const std::uint16_t* w = components<std::uint16_t>(wide) + 4 * pixel;
            EXPECT_EQ(w[0], 0);
            EXPECT_NEAR(w[1], 13107, format == 8 ? 8 : 0);
            EXPECT_NEAR(w[2], 39321, format == 8 ? 16 : 0);
            EXPECT_EQ(w[3], 65535);
            const std::uint8_t* n = narrow.getData() + 4 * pixel;
            EXPECT_THAT(std::vector<int>(n, n + 4), ElementsAre(255, 0, 51, 153));
        }
    }
}

TEST(KSBitmapScaling, FloatsAreClampedInIntegersOnly) {
    KSBitmapRGBAFloat source(1, 1), same(1, 1);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    setPixel(source, {1.5f, -0.2f, nan, std::numeric_limits<float>::infinity()});
    KSBitmapRGBA16 wide(1, 1);
    wide.copyWithScalingAndDepthConversion(source);
    const std::uint16_t* w = components<std::uint16_t>(wide);
    EXPECT_THAT(std::vector<int>(w, w + 4), ElementsAre(65535, 0, 0, 65535));
    KSBitmapARGB8 narrow(1, 1);
    narrow.copyWithScalingAndDepthConversion(source);
    EXPECT_THAT(std::vector<int>(narrow.getData(), narrow.getData() + 4), ElementsAre(255, 255, 0, 0));
    same.copyWithScalingAndDepthConversion(source);
    EXPECT_EQ(std::memcmp(same.getData(), source.getData(), 16), 0);
}

TEST(KSBitmapScaling, OtherDestinationsStayAndOtherSourcesReadAsRGBA8) {
    KSBitmapARGB8 source(2, 2);
    randomize(source);
    for (const unsigned format : {0u, 2u, 5u, 6u, 7u, 8u}) {
        const std::unique_ptr<KSBitmap> target(KSCreateBitmap(2, 2, format));
        target->copyWithScalingAndDepthConversion(source);
        EXPECT_EQ(target->getData()[0] | target->getData()[1] | target->getData()[2] | target->getData()[3],
                  0)
            << format;
    }
    KSBitmapLuminanceAlpha16 pairs(2, 2);
    randomize(pairs);
    KSBitmapRGBA8 bytes(2, 2);
    std::memcpy(bytes.getData(), pairs.getData(), 16);
    KSBitmapRGBAFloat fromPairs(2, 2), fromBytes(2, 2);
    fromPairs.copyWithScalingAndDepthConversion(pairs);
    scaleAndDepthConvertBitmaptoRGBAFloat<KSBitmapRGBA8, KSBitmapRGBA8::Pixel>(&bytes, &fromBytes);
    EXPECT_EQ(std::memcmp(fromPairs.getData(), fromBytes.getData(), 64), 0);
}

TEST(KSBitmapScaling, A422SourceGoesThroughArgb) {
    KSBitmapYUV8 source(10, 4);
    randomize(source);
    KSBitmapARGB8 argb(10, 4), want(23, 7), got(23, 7);
    argb.copy(source);
    scaleBitmap<KSBitmapARGB8, KSBitmapARGB8::Pixel>(&want, &argb);
    got.copyWithScaling(source);
    EXPECT_EQ(std::memcmp(got.getData(), want.getData(), want.getSize()), 0);
    got.copyWithScalingAndDepthConversion(source);
    EXPECT_EQ(std::memcmp(got.getData(), want.getData(), want.getSize()), 0);
}

}  // namespace
