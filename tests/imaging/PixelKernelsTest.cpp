// Every vector kernel against its plain twin: the same bytes, on every target that this machine offers.
#include <kestrel/imaging/detail/AlphaKernels.h>
#include <kestrel/imaging/detail/ByteKernels.h>
#include <kestrel/imaging/detail/DepthKernels.h>
#include <kestrel/imaging/detail/PixelNumbers.h>
#include <kestrel/imaging/detail/YUVKernels.h>

#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace kestrel::detail;
using Bytes = std::vector<std::uint8_t>;

/// One kernel and its twin, on bytes: run(to, from, n) turns n items. Kernels in place ignore from.
struct Kernel {
    const char* name;
    std::size_t toItem, fromItem;  // bytes an item
    std::size_t alignment;         // of a component
    std::function<void(std::uint8_t*, const std::uint8_t*, std::size_t)> run, reference;
};

template <typename Component>
Component* as(std::uint8_t* bytes) {
    return reinterpret_cast<Component*>(bytes);
}
template <typename Component>
const Component* as(const std::uint8_t* bytes) {
    return reinterpret_cast<const Component*>(bytes);
}

// A row: the call with both namespaces, on `to`, `from`, `n`.
#define ROW(name, toItem, fromItem, alignment, call)                                         \
    Kernel {                                                                                 \
        name, toItem, fromItem, alignment,                                                   \
            [](std::uint8_t* to, [[maybe_unused]] const std::uint8_t* from, std::size_t n) { \
                using namespace kestrel::detail;                                             \
                kestrel::detail::call;                                                       \
            },                                                                               \
            [](std::uint8_t* to, [[maybe_unused]] const std::uint8_t* from, std::size_t n) { \
                kestrel::detail::reference::call;                                            \
            }                                                                                \
    }
#define DEPTH_ROW(To, From)                                                                                \
    ROW(#From " to " #To, sizeof(To), sizeof(From), sizeof(To) > sizeof(From) ? sizeof(To) : sizeof(From), \
        convertDepth(as<To>(to), as<From>(from), n))
