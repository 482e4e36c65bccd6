// kestrel/imaging/detail/VectorNumbers-inl.h - the arithmetic of PixelNumbers.h on vectors.
//
// Compiled once for each vector target. Every function gives the bits of its scalar twin.
#if defined(KESTREL_VECTOR_NUMBERS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef KESTREL_VECTOR_NUMBERS_INL_H
#undef KESTREL_VECTOR_NUMBERS_INL_H
#else
#define KESTREL_VECTOR_NUMBERS_INL_H
#endif

#include <Imath/half.h>
#include <hwy/highway.h>

#include <cstdint>

HWY_BEFORE_NAMESPACE();
namespace kestrel::detail::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// v * (1 / 255) for 0 <= v <= 255, and v * (1 / 65535) for 0 <= v <= 65535, rounded once: the first product
/// is exact (so a fused sum has the same bits), and the sum of both has the bits of the product in double,
/// for every value.
template <class DF, class V>
HWY_INLINE V Unit8(DF df, V v) {
    return hn::MulAdd(v, hn::Set(df, 0x1.01p-8f), hn::Mul(v, hn::Set(df, 0x1.010102p-24f)));
}
template <class DF, class V>
HWY_INLINE V Unit16(DF df, V v) {
    return hn::MulAdd(v, hn::Set(df, 0x1p-16f), hn::Mul(v, hn::Set(df, 0x1.0001p-32f)));
}

/// 256 times Unit8 and 65536 times Unit16, by one rounding less.
template <class DF, class V>
HWY_INLINE V ScaledUnit8(DF df, V v) {
    return hn::MulAdd(v, hn::Set(df, 0x1.010102p-8f), v);
}
template <class DF, class V>
HWY_INLINE V ScaledUnit16(DF df, V v) {
    return hn::MulAdd(v, hn::Set(df, 0x1.0001p-16f), v);
}

/// The integers of numbers that an int can hold, cut towards zero; of others, any. (hn::ConvertTo spends
/// three instructions more on x86 to saturate those.)
template <class DF, class V>
HWY_INLINE hn::Vec<hn::RebindToSigned<DF>> CutInt(DF, V v) {
#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_SSE4
    using Ints = hn::Vec<hn::RebindToSigned<DF>>;
    if constexpr (sizeof(v.raw) == 16)
        return Ints{_mm_cvttps_epi32(v.raw)};
    else
        return Ints{_mm256_cvttps_epi32(v.raw)};
#else
    return hn::ConvertTo(hn::RebindToSigned<DF>(), v);
#endif
}

/// clamp(floor(p + 0.5 + 1e-7), 0, limit), with 0 for NaN (which the maximum drops on x86, and the conversion
/// elsewhere). Adding 0.5 in float gives the same but for the two floats below 0.5 that only the 1e-7 lifts
/// to 1; care is for products that can be one of these: they count from the first one on, and what is left
/// is the integer of p - 0.5, a difference without error.
template <bool care = true, class DF, class V>
HWY_INLINE hn::Vec<hn::RebindToSigned<DF>> RoundedInt(DF df, V p, float limit) {
    const hn::RebindToSigned<DF> di;
    const auto half = hn::Set(df, 0.5f);
    p = hn::Min(hn::Max(p, hn::Zero(df)), hn::Set(df, limit));
    if constexpr (!care) return CutInt(df, hn::Add(p, half));
    const auto lifted = hn::RebindMask(di, hn::Ge(p, hn::Set(df, 0x1.fffffap-2f)));
    return hn::Sub(CutInt(df, hn::Sub(p, half)), hn::VecFromMask(di, lifted));
}

/// floor(x * 255.0) with the product in double, for 0 <= x <= 1: 256 x - x rounded to float, less one where
/// it was rounded up to an integer.
template <class DF, class V>
HWY_INLINE hn::Vec<hn::RebindToSigned<DF>> TruncatedInt(DF df, V x) {
    const hn::RebindToSigned<DF> di;
    const auto x256 = hn::Mul(x, hn::Set(df, 256.0f));
    const auto product = hn::Sub(x256, x);
    const auto error = hn::Sub(hn::Sub(x256, product), x);
    const auto cut = CutInt(df, product);
    const auto roundedUp = hn::And(hn::Eq(hn::ConvertTo(df, cut), product), hn::Lt(error, hn::Zero(df)));
    return hn::Add(cut, hn::VecFromMask(di, hn::RebindMask(di, roundedUp)));
}

