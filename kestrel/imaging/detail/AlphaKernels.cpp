// Colours multiplied by alpha and divided by it (see AlphaKernels.h).
#include <kestrel/imaging/detail/AlphaKernels.h>

#include <kestrel/imaging/detail/PixelNumbers.h>

#include <cmath>
#include <type_traits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kestrel/imaging/detail/AlphaKernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>
#include <kestrel/imaging/detail/VectorNumbers-inl.h>

HWY_BEFORE_NAMESPACE();
namespace kestrel::detail::HWY_NAMESPACE {
#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128
using namespace reference;  // emulated vectors would only be slower
#else
namespace hn = hwy::HWY_NAMESPACE;

// Lambdas capture vectors by reference: those of SVE have no size, and cannot be members.

HWY_INLINE bool isBlack(const Matte& matte) { return matte.red == 0 && matte.green == 0 && matte.blue == 0; }

// ---- Premultiplication

/// floor(c * a / 255) = (v + (v >> 8) + 1) >> 8 with v = c * a (Blinn, "Three Wrongs Make a Right", 1995,
/// for the rounding down). In 16-bit lanes, v + (v >> 8) is the high half of (c << 8) * (a * 257).
/// Alpha is multiplied by 255 instead of itself, which keeps it.
template <bool alphaFirst>
HWY_INLINE void PreMultiply(std::uint8_t* pixels, std::size_t count) {
    const hn::ScalableTag<std::uint8_t> d8;
    const hn::Repartition<std::uint16_t, decltype(d8)> d16;
    constexpr std::uint8_t a = alphaFirst ? 0 : 3;
    alignas(16) constexpr std::uint8_t spreadAlpha[16] = {
        a, a, a, a, a + 4, a + 4, a + 4, a + 4, a + 8, a + 8, a + 8, a + 8, a + 12, a + 12, a + 12, a + 12};
    // The lanes that hold alpha: the first of a pixel's two with alpha in its low byte, or the second in its
    // high.
    alignas(16) constexpr std::uint16_t alphaLanes[8] = {
        alphaFirst ? 0xFFFF : 0, alphaFirst ? 0 : 0xFFFF, alphaFirst ? 0xFFFF : 0, alphaFirst ? 0 : 0xFFFF,
        alphaFirst ? 0xFFFF : 0, alphaFirst ? 0 : 0xFFFF, alphaFirst ? 0xFFFF : 0, alphaFirst ? 0 : 0xFFFF};
    const auto spread = hn::LoadDup128(d8, spreadAlpha);
    const auto keep = hn::LoadDup128(d16, alphaLanes);
    const auto high = hn::Set(d16, 0xFF00), one = hn::Set(d16, 1);
    const std::size_t lanes = hn::Lanes(d8) / 4;
    std::size_t x = 0;
    for (; x + lanes <= count; x += lanes) {
        const auto bytes = hn::LoadU(d8, pixels + 4 * x);
        const auto pixel = hn::BitCast(d16, bytes);
        const auto alpha = hn::BitCast(d16, hn::TableLookupBytes(bytes, spread));
        const auto alphaOrOne = hn::Or(alpha, keep);
        const auto even = hn::MulHigh(hn::ShiftLeft<8>(pixel), alphaFirst ? alphaOrOne : alpha);
        const auto odd = hn::MulHigh(hn::And(pixel, high), alphaFirst ? alpha : alphaOrOne);
        const auto result = hn::Or(hn::ShiftRight<8>(hn::Add(even, one)), hn::And(hn::Add(odd, one), high));
        hn::StoreU(hn::BitCast(d8, result), d8, pixels + 4 * x);
    }
    reference::preMultiply8(pixels + 4 * x, count - x, alphaFirst);
}

void preMultiply8(std::uint8_t* pixels, std::size_t count, bool alphaFirst) {
    if (alphaFirst)
        PreMultiply<true>(pixels, count);
    else
        PreMultiply<false>(pixels, count);
}

// ---- Division by alpha, 8 bits: a 32-bit lane is a pixel.

/// Where a component stands in the 32 bits of a pixel.
template <bool alphaFirst>
constexpr int colorShift(int color) {
    return 8 * (color + (alphaFirst ? 1 : 0));
}

template <int shift, class DF, class VU>
HWY_INLINE hn::Vec<DF> Component8(DF df, VU pixel) {
    const hn::RebindToSigned<DF> di;
    const hn::RebindToUnsigned<DF> du;
    return Unit8(
        df, hn::ConvertTo(df, hn::BitCast(di, hn::And(hn::ShiftRight<shift>(pixel), hn::Set(du, 0xFF)))));
}

/// Runs divide over all pixels: divide(c, a, inverse) gives the integer of a colour less its matte.
/// Pixels of alpha 0 take the bits of transparent and keep alpha.
template <bool alphaFirst, class Divide>
HWY_INLINE std::size_t DivideMatte8(std::uint8_t* to, const std::uint8_t* from, std::size_t count,
                                    Matte matte, const std::uint8_t (&transparent)[3], Divide divide) {
    const hn::ScalableTag<float> df;
    const hn::RebindToUnsigned<decltype(df)> du;
    const std::size_t lanes = hn::Lanes(df);
    const auto alphaMask = hn::Set(du, alphaFirst ? 0xFFu : 0xFF000000u);
    const auto red = hn::Set(df, matte.red), green = hn::Set(df, matte.green), blue = hn::Set(df, matte.blue);
    const auto one = hn::Set(df, 1.0f);
    const bool isFinite = std::isfinite(matte.red) && std::isfinite(matte.green) && std::isfinite(matte.blue);
    std::uint32_t clear = 0;
    for (int i = 0; i < 3; ++i) clear |= std::uint32_t{transparent[i]} << colorShift<alphaFirst>(i);
    const auto clearColor = hn::Set(du, clear);
    std::size_t x = 0;
    for (; x + lanes <= count; x += lanes) {
        const auto pixel = hn::LoadU(du, reinterpret_cast<const std::uint32_t*>(from + 4 * x));
        const auto alphaBits = hn::And(pixel, alphaMask);
        if (isFinite && hn::AllTrue(du, hn::Eq(alphaBits, alphaMask))) {  // opaque: each colour comes back
            if (to != from) hn::StoreU(pixel, du, reinterpret_cast<std::uint32_t*>(to + 4 * x));
            continue;
        }
        const auto a = Component8 < alphaFirst ? 0 : 24 > (df, pixel);
        const auto inverse = hn::Div(one, a);
        const auto color = [&](auto c, auto m) HWY_ATTR {
            return hn::BitCast(du, divide(df, hn::Sub(c, hn::Mul(m, hn::Sub(one, a))), a, inverse));
        };
        const auto r = color(Component8<colorShift<alphaFirst>(0)>(df, pixel), red);
        const auto g = color(Component8<colorShift<alphaFirst>(1)>(df, pixel), green);
        const auto b = color(Component8<colorShift<alphaFirst>(2)>(df, pixel), blue);
        const auto colors = hn::Or(
            hn::ShiftLeft<colorShift<alphaFirst>(0)>(r),
            hn::Or(hn::ShiftLeft<colorShift<alphaFirst>(1)>(g), hn::ShiftLeft<colorShift<alphaFirst>(2)>(b)));
        const auto isClear = hn::Eq(alphaBits, hn::Zero(du));
        hn::StoreU(hn::Or(alphaBits, hn::IfThenElse(isClear, clearColor, colors)), du,
                   reinterpret_cast<std::uint32_t*>(to + 4 * x));
    }
    return x;
}

// Without a matte there is nothing to take away, and nothing is negative or near the two floats that need
// more care. The scale of the numbers falls out of the quotient.

/// Byte k of each pixel where it stands, which is 256^k times its value; the last byte moves to the front.
template <int k, class V>
HWY_INLINE V OnlyByte(V pixel) {
    if constexpr (k == 3) return hn::ShiftRight<24>(pixel);
    return hn::And(pixel, hn::Set(hn::DFromV<V>(), 0xFFu << 8 * k));
}
template <int k>
constexpr float byteScale = k < 3 ? static_cast<float>(1 << 8 * k) : 1.0f;

/// The bytes of pixels from integers: lane i of component k goes to byte k of pixel i, limited to 255.
template <class DI, class V>
HWY_INLINE hn::Vec<hn::RebindToUnsigned<DI>> PackPixels(DI di, V c0, V c1, V c2, V c3) {
    const hn::RebindToUnsigned<DI> du;
#if HWY_TARGET == HWY_AVX2
    (void)di;
    const auto low = _mm256_packs_epi32(c0.raw, c1.raw), high = _mm256_packs_epi32(c2.raw, c3.raw);
    const hn::Repartition<std::uint8_t, DI> d8;
    const hn::Vec<decltype(d8)> planes{_mm256_packus_epi16(low, high)};  // four times four bytes a block
    alignas(16) static constexpr std::uint8_t order[16] = {0, 4, 8,  12, 1, 5, 9,  13,
                                                           2, 6, 10, 14, 3, 7, 11, 15};
    return hn::BitCast(du, hn::TableLookupBytes(planes, hn::LoadDup128(d8, order)));
#else
    const auto most = hn::Set(di, 255);
    const auto low = hn::Or(hn::Min(c0, most), hn::ShiftLeft<8>(hn::Min(c1, most)));
    const auto high = hn::Or(hn::ShiftLeft<16>(hn::Min(c2, most)), hn::ShiftLeft<24>(hn::Min(c3, most)));
    return hn::BitCast(du, hn::Or(low, high));
#endif
}

enum class Transparent { cleared, kept };

/// Pixels of alpha 0 are cleared or kept; the others get the integers of quotient * 255 + bias as colours,
/// with quotient(c, part(a)) of the numbers of colour and alpha. Four vectors at a time start their parts
/// together, as a division takes long to answer.
template <bool alphaFirst, Transparent transparent, class Part, class Quotient>
HWY_INLINE std::size_t DivideBlack8(std::uint8_t* to, const std::uint8_t* from, std::size_t count, float bias,
                                    Part part, Quotient quotient) {
    const hn::ScalableTag<float> df;
    const hn::RebindToSigned<decltype(df)> di;
    const hn::RebindToUnsigned<decltype(df)> du;
    const std::size_t lanes = hn::Lanes(df);
    constexpr int alpha = alphaFirst ? 0 : 3, first = alphaFirst ? 1 : 0;
    const auto opaque = hn::Set(du, alphaFirst ? 0xFFu : 0xFF000000u);
    const auto load = [=](std::size_t x) HWY_ATTR {
        return hn::LoadU(du, reinterpret_cast<const std::uint32_t*>(from + 4 * x));
    };
    const auto store = [=](auto pixel, std::size_t x)
                           HWY_ATTR { hn::StoreU(pixel, du, reinterpret_cast<std::uint32_t*>(to + 4 * x)); };
    const auto number = [=](auto bytes)
                            HWY_ATTR { return ScaledUnit8(df, hn::ConvertTo(df, hn::BitCast(di, bytes))); };
    const auto partOf = [=](auto pixel) HWY_ATTR { return part(df, number(OnlyByte<alpha>(pixel))); };
    const auto divided = [=](auto pixel, auto p) HWY_ATTR {
        const auto color = [&](auto byte) HWY_ATTR {
            constexpr int k = decltype(byte)::value;
            const auto q = quotient(number(OnlyByte<k>(pixel)), p);
            // Fused or not, all pairs of colour and alpha come out alike.
            return CutInt(df, hn::MulAdd(q, hn::Set(df, 255 / byteScale<k>), hn::Set(df, bias)));
        };
        const auto a = OnlyByte<alpha>(pixel);
        const auto r = color(std::integral_constant<int, first>());
        const auto g = color(std::integral_constant<int, first + 1>());
        const auto b = color(std::integral_constant<int, first + 2>());
        const auto ai = hn::BitCast(di, a);
        const auto result = alphaFirst ? PackPixels(di, ai, r, g, b) : PackPixels(di, r, g, b, ai);
        if constexpr (transparent == Transparent::kept)
            return hn::IfThenElse(hn::Eq(a, hn::Zero(du)), pixel, result);
#if HWY_TARGET == HWY_AVX2
        return result;  // integers of infinity and NaN are the lowest, which packing clears
#else
        return hn::IfThenZeroElse(hn::Eq(a, hn::Zero(du)), result);
#endif
    };
    std::size_t x = 0;
    for (; x + 4 * lanes <= count; x += 4 * lanes) {
        const auto p0 = load(x), p1 = load(x + lanes), p2 = load(x + 2 * lanes), p3 = load(x + 3 * lanes);
        if (to == from && from[4 * x + alpha] == 255) {
            const auto all = hn::And(hn::And(p0, p1), hn::And(p2, p3));
            if (hn::AllTrue(du, hn::Eq(hn::And(all, opaque), opaque))) continue;  // each colour comes back
        }
        const auto a0 = partOf(p0), a1 = partOf(p1), a2 = partOf(p2), a3 = partOf(p3);
        store(divided(p0, a0), x);
        store(divided(p1, a1), x + lanes);
        store(divided(p2, a2), x + 2 * lanes);
        store(divided(p3, a3), x + 3 * lanes);
    }
    for (; x + lanes <= count; x += lanes) {
        const auto pixel = load(x);
        store(divided(pixel, partOf(pixel)), x);
    }
    return x;
}

/// Multiplication by the inverse of alpha.
template <bool alphaFirst, Transparent transparent>
HWY_INLINE std::size_t MultiplyByInverse8(std::uint8_t* pixels, std::size_t count, float bias) {
    return DivideBlack8<alphaFirst, transparent>(
        pixels, pixels, count, bias, [](auto df, auto a) HWY_ATTR { return hn::Div(hn::Set(df, 1.0f), a); },
        [](auto c, auto inverse) HWY_ATTR { return hn::Mul(c, inverse); });
}

void unPreMultiplyTruncated8(std::uint8_t* pixels, std::size_t count) {
    const std::size_t done = MultiplyByInverse8<true, Transparent::kept>(pixels, count, 0);
    reference::unPreMultiplyTruncated8(pixels + 4 * done, count - done);
}

HWY_INLINE std::size_t UnPreMultiplyCopy8(std::uint8_t* to, const std::uint8_t* from, std::size_t count,
                                          Matte matte) {
    if (isBlack(matte))
        return DivideBlack8<true, Transparent::cleared>(
            to, from, count, 0, [](auto, auto a) HWY_ATTR { return a; },
            [](auto c, auto a) HWY_ATTR { return hn::Div(c, a); });
    const std::uint8_t clear[3] = {truncated(matte.red), truncated(matte.green), truncated(matte.blue)};
    return DivideMatte8<true>(to, from, count, matte, clear, [](auto df, auto c, auto a, auto) HWY_ATTR {
        const auto x = hn::Div(c, a);
        const auto positive = hn::IfThenElseZero(hn::Gt(x, hn::Zero(df)), x);  // NaN too becomes 0
        return TruncatedInt(df, hn::Min(positive, hn::Set(df, 1.0f)));
    });
}

void unPreMultiplyCopy8(std::uint8_t* to, const std::uint8_t* from, std::size_t count, Matte matte) {
    const std::size_t done = UnPreMultiplyCopy8(to, from, count, matte);
    reference::unPreMultiplyCopy8(to + 4 * done, from + 4 * done, count - done, matte);
}

template <bool alphaFirst>
HWY_INLINE std::size_t Unpremultiply8(std::uint8_t* pixels, std::size_t count, Matte matte) {
    if (isBlack(matte)) return MultiplyByInverse8<alphaFirst, Transparent::cleared>(pixels, count, 0.5f);
    std::uint8_t clear[3];
    store(clear[0], matte.red);
    store(clear[1], matte.green);
    store(clear[2], matte.blue);
    return DivideMatte8<alphaFirst>(
        pixels, pixels, count, matte, clear, [](auto df, auto c, auto, auto inverse) HWY_ATTR {
            return RoundedInt(df, hn::Mul(hn::Mul(c, inverse), hn::Set(df, 255.0f)), 255.0f);
        });
}

void unpremultiplyRGBA8(std::uint8_t* pixels, std::size_t count, Matte matte) {
    const std::size_t done = Unpremultiply8<false>(pixels, count, matte);
    reference::unpremultiplyRGBA8(pixels + 4 * done, count - done, matte);
}

void unpremultiplyARGB8(std::uint8_t* pixels, std::size_t count, Matte matte) {
    const std::size_t done = Unpremultiply8<true>(pixels, count, matte);
    reference::unpremultiplyARGB8(pixels + 4 * done, count - done, matte);
}

// ---- 16 bits without a matte: a 32-bit lane is red and green, or blue and alpha.

HWY_INLINE std::size_t DivideBlack16(std::uint16_t* pixels, std::size_t count) {
    const hn::ScalableTag<float> df;
    const hn::RebindToSigned<decltype(df)> di;
    const hn::RebindToUnsigned<decltype(df)> du;
    const hn::Repartition<std::uint16_t, decltype(df)> d16;
    const std::size_t lanes = hn::Lanes(d16);
    alignas(16) static constexpr std::uint16_t alphas[8] = {0, 0, 0, 0xFFFF, 0, 0, 0, 0xFFFF};
    const auto isAlpha = hn::MaskFromVec(hn::LoadDup128(d16, alphas));
    const auto one = hn::Set(df, 1.0f), half = hn::Set(df, 0.5f), full = hn::Set(df, 65535.0f);
    std::size_t i = 0;
    for (; i + lanes <= 4 * count; i += lanes) {
        const auto pixel = hn::LoadU(d16, pixels + i);
        const auto number = [=](auto bits) HWY_ATTR {
            return ScaledUnit16(df, hn::ConvertTo(df, hn::BitCast(di, bits)));
        };
        const auto redBlue = number(hn::And(hn::BitCast(du, pixel), hn::Set(du, 0xFFFF)));
        const auto greenAlpha = number(hn::ShiftRight<16>(hn::BitCast(du, pixel)));
        const auto a = hn::DupOdd(greenAlpha);
        const auto inverse = hn::IfThenElseZero(hn::Gt(a, hn::Zero(df)), hn::Div(one, a));
        const auto color = [&](auto c) HWY_ATTR {
            const auto product = hn::Min(hn::Mul(hn::Mul(c, inverse), full), full);
            return hn::BitCast(du, CutInt(df, hn::Add(product, half)));  // 0, or 1 and more: no care needed
        };
        const auto result = hn::Or(color(redBlue), hn::ShiftLeft<16>(color(greenAlpha)));
        hn::StoreU(hn::IfThenElse(isAlpha, pixel, hn::BitCast(d16, result)), d16, pixels + i);
    }
    return i / 4;
}

// ---- Wider components: four lanes are a pixel, alpha last.

alignas(16) constexpr std::uint32_t alphaLane[4] = {0, 0, 0, 0xFFFFFFFFu};

/// Components whose bits pass through a float and back unchanged need no care for alpha; half NaNs and float
/// NaNs do, as an operation quiets them. So alpha is put back as it was read.
template <typename Component>
HWY_INLINE std::size_t UnpremultiplyWide(Component* pixels, std::size_t count, Matte matte) {
    if constexpr (std::is_same_v<Component, std::uint16_t>)
        if (isBlack(matte)) return DivideBlack16(pixels, count);
    const hn::ScalableTag<float> df;
    const hn::RebindToUnsigned<decltype(df)> du;
    const std::size_t lanes = hn::Lanes(df);
    alignas(16) const float mattes[4] = {matte.red, matte.green, matte.blue, 0};
    const auto m = hn::LoadDup128(df, mattes);
    const auto one = hn::Set(df, 1.0f);
    const auto isAlpha = hn::RebindMask(df, hn::MaskFromVec(hn::LoadDup128(du, alphaLane)));
    const auto divided = [&](auto c) HWY_ATTR {
        const auto a = hn::Broadcast<3>(c);
        const auto color = hn::Mul(hn::Sub(c, hn::Mul(m, hn::Sub(one, a))), hn::Div(one, a));
        const auto result = hn::IfThenElse(hn::Gt(a, hn::Zero(df)), color, m);
        return hn::IfThenElse(isAlpha, c, result);
    };
    std::size_t i = 0;
#if KESTREL_HALF_INSTRUCTIONS
    if constexpr (std::is_same_v<Component, half>)  // four vectors at a time, until a result is a NaN
        for (; i + 4 * lanes <= 4 * count; i += 4 * lanes) {
            Component* const at = pixels + i;
            const auto r0 = divided(LoadAnyNaN(df, at)), r1 = divided(LoadAnyNaN(df, at + lanes)),
                       r2 = divided(LoadAnyNaN(df, at + 2 * lanes)),
                       r3 = divided(LoadAnyNaN(df, at + 3 * lanes));
            const auto areNumbers =
                hn::And(hn::And(hn::Eq(r0, r0), hn::Eq(r1, r1)), hn::And(hn::Eq(r2, r2), hn::Eq(r3, r3)));
            if (HWY_LIKELY(hn::AllTrue(df, areNumbers))) {
                StoreHalves(df, r0, at);
                StoreHalves(df, r1, at + lanes);
                StoreHalves(df, r2, at + 2 * lanes);
                StoreHalves(df, r3, at + 3 * lanes);
            } else {
                for (std::size_t k = 0; k < 4; ++k)
                    StoreNumbers(df, divided(LoadNumbers(df, at + k * lanes)), at + k * lanes);
            }
        }
#endif
    for (; i + lanes <= 4 * count; i += lanes)
        StoreNumbers(df, divided(LoadNumbers(df, pixels + i)), pixels + i);
    return i / 4;
}

void unpremultiplyRGBA16(std::uint16_t* pixels, std::size_t count, Matte matte) {
    const std::size_t done = UnpremultiplyWide(pixels, count, matte);
    reference::unpremultiplyRGBA16(pixels + 4 * done, count - done, matte);
}

void unpremultiplyRGBAHalf(half* pixels, std::size_t count, Matte matte) {
    const std::size_t done = UnpremultiplyWide(pixels, count, matte);
    reference::unpremultiplyRGBAHalf(pixels + 4 * done, count - done, matte);
}

void unpremultiplyRGBAFloat(float* pixels, std::size_t count, Matte matte) {
    const std::size_t done = UnpremultiplyWide(pixels, count, matte);
    reference::unpremultiplyRGBAFloat(pixels + 4 * done, count - done, matte);
}

template <typename Component>
HWY_INLINE std::size_t InvertAlpha(Component* pixels, std::size_t count) {
    const hn::ScalableTag<float> df;
    const hn::RebindToUnsigned<decltype(df)> du;
    const std::size_t lanes = hn::Lanes(df);
    const auto isAlpha = hn::RebindMask(df, hn::MaskFromVec(hn::LoadDup128(du, alphaLane)));
    std::size_t i = 0;
    for (; i + lanes <= 4 * count; i += lanes) {
        const auto v = LoadNumbers(df, pixels + i);
        StoreNumbers(df, hn::IfThenElse(isAlpha, hn::Sub(hn::Set(df, 1.0f), v), v), pixels + i);
    }
    return i / 4;
}

void invertAlphaHalf(half* pixels, std::size_t count) {
    const std::size_t done = InvertAlpha(pixels, count);
    reference::invertAlphaHalf(pixels + 4 * done, count - done);
}

void invertAlphaFloat(float* pixels, std::size_t count) {
    const std::size_t done = InvertAlpha(pixels, count);
    reference::invertAlphaFloat(pixels + 4 * done, count - done);
}

#endif
}  // namespace kestrel::detail::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kestrel::detail {

