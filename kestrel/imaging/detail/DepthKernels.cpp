// Rows of components from one depth to another (see DepthKernels.h).
#include <kestrel/imaging/detail/DepthKernels.h>

#include <cstring>
#include <type_traits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kestrel/imaging/detail/DepthKernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>
#include <kestrel/imaging/detail/VectorNumbers-inl.h>

HWY_BEFORE_NAMESPACE();
namespace kestrel::detail::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

template <typename To, typename From>
HWY_INLINE void Convert(To* to, const From* from, std::size_t components) {
    const hn::ScalableTag<float> df;
    const std::size_t lanes = hn::Lanes(df);
    std::size_t i = 0;
    for (; i + lanes <= components; i += lanes) StoreNumbers(df, LoadNumbers(df, from + i), to + i);
    reference::convertDepth(to + i, from + i, components - i);
}

/// Stores integers that fit the narrower components, in their order: two vectors of 16 bits as bytes, two of
/// 32 bits as 16 bits, four of 32 bits as bytes.
template <class V>
HWY_INLINE void StoreNarrow(std::uint8_t* to, hn::ScalableTag<std::int16_t> d, V a, V b) {
    const hn::Rebind<std::uint8_t, decltype(d)> d8;
#if HWY_TARGET == HWY_AVX2  // packing works within blocks: one permutation for all puts the parts in order
    (void)d8;
    const auto packed = _mm256_permute4x64_epi64(_mm256_packus_epi16(a.raw, b.raw), 0xD8);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), packed);
#else
    hn::StoreU(hn::DemoteTo(d8, a), d8, to);
    hn::StoreU(hn::DemoteTo(d8, b), d8, to + hn::Lanes(d));
#endif
}
template <class V>
HWY_INLINE void StoreNarrow(std::uint16_t* to, hn::ScalableTag<std::int32_t> d, V a, V b, V c, V e) {
    const hn::Rebind<std::uint16_t, decltype(d)> d16;
    const std::size_t lanes = hn::Lanes(d);
#if HWY_TARGET == HWY_AVX2
    (void)d16;
    auto* out = reinterpret_cast<__m256i*>(to);
    _mm256_storeu_si256(out, _mm256_permute4x64_epi64(_mm256_packus_epi32(a.raw, b.raw), 0xD8));
    _mm256_storeu_si256(out + 1, _mm256_permute4x64_epi64(_mm256_packus_epi32(c.raw, e.raw), 0xD8));
    (void)lanes;
#else
    hn::StoreU(hn::DemoteTo(d16, a), d16, to);
    hn::StoreU(hn::DemoteTo(d16, b), d16, to + lanes);
    hn::StoreU(hn::DemoteTo(d16, c), d16, to + 2 * lanes);
    hn::StoreU(hn::DemoteTo(d16, e), d16, to + 3 * lanes);
#endif
}
template <class V>
HWY_INLINE void StoreNarrow(std::uint8_t* to, hn::ScalableTag<std::int32_t> d, V a, V b, V c, V e) {
    const hn::Rebind<std::uint8_t, decltype(d)> d8;
    const std::size_t lanes = hn::Lanes(d);
#if HWY_TARGET == HWY_AVX2
    (void)d8, (void)lanes;
    const auto packed =
        _mm256_packus_epi16(_mm256_packs_epi32(a.raw, b.raw), _mm256_packs_epi32(c.raw, e.raw));
    const auto order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), _mm256_permutevar8x32_epi32(packed, order));
#else
    hn::StoreU(hn::DemoteTo(d8, a), d8, to);
    hn::StoreU(hn::DemoteTo(d8, b), d8, to + lanes);
    hn::StoreU(hn::DemoteTo(d8, c), d8, to + 2 * lanes);
    hn::StoreU(hn::DemoteTo(d8, e), d8, to + 3 * lanes);
#endif
}

/// Floats and halves as integers. The product of a half is never near the two floats that need care.
template <typename To, typename From>
HWY_INLINE void Round(To* to, const From* from, std::size_t components) {
    const hn::ScalableTag<float> df;
    const hn::RebindToSigned<decltype(df)> di;
    constexpr float full = static_cast<To>(~To{});
    const std::size_t lanes = hn::Lanes(df);
    const auto round = [=](const From* place) HWY_ATTR {
        if constexpr (std::is_same_v<From, half>)
            return RoundedInt<false>(df, hn::Mul(LoadAnyNaN(df, place), hn::Set(df, full)), full);
        else
            return RoundedInt(df, hn::Mul(hn::LoadU(df, place), hn::Set(df, full)), full);
    };
    std::size_t i = 0;
    for (; i + 4 * lanes <= components; i += 4 * lanes) {
        const From* place = from + i;
        StoreNarrow(to + i, di, round(place), round(place + lanes), round(place + 2 * lanes),
                    round(place + 3 * lanes));
    }
    reference::convertDepth(to + i, from + i, components - i);
}