// The processor's conversions of 16-bit floats give the same bits but for signalling NaNs, which they quiet.
#undef KESTREL_HALF_INSTRUCTIONS
#if HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX2 && !defined(HWY_DISABLE_F16C)
#define KESTREL_HALF_INSTRUCTIONS 1
#else
#define KESTREL_HALF_INSTRUCTIONS 0
#endif

/// The float values of 16-bit floats in the low halves of the lanes. NaNs keep their payload, signalling or
/// not.
template <class DF, class VU>
HWY_INLINE hn::Vec<DF> FloatFromHalf(DF df, VU bits) {
    const hn::RebindToUnsigned<DF> du;
    const hn::RebindToSigned<DF> di;
    const auto magnitude = hn::And(bits, hn::Set(du, 0x7FFF));
    const auto sign = hn::ShiftLeft<16>(hn::Sub(bits, magnitude));
    const auto bias = hn::Set(du, 0x38000000);                                     // (127 - 15) << 23
    const auto isLarge = hn::Gt(hn::BitCast(di, magnitude), hn::Set(di, 0x7BFF));  // infinity or NaN
    const auto isSmall = hn::Lt(hn::BitCast(di, magnitude), hn::Set(di, 0x0400));  // zero or subnormal
    const auto normal = hn::Add(hn::ShiftLeft<13>(magnitude), bias);
    const auto large = hn::Add(normal, hn::And(hn::BitCast(du, hn::VecFromMask(di, isLarge)), bias));
    const auto small = hn::Mul(hn::ConvertTo(df, hn::BitCast(di, magnitude)), hn::Set(df, 0x1p-24f));
    const auto value = hn::IfThenElse(hn::RebindMask(df, isSmall), small, hn::BitCast(df, large));
    return hn::BitCast(df, hn::Or(hn::BitCast(du, value), sign));
}

/// The nearest 16-bit floats, ties to even, in the low halves of the lanes.
template <class DF, class V>
HWY_INLINE hn::Vec<hn::RebindToUnsigned<DF>> HalfFromFloat(DF df, V value) {
    const hn::RebindToUnsigned<DF> du;
    const hn::RebindToSigned<DF> di;
    const auto bits = hn::BitCast(du, value);
    const auto magnitude = hn::And(bits, hn::Set(du, 0x7FFFFFFF));
    const auto sign = hn::ShiftRight<16>(hn::Sub(bits, magnitude));
    const auto signedMagnitude = hn::BitCast(di, magnitude);

    const auto odd = hn::And(hn::ShiftRight<13>(magnitude), hn::Set(du, 1));
    const auto bias = hn::Set(du, 0xC8000FFFu);  // 0xFFF - 0x38000000
    auto result = hn::ShiftRight<13>(hn::Add(hn::Add(magnitude, bias), odd));
    // Below the normal range the sum with 0.5 has its last place where the result has it.
    const auto sum = hn::Add(hn::BitCast(df, magnitude), hn::Set(df, 0.5f));
    const auto subnormal = hn::Sub(hn::BitCast(du, sum), hn::Set(du, 0x3F000000));
    const auto isSmall = hn::RebindMask(du, hn::Lt(signedMagnitude, hn::Set(di, 0x38800000)));
    result = hn::IfThenElse(isSmall, subnormal, result);
    const auto overflows = hn::RebindMask(du, hn::Gt(signedMagnitude, hn::Set(di, 0x477FEFFF)));
    result = hn::IfThenElse(overflows, hn::Set(du, 0x7C00), result);
    // NaN keeps the upper bits of its payload, and one bit at least.
    const auto payload = hn::And(hn::ShiftRight<13>(magnitude), hn::Set(du, 0x3FF));
    const auto nan =
        hn::Or(hn::Set(du, 0x7C00), hn::IfThenElse(hn::Eq(payload, hn::Zero(du)), hn::Set(du, 1), payload));
    const auto isNaN = hn::RebindMask(du, hn::Gt(signedMagnitude, hn::Set(di, 0x7F800000)));
    return hn::Or(hn::IfThenElse(isNaN, nan, result), sign);
}