#define ARGB_ROW(From) \
    ROW(#From " to ARGB", 4, 4 * sizeof(From), sizeof(From), convertToARGB(to, as<From>(from), n))

using u8 = std::uint8_t;
using u16 = std::uint16_t;
using u32 = std::uint32_t;
using u64 = std::uint64_t;

constexpr Matte black{0, 0, 0}, grey{0.25f, 0.5f, 0.75f}, wild{2, -1, std::numeric_limits<float>::infinity()};
constexpr Matte noNumber{std::numeric_limits<float>::quiet_NaN(), 1, 0};
constexpr BytePattern rotated = componentOrder<u8, 4>({1, 2, 3, 0});
constexpr BytePattern keep = complement(componentBytes<u16>(4, 3, 0xFFFF));

const std::vector<Kernel>& kernels() {
    static const std::vector<Kernel> all = {
        ROW("shuffle 4", 4, 4, 1, shuffleBytes(to, from, 4 * n, rotated)),
        ROW("shuffle 8", 8, 8, 1, shuffleBytes(to, from, 8 * n, (componentOrder<u16, 4>({3, 0, 1, 2})))),
        ROW("shuffle 16", 16, 16, 1,
            shuffleBytes(to, from, 16 * n, (componentOrder<float, 4>({3, 3, 3, 3})))),
        ROW("shuffle in place", 4, 0, 1, shuffleBytes(to, to, 4 * n, rotated)),
        ROW("mask 8", 8, 0, 1, maskBytes(to, 8 * n, keep, (componentBytes<u16>(4, 3, 0x1234)))),
        ROW("mask 4", 4, 0, 1, maskBytes(to, 4 * n, keep, (componentBytes<u8>(4, 0, 0xFF)))),
        ROW("halve 4", 4, 8, 4, halvePixels(as<u32>(to), as<u32>(from), n)),
        ROW("halve 8", 8, 16, 8, halvePixels(as<u64>(to), as<u64>(from), n)),
        ROW("double 4", 4, 4, 4, doublePixels(as<u32>(to), as<u32>(from), n)),
        ROW("double 8", 8, 8, 8, doublePixels(as<u64>(to), as<u64>(from), n)),
        ROW("4:2:2 to ARGB", 4, 4, 1, convert422ToARGB(to, from, n)),
        ROW("ARGB to 4:2:2", 4, 8, 1, convertARGBTo422(to, from, n)),
        ROW("premultiply RGBA", 4, 0, 1, preMultiply8(to, n, false)),
        ROW("premultiply ARGB", 4, 0, 1, preMultiply8(to, n, true)),
        ROW("unPreMult", 4, 0, 1, unPreMultiplyTruncated8(to, n)),
        ROW("unPreMult copy, black", 4, 4, 1, unPreMultiplyCopy8(to, from, n, black)),
        ROW("unPreMult copy, grey", 4, 4, 1, unPreMultiplyCopy8(to, from, n, grey)),
        ROW("unPreMult copy, wild", 4, 4, 1, unPreMultiplyCopy8(to, from, n, wild)),
        ROW("unpremultiply RGBA 8, black", 4, 0, 1, unpremultiplyRGBA8(to, n, black)),
        ROW("unpremultiply RGBA 8, grey", 4, 0, 1, unpremultiplyRGBA8(to, n, grey)),
        ROW("unpremultiply ARGB 8, black", 4, 0, 1, unpremultiplyARGB8(to, n, black)),
        ROW("unpremultiply ARGB 8, wild", 4, 0, 1, unpremultiplyARGB8(to, n, wild)),
        ROW("unpremultiply ARGB 8, NaN", 4, 0, 1, unpremultiplyARGB8(to, n, noNumber)),
        ROW("unpremultiply 16, black", 8, 0, 2, unpremultiplyRGBA16(as<u16>(to), n, black)),
        ROW("unpremultiply 16, wild", 8, 0, 2, unpremultiplyRGBA16(as<u16>(to), n, wild)),
        ROW("unpremultiply half, black", 8, 0, 2, unpremultiplyRGBAHalf(as<half>(to), n, black)),
        ROW("unpremultiply half, grey", 8, 0, 2, unpremultiplyRGBAHalf(as<half>(to), n, grey)),
        ROW("unpremultiply float, black", 16, 0, 4, unpremultiplyRGBAFloat(as<float>(to), n, black)),
        ROW("unpremultiply float, grey", 16, 0, 4, unpremultiplyRGBAFloat(as<float>(to), n, grey)),
        ROW("invert alpha half", 8, 0, 2, invertAlphaHalf(as<half>(to), n)),
        ROW("invert alpha float", 16, 0, 4, invertAlphaFloat(as<float>(to), n)),
        DEPTH_ROW(u16, u8),
        DEPTH_ROW(u16, u16),
        DEPTH_ROW(u16, half),
        DEPTH_ROW(u16, float),
        DEPTH_ROW(float, u8),
        DEPTH_ROW(float, u16),
        DEPTH_ROW(float, half),
        DEPTH_ROW(float, float),
        ARGB_ROW(u16),
        ARGB_ROW(half),
        ARGB_ROW(float),
    };
    return all;
}

template <typename Visit>
void forEachTarget(Visit visit) {
    for (const auto target : hwy::SupportedAndGeneratedTargets()) {
        hwy::SetSupportedTargetsForTest(target);
        std::printf("target %s\n", hwy::TargetName(target));  // the log says what really ran
        SCOPED_TRACE(hwy::TargetName(target));
        visit();
    }
    hwy::SetSupportedTargetsForTest(0);
}

/// Runs a kernel and its twin on copies of the same buffers and compares the buffers whole, so that a write
/// outside the row shows.
void expectSame(const Kernel& kernel, const Bytes& initial, const Bytes& from, std::size_t shift,
                std::size_t n) {
    Bytes want = initial, got = initial;
    kernel.reference(want.data() + shift, from.data() + shift, n);
    kernel.run(got.data() + shift, from.data() + shift, n);
    const auto [differs, other] = std::mismatch(want.begin(), want.end(), got.begin());
    ASSERT_TRUE(differs == want.end())
        << kernel.name << ", " << n << " items from " << shift << ": byte " << differs - want.begin()
        << " is " << int{*other} << ", must be " << int{*differs};
}

/// Random bytes; every fourth float of float kernels is a number near 0..1, as random bits rarely are.
Bytes randomBytes(std::mt19937& random, std::size_t size, std::size_t alignment) {
    Bytes bytes(size);
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
    if (alignment == 4)
        for (std::size_t i = 0; i + 4 <= size; i += 4) {
            const float number = static_cast<float>(random() % 4096) / 2048.0f - 0.5f;
            if (random() % 4) std::memcpy(&bytes[i], &number, 4);
        }
    return bytes;
}

TEST(PixelKernels, EqualTheirTwinsAtOddWidthsAndStarts) {
    forEachTarget([] {
        std::mt19937 random(1984);
        for (const Kernel& kernel : kernels())
            for (std::size_t n = 0; n <= 67; ++n)
                for (std::size_t shift = 0; shift < 16; shift += kernel.alignment) {
                    const Bytes to = randomBytes(random, n * kernel.toItem + 64, kernel.alignment);
                    const Bytes from = randomBytes(random, (n + 1) * kernel.fromItem + 64, kernel.alignment);
                    ASSERT_NO_FATAL_FAILURE(expectSame(kernel, to, from, shift, n));
                }
    });
}

TEST(PixelKernels, StoreTheSameBytesAroundTheCaches) {
    std::mt19937 random(12);
    forEachTarget([&] {
        for (std::size_t shift = 0; shift < 128; shift += 4)  // aligned starts and others
            for (std::size_t n = 0; n <= 135; n += 5) {
                const Bytes from = randomBytes(random, 4 * n + 8, 1), initial = randomBytes(random, 1024, 1);
                const auto expectEqual = [&](auto kernel) {
                    Bytes cached = initial, streamed = initial;
                    kernel(cached.data() + shift, Stores::cached);
                    kernel(streamed.data() + shift, Stores::streamed);
                    ASSERT_EQ(cached, streamed) << n << " pixels from " << shift;
                };
                expectEqual([&](u8* to, Stores s) { shuffleBytes(to, from.data(), 4 * n, rotated, s); });
                expectEqual([&](u8* to, Stores s) { copyBytes(to, from.data(), 4 * n + 3, s); });
                expectEqual([&](u8* to, Stores s) { convert422ToARGB(to, from.data(), n, s); });
                const auto* const wide = as<u16>(from.data());
                const auto* const floats = as<float>(from.data());
                expectEqual([&](u8* to, Stores s) { convertDepth(as<float>(to), from.data(), n, s); });
                expectEqual([&](u8* to, Stores s) { convertDepth(as<float>(to), wide, n, s); });
                expectEqual(
                    [&](u8* to, Stores s) { convertDepth(as<float>(to), as<half>(from.data()), n, s); });
                expectEqual([&](u8* to, Stores s) { convertDepth(as<float>(to), floats, n, s); });
                expectEqual([&](u8* to, Stores s) { convertDepth(as<u16>(to), from.data(), n, s); });
                expectEqual([&](u8* to, Stores s) { convertDepth(as<u16>(to), wide, n, s); });
                expectEqual([&](u8* to, Stores s) { convertDepth(as<u16>(to), floats, n, s); });
                expectEqual([&](u8* to, Stores s) { convertToARGB(to, wide, n / 2, s); });
                expectEqual([&](u8* to, Stores s) { convertToARGB(to, floats, n / 4, s); });
            }
    });
}

TEST(PixelKernels, SamplesAtEveryScaleWithoutReadingPastTheRow) {
    std::mt19937 random(3);
    forEachTarget([&] {
        for (std::size_t source = 1; source <= 70; source += 3)
            for (std::size_t count = 0; count <= 90; ++count) {
                std::vector<std::uint32_t> row(source), columns(count), got(count + 1), want(count + 1);
                for (auto& pixel : row) pixel = static_cast<std::uint32_t>(random());
                for (std::size_t x = 0; x < count; ++x)
                    columns[x] = static_cast<std::uint32_t>(x * source / count);
                samplePixels(got.data(), row.data(), source, columns.data(), count);
                reference::samplePixels(want.data(), row.data(), source, columns.data(), count);
                ASSERT_EQ(got, want) << source << " to " << count;
            }
    });
}

TEST(PixelKernels, EqualTheirTwinsForAllPairsOfColourAndAlpha) {
    Bytes pixels;  // every byte of a pixel with every other: whichever is alpha meets all colours
    for (unsigned a = 0; a < 256; ++a)
        for (unsigned c = 0; c < 256; ++c)
            for (const unsigned component : {a, c, c, 255 - c, c, c, 255 - c, a})
                pixels.push_back(static_cast<std::uint8_t>(component));
    for (unsigned i = 0; i < 1024; ++i)  // and runs of opaque and of transparent pixels
        pixels.push_back(i / 4 % 64 == 1 ? 128 : i / 512 == 0 ? 255 : 0);
    for (unsigned i = 0; i < 1024; ++i)
        pixels.push_back(static_cast<std::uint8_t>(i % 4 % 3 ? i : i < 512 ? 255 : 0));
    forEachTarget([&] {
        for (const Kernel& kernel : kernels()) {
            const std::size_t n = pixels.size() / std::max(kernel.toItem, kernel.fromItem);
            if (kernel.alignment == 1 || kernel.fromItem == 1) {
                const Bytes& initial = kernel.fromItem ? Bytes(n * kernel.toItem) : pixels;
                ASSERT_NO_FATAL_FAILURE(expectSame(kernel, initial, pixels, 0, n));
            }
        }
    });
}

TEST(PixelKernels, EqualTheirTwinsForAll16BitValues) {
    std::vector<std::uint16_t> values;  // as colour, and as alpha of a few colours
    for (unsigned v = 0; v < 65536; ++v)
        for (const unsigned component : {v, 0x3800u, v ^ 0x8000u, v})
            values.push_back(static_cast<std::uint16_t>(component));
    Bytes bytes(2 * values.size());
    std::memcpy(bytes.data(), values.data(), bytes.size());
    forEachTarget([&] {
        for (const Kernel& kernel : kernels()) {
            if (kernel.fromItem == 2 || (kernel.fromItem == 8 && kernel.toItem == 4)) {
                const std::size_t n = bytes.size() / kernel.fromItem;
                ASSERT_NO_FATAL_FAILURE(expectSame(kernel, Bytes(bytes.size() * 2), bytes, 0, n));
            }
            if (kernel.alignment == 2 && kernel.toItem == 8) {
                ASSERT_NO_FATAL_FAILURE(expectSame(kernel, bytes, {}, 0, values.size() / 4));
            }
        }
    });
}

/// The floats on both sides of every place where a rounding changes: midpoints of 8-bit and 16-bit values and
/// of halves, the clamps, and what is no number.
TEST(PixelKernels, EqualTheirTwinsAroundEveryRounding) {
    std::vector<float> floats;
    const auto around = [&](double place) {
        float f = static_cast<float>(place);
        for (int i = 0; i < 4; ++i) f = std::nextafterf(f, -std::numeric_limits<float>::infinity());
        for (int i = 0; i < 8; ++i)
            floats.push_back(f), f = std::nextafterf(f, std::numeric_limits<float>::infinity());
    };
    for (unsigned v = 0; v <= 255; ++v) around((v - 0.5) / 255);
    for (unsigned v = 0; v <= 65536; ++v) around((v - 0.5) / 65535);
    for (unsigned v = 0; v < 0x7C00; ++v) {
        half low, high;
        low.setBits(static_cast<std::uint16_t>(v));
        high.setBits(static_cast<std::uint16_t>(v + 1));
        around((static_cast<double>(float(low)) + (v == 0x7BFF ? 65536.0 : float(high))) / 2);
        around(-static_cast<double>(float(low)));
    }
    for (std::uint32_t bits :
         {0u, 0x80000000u, 1u, 0x7F800000u, 0xFF800000u, 0x7FC00001u, 0x7F800001u, 0xFFA00000u})
        floats.insert(floats.end(), 8, std::bit_cast<float>(bits));
    while (floats.size() % 4) floats.push_back(1);
    Bytes bytes(4 * floats.size());
    std::memcpy(bytes.data(), floats.data(), bytes.size());
    Bytes opaque = bytes;  // alpha 1: the colour itself is rounded
    const float one = 1;
    for (std::size_t i = 12; i < opaque.size(); i += 16) std::memcpy(&opaque[i], &one, 4);
    forEachTarget([&] {
        for (const Kernel& kernel : kernels()) {
            if (kernel.alignment == 4 && (kernel.fromItem == 4 || kernel.fromItem == 16)) {
                const std::size_t n = bytes.size() / kernel.fromItem;
                ASSERT_NO_FATAL_FAILURE(expectSame(kernel, Bytes(bytes.size()), bytes, 0, n));
            }
            if (kernel.toItem == 16 && kernel.alignment == 4) {
                ASSERT_NO_FATAL_FAILURE(expectSame(kernel, bytes, {}, 0, floats.size() / 4));
                ASSERT_NO_FATAL_FAILURE(expectSame(kernel, opaque, {}, 0, floats.size() / 4));
            }
        }
    });
}

// ---- The twins themselves, against exact answers.

TEST(PixelReference, PremultipliesExactly) {
    for (int a = 0; a < 256; ++a)
        for (int c = 0; c < 256; ++c) {
            std::uint8_t pixel[4] = {std::uint8_t(a), std::uint8_t(c), 255, 0};
            reference::preMultiply8(pixel, 1, true);
            ASSERT_EQ(pixel[0], a);
            ASSERT_EQ(pixel[1], std::floor(c * a / 255.0)) << c << ' ' << a;
            ASSERT_EQ(pixel[2], a);
        }
}

TEST(PixelReference, DepthsHaveOneRightAnswer) {
    for (unsigned v = 0; v < 65536; ++v) {
        const auto wide = static_cast<std::uint16_t>(v);
        const std::uint16_t pixel[4] = {wide, 0, 257, 65535};
        std::uint8_t narrow, argb[4];
        std::uint16_t back;
        float number;
        reference::convertToARGB(argb, pixel, 1);
        ASSERT_EQ(argb[1], std::lround(v / 257.0)) << v;
        ASSERT_EQ(argb[0], 255);
        ASSERT_EQ(argb[2], 0);
        ASSERT_EQ(argb[3], 1);
        reference::convertDepth(&back, &wide, 1);
        ASSERT_EQ(back, v);
        reference::convertDepth(&number, &wide, 1);
        ASSERT_EQ(number, static_cast<float>(v / 65535.0)) << v;
        if (v > 255) continue;
        narrow = static_cast<std::uint8_t>(v);
        reference::convertDepth(&back, &narrow, 1);
        ASSERT_EQ(back, v * 257);
        ASSERT_EQ(truncated(toNumber(narrow)), v);  // alpha comes back from a truncating store
    }
}

TEST(PixelReference, DividesByAlphaToTheNearest) {
    for (int a = 1; a < 256; ++a)
        for (int c = 0; c <= a; ++c) {
            std::uint8_t pixel[4] = {std::uint8_t(c), 0, 255, std::uint8_t(a)};
            reference::unpremultiplyRGBA8(pixel, 1, black);
            ASSERT_NEAR(pixel[0], c * 255.0 / a, 0.5 + 1e-4) << c << ' ' << a;
            ASSERT_EQ(pixel[1], 0);
            ASSERT_EQ(pixel[2], 255);
        }
}

}  // namespace