HWY_EXPORT(preMultiply8);
HWY_EXPORT(unPreMultiplyTruncated8);
HWY_EXPORT(unPreMultiplyCopy8);
HWY_EXPORT(unpremultiplyRGBA8);
HWY_EXPORT(unpremultiplyARGB8);
HWY_EXPORT(unpremultiplyRGBA16);
HWY_EXPORT(unpremultiplyRGBAHalf);
HWY_EXPORT(unpremultiplyRGBAFloat);
HWY_EXPORT(invertAlphaHalf);
HWY_EXPORT(invertAlphaFloat);

void preMultiply8(std::uint8_t* pixels, std::size_t count, bool alphaFirst) {
    HWY_DYNAMIC_DISPATCH(preMultiply8)(pixels, count, alphaFirst);
}

void unPreMultiplyTruncated8(std::uint8_t* pixels, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(unPreMultiplyTruncated8)(pixels, count);
}

void unPreMultiplyCopy8(std::uint8_t* to, const std::uint8_t* from, std::size_t count, Matte matte) {
    HWY_DYNAMIC_DISPATCH(unPreMultiplyCopy8)(to, from, count, matte);
}

void unpremultiplyRGBA8(std::uint8_t* pixels, std::size_t count, Matte matte) {
    HWY_DYNAMIC_DISPATCH(unpremultiplyRGBA8)(pixels, count, matte);
}

void unpremultiplyARGB8(std::uint8_t* pixels, std::size_t count, Matte matte) {
    HWY_DYNAMIC_DISPATCH(unpremultiplyARGB8)(pixels, count, matte);
}

void unpremultiplyRGBA16(std::uint16_t* pixels, std::size_t count, Matte matte) {
    HWY_DYNAMIC_DISPATCH(unpremultiplyRGBA16)(pixels, count, matte);
}

void unpremultiplyRGBAHalf(half* pixels, std::size_t count, Matte matte) {
    HWY_DYNAMIC_DISPATCH(unpremultiplyRGBAHalf)(pixels, count, matte);
}

void unpremultiplyRGBAFloat(float* pixels, std::size_t count, Matte matte) {
    HWY_DYNAMIC_DISPATCH(unpremultiplyRGBAFloat)(pixels, count, matte);
}

void invertAlphaHalf(half* pixels, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(invertAlphaHalf)(pixels, count);
}

void invertAlphaFloat(float* pixels, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(invertAlphaFloat)(pixels, count);
}

}  // namespace kestrel::detail
#endif