/// The one right answer is v * 257.
void Convert8To16(std::uint16_t* to, const std::uint8_t* from, std::size_t components) {
    const hn::ScalableTag<std::uint16_t> d16;
    const hn::Rebind<std::uint8_t, decltype(d16)> d8;
    const std::size_t lanes = hn::Lanes(d16);
    std::size_t i = 0;
    for (; i + 2 * lanes <= components; i += 2 * lanes) {
        const auto a = hn::PromoteTo(d16, hn::LoadU(d8, from + i));
        const auto b = hn::PromoteTo(d16, hn::LoadU(d8, from + i + lanes));
        hn::StoreU(hn::Mul(a, hn::Set(d16, 257)), d16, to + i);
        hn::StoreU(hn::Mul(b, hn::Set(d16, 257)), d16, to + i + lanes);
    }
    reference::convertDepth(to + i, from + i, components - i);
}

/// The one right answer is v / 257, rounded to nearest (257 is odd: there are no ties): that is v + 128, kept
/// to 16 bits, times 0xFF01 / 2^24 (which is a little more than 1 / 257), rounded down.
void Convert16To8(std::uint8_t* to, const std::uint16_t* from, std::size_t components) {
    const hn::ScalableTag<std::int16_t> d16;
    const hn::RebindToUnsigned<decltype(d16)> du16;
    const std::size_t lanes = hn::Lanes(d16);
    const auto narrow = [=](const std::uint16_t* place) HWY_ATTR {
        const auto v = hn::LoadU(du16, place);
        const auto product = hn::MulHigh(hn::SaturatedAdd(v, hn::Set(du16, 128)), hn::Set(du16, 0xFF01));
        return hn::BitCast(d16, hn::ShiftRight<8>(product));
    };
    std::size_t i = 0;
    for (; i + 2 * lanes <= components; i += 2 * lanes)
        StoreNarrow(to + i, d16, narrow(from + i), narrow(from + i + lanes));
    reference::convertDepth(to + i, from + i, components - i);
}

void ConvertHalfTo8(std::uint8_t* to, const half* from, std::size_t n) { Round(to, from, n); }
void ConvertFloatTo8(std::uint8_t* to, const float* from, std::size_t n) { Round(to, from, n); }
void ConvertHalfTo16(std::uint16_t* to, const half* from, std::size_t n) { Round(to, from, n); }
void ConvertFloatTo16(std::uint16_t* to, const float* from, std::size_t n) { Round(to, from, n); }
void Convert8ToFloat(float* to, const std::uint8_t* from, std::size_t n) { Convert(to, from, n); }
void Convert16ToFloat(float* to, const std::uint16_t* from, std::size_t n) { Convert(to, from, n); }
void ConvertHalfToFloat(float* to, const half* from, std::size_t n) { Convert(to, from, n); }

}  // namespace kestrel::detail::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kestrel::detail {

#define KESTREL_DEPTH(To, From, Kernel)                                   \
    HWY_EXPORT(Kernel);                                                   \
    void convertDepth(To* to, const From* from, std::size_t components) { \
        HWY_DYNAMIC_DISPATCH(Kernel)(to, from, components);               \
    }
KESTREL_DEPTH(std::uint8_t, std::uint16_t, Convert16To8)
KESTREL_DEPTH(std::uint8_t, half, ConvertHalfTo8)
KESTREL_DEPTH(std::uint8_t, float, ConvertFloatTo8)
KESTREL_DEPTH(std::uint16_t, std::uint8_t, Convert8To16)
KESTREL_DEPTH(std::uint16_t, half, ConvertHalfTo16)
KESTREL_DEPTH(std::uint16_t, float, ConvertFloatTo16)
KESTREL_DEPTH(float, std::uint8_t, Convert8ToFloat)
KESTREL_DEPTH(float, std::uint16_t, Convert16ToFloat)
KESTREL_DEPTH(float, half, ConvertHalfToFloat)
#undef KESTREL_DEPTH

// A value of 8 or 16 bits comes back from its number.

void convertDepth(std::uint8_t* to, const std::uint8_t* from, std::size_t components) {
    std::memcpy(to, from, components);
}

void convertDepth(std::uint16_t* to, const std::uint16_t* from, std::size_t components) {
    std::memcpy(to, from, components * sizeof(std::uint16_t));
}

void convertDepth(float* to, const float* from, std::size_t components) {
    std::memcpy(to, from, components * sizeof(float));
}

}  // namespace kestrel::detail
#endif
