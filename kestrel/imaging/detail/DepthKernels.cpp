// Rows of components from one depth to another (see DepthKernels.h).
#include <kestrel/imaging/detail/DepthKernels.h>

#include <cstring>

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

/// The one right answer is v * 257.
void Convert8To16(std::uint16_t* to, const std::uint8_t* from, std::size_t components) {
    const hn::ScalableTag<std::uint16_t> d16;
    const hn::Rebind<std::uint8_t, decltype(d16)> d8;
    const std::size_t lanes = hn::Lanes(d16);
    std::size_t i = 0;
    for (; i + lanes <= components; i += lanes) {
        const auto v = hn::PromoteTo(d16, hn::LoadU(d8, from + i));
        hn::StoreU(hn::Or(v, hn::ShiftLeft<8>(v)), d16, to + i);
    }
    reference::convertDepth(to + i, from + i, components - i);
}

/// The one right answer is v / 257, rounded to nearest (257 is odd: there are no ties). With v = 256 h + l
/// = 257 h + (l - h) that is h, and one more or less where l - h is beyond 128.
void Convert16To8(std::uint8_t* to, const std::uint16_t* from, std::size_t components) {
    const hn::ScalableTag<std::int16_t> d16;
    const hn::RebindToUnsigned<decltype(d16)> du16;
    const hn::Rebind<std::uint8_t, decltype(d16)> d8;
    const std::size_t lanes = hn::Lanes(d16);
    std::size_t i = 0;
    for (; i + lanes <= components; i += lanes) {
        const auto v = hn::LoadU(du16, from + i);
        const auto high = hn::BitCast(d16, hn::ShiftRight<8>(v));
        const auto rest = hn::Sub(hn::BitCast(d16, hn::And(v, hn::Set(du16, 0xFF))), high);
        const auto more = hn::VecFromMask(d16, hn::Gt(rest, hn::Set(d16, 128)));  // -1 where true
        const auto less = hn::VecFromMask(d16, hn::Lt(rest, hn::Set(d16, -128)));
        hn::StoreU(hn::DemoteTo(d8, hn::Add(hn::Sub(high, more), less)), d8, to + i);
    }
    reference::convertDepth(to + i, from + i, components - i);
}

void ConvertHalfTo8(std::uint8_t* to, const half* from, std::size_t n) { Convert(to, from, n); }
void ConvertFloatTo8(std::uint8_t* to, const float* from, std::size_t n) { Convert(to, from, n); }
void ConvertHalfTo16(std::uint16_t* to, const half* from, std::size_t n) { Convert(to, from, n); }
void ConvertFloatTo16(std::uint16_t* to, const float* from, std::size_t n) { Convert(to, from, n); }
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