/// The numbers of 16-bit floats where all NaNs are alike.
template <class DF>
HWY_INLINE hn::Vec<DF> LoadAnyNaN(DF df, const half* from) {
    const auto bits =
        hn::LoadU(hn::Rebind<std::uint16_t, DF>(), reinterpret_cast<const std::uint16_t*>(from));
#if KESTREL_HALF_INSTRUCTIONS
    return hn::PromoteTo(df, hn::BitCast(hn::Rebind<hwy::float16_t, DF>(), bits));
#else
    return FloatFromHalf(df, hn::PromoteTo(hn::RebindToUnsigned<DF>(), bits));
#endif
}

/// Rows of components as vectors of floats, by component type: Load gives the number of each, Store rounds.
template <class DF>
HWY_INLINE hn::Vec<DF> LoadNumbers(DF df, const std::uint8_t* from) {
    const auto v = hn::PromoteTo(hn::RebindToSigned<DF>(), hn::LoadU(hn::Rebind<std::uint8_t, DF>(), from));
    return Unit8(df, hn::ConvertTo(df, v));
}
template <class DF>
HWY_INLINE hn::Vec<DF> LoadNumbers(DF df, const std::uint16_t* from) {
    const auto v = hn::PromoteTo(hn::RebindToSigned<DF>(), hn::LoadU(hn::Rebind<std::uint16_t, DF>(), from));
    return Unit16(df, hn::ConvertTo(df, v));
}
template <class DF>
HWY_INLINE hn::Vec<DF> LoadNumbers(DF df, const half* from) {
    const hn::Rebind<std::uint16_t, DF> d16;
    const auto bits = hn::LoadU(d16, reinterpret_cast<const std::uint16_t*>(from));
#if KESTREL_HALF_INSTRUCTIONS
    const hn::RebindToSigned<decltype(d16)> di16;
    const auto magnitude = hn::And(hn::BitCast(di16, bits), hn::Set(di16, 0x7FFF));
    if (HWY_LIKELY(hn::AllFalse(di16, hn::Gt(magnitude, hn::Set(di16, 0x7C00)))))
        return hn::PromoteTo(df, hn::BitCast(hn::Rebind<hwy::float16_t, DF>(), bits));
#endif
    return FloatFromHalf(df, hn::PromoteTo(hn::RebindToUnsigned<DF>(), bits));
}
template <class DF>
HWY_INLINE hn::Vec<DF> LoadNumbers(DF df, const float* from) {
    return hn::LoadU(df, from);
}

template <class DF, class V>
HWY_INLINE void StoreNumbers(DF df, V v, std::uint16_t* to) {
    const auto rounded = RoundedInt(df, hn::Mul(v, hn::Set(df, 65535.0f)), 65535.0f);
    const hn::Rebind<std::uint16_t, DF> d16;
    hn::StoreU(hn::DemoteTo(d16, rounded), d16, to);
}
#if KESTREL_HALF_INSTRUCTIONS
/// Of floats that are no NaN.
template <class DF, class V>
HWY_INLINE void StoreHalves(DF, V v, half* to) {
    const hn::Rebind<std::uint16_t, DF> d16;
    const auto rounded = hn::DemoteTo(hn::Rebind<hwy::float16_t, DF>(), v);
    hn::StoreU(hn::BitCast(d16, rounded), d16, reinterpret_cast<std::uint16_t*>(to));
}
#endif
template <class DF, class V>
HWY_INLINE void StoreNumbers(DF df, V v, half* to) {
    const hn::Rebind<std::uint16_t, DF> d16;
#if KESTREL_HALF_INSTRUCTIONS
    if (HWY_LIKELY(hn::AllTrue(df, hn::Eq(v, v)))) return StoreHalves(df, v, to);
#endif
    const auto bits = hn::BitCast(hn::RebindToSigned<DF>(), HalfFromFloat(df, v));
    hn::StoreU(hn::DemoteTo(d16, bits), d16, reinterpret_cast<std::uint16_t*>(to));
}
template <class DF, class V>
HWY_INLINE void StoreNumbers(DF df, V v, float* to) {
    hn::StoreU(v, df, to);
}

}  // namespace kestrel::detail::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
