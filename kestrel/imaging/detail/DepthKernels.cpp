// Rows of components from one depth to another (see DepthKernels.h).
#include <kestrel/imaging/detail/ByteKernels.h>
#include <kestrel/imaging/detail/DepthKernels.h>

#include <type_traits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kestrel/imaging/detail/DepthKernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>
#include <kestrel/imaging/detail/Stores-inl.h>
#include <kestrel/imaging/detail/VectorNumbers-inl.h>

HWY_BEFORE_NAMESPACE();
namespace kestrel::detail::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// Each kernel turns components by the vector, or by some of them, as far as that goes, and tells how many.

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128
// None: emulated vectors would only be slower than the plain twins.
template <typename To, typename From, class Store>
HWY_INLINE std::size_t Convert(To*, const From*, std::size_t, Store) {
    return 0;
}
#else

/// Asks for the memory that comes a kilobyte after components that are read now: processors see by themselves
/// that a frame is read from one end to the other, but too late for kernels that do little with much memory.
template <typename From>
HWY_INLINE void ReadAhead(const From* from, std::size_t components) {
    const auto* bytes = reinterpret_cast<const char*>(from);
    for (std::size_t i = 0; i < components * sizeof(From); i += 64) hwy::Prefetch(bytes + 1024 + i);
}

/// Two vectors of integers as one vector of integers of half their width, in their order; what does not fit
/// becomes the nearest that does.
template <class DN, class V>
HWY_INLINE hn::Vec<DN> Narrow(DN dn, V a, V b) {
#if HWY_TARGET == HWY_AVX2  // packing works within blocks: one permutation puts the parts in order
    (void)dn;
    __m256i packed;
    if constexpr (std::is_same_v<hn::TFromD<DN>, std::uint8_t>)
        packed = _mm256_packus_epi16(a.raw, b.raw);
    else if constexpr (std::is_same_v<hn::TFromD<DN>, std::uint16_t>)
        packed = _mm256_packus_epi32(a.raw, b.raw);
    else
        packed = _mm256_packs_epi32(a.raw, b.raw);
    return hn::Vec<DN>{_mm256_permute4x64_epi64(packed, 0xD8)};
#else
    const hn::Half<DN> dh;
    return hn::Combine(dn, hn::DemoteTo(dh, b), hn::DemoteTo(dh, a));
#endif
}

/// Bytes of RGBA pixels as ARGB.
template <class V>
HWY_INLINE V AlphaFirst(V rgba) {
    alignas(16) static constexpr std::uint8_t order[16] = {3,  0, 1, 2,  7,  4,  5,  6,
                                                           11, 8, 9, 10, 15, 12, 13, 14};
    return hn::TableLookupBytes(rgba, hn::LoadDup128(hn::DFromV<V>(), order));
}

// ---- To floats

template <typename From, class Store>
HWY_INLINE std::size_t Convert(float* to, const From* from, std::size_t components, Store store) {
    const hn::ScalableTag<float> df;
    const std::size_t lanes = hn::Lanes(df);
    std::size_t i = 0;
    for (; i + lanes <= components; i += lanes) store(LoadNumbers(df, from + i), df, to + i);
    return i;
}

// ---- From floats. The product of a half is never near the two floats that need care.

template <class DF>
HWY_INLINE hn::Vec<hn::RebindToSigned<DF>> Rounded(DF df, const half* from, float full) {
    return RoundedInt<false>(df, hn::Mul(LoadAnyNaN(df, from), hn::Set(df, full)), full);
}
template <class DF>
HWY_INLINE hn::Vec<hn::RebindToSigned<DF>> Rounded(DF df, const float* from, float full) {
    return RoundedInt(df, hn::Mul(hn::LoadU(df, from), hn::Set(df, full)), full);
}

template <typename From, class Store>
HWY_INLINE std::size_t Convert(std::uint16_t* to, const From* from, std::size_t components, Store store) {
    const hn::ScalableTag<float> df;
    const hn::Repartition<std::uint16_t, decltype(df)> d16;
    const std::size_t lanes = hn::Lanes(df);
    const auto two = [=](const From* place) HWY_ATTR {
        return Narrow(d16, Rounded(df, place, 65535), Rounded(df, place + lanes, 65535));
    };
    std::size_t i = 0;
    for (; i + 4 * lanes <= components; i += 4 * lanes) {
        ReadAhead(from + i, 4 * lanes);
        store(two(from + i), d16, to + i);
        store(two(from + i + 2 * lanes), d16, to + i + 2 * lanes);
    }
    return i;
}

template <typename From, class Store>
HWY_INLINE std::size_t Convert(std::uint8_t* to, const From* from, std::size_t components, Store store) {
    const hn::ScalableTag<float> df;
    const hn::Repartition<std::int16_t, decltype(df)> d16;
    const hn::Repartition<std::uint8_t, decltype(df)> d8;
    const std::size_t lanes = hn::Lanes(df);
    const auto two = [=](const From* place) HWY_ATTR {
        return Narrow(d16, Rounded(df, place, 255), Rounded(df, place + lanes, 255));
    };
    std::size_t i = 0;
    for (; i + 4 * lanes <= components; i += 4 * lanes) {
        ReadAhead(from + i, 4 * lanes);
        store(AlphaFirst(Narrow(d8, two(from + i), two(from + i + 2 * lanes))), d8, to + i);
    }
    return i;
}

// ---- Between integers

/// The one right answer is v * 257.
template <class Store>
HWY_INLINE std::size_t Convert(std::uint16_t* to, const std::uint8_t* from, std::size_t components,
                               Store store) {
    const hn::ScalableTag<std::uint16_t> d16;
    const hn::Rebind<std::uint8_t, decltype(d16)> d8;
    const std::size_t lanes = hn::Lanes(d16);
    std::size_t i = 0;
    for (; i + 2 * lanes <= components; i += 2 * lanes) {
        ReadAhead(from + i, 2 * lanes);
        const auto a = hn::PromoteTo(d16, hn::LoadU(d8, from + i));
        const auto b = hn::PromoteTo(d16, hn::LoadU(d8, from + i + lanes));
        store(hn::Mul(a, hn::Set(d16, 257)), d16, to + i);
        store(hn::Mul(b, hn::Set(d16, 257)), d16, to + i + lanes);
    }
    return i;
}

/// The one right answer is v / 257, rounded to nearest (257 is odd: there are no ties): that is v + 128, kept
/// to 16 bits, times 0xFF01 / 2^24 (which is a little more than 1 / 257), rounded down.
template <class Store>
HWY_INLINE std::size_t Convert(std::uint8_t* to, const std::uint16_t* from, std::size_t components,
                               Store store) {
    const hn::ScalableTag<std::uint16_t> d16;
    const hn::Repartition<std::uint8_t, decltype(d16)> d8;
    const std::size_t lanes = hn::Lanes(d16);
    const auto quotient = [=](const std::uint16_t* place) HWY_ATTR {
        const auto v = hn::SaturatedAdd(hn::LoadU(d16, place), hn::Set(d16, 128));
        const auto product = hn::MulHigh(v, hn::Set(d16, 0xFF01));
        return hn::BitCast(hn::RebindToSigned<decltype(d16)>(), hn::ShiftRight<8>(product));
    };
    std::size_t i = 0;
    for (; i + 2 * lanes <= components; i += 2 * lanes) {
        ReadAhead(from + i, 2 * lanes);
        store(AlphaFirst(Narrow(d8, quotient(from + i), quotient(from + i + lanes))), d8, to + i);
    }
    return i;
}
#endif

#define KESTREL_DEPTH(Kernel, To, From)                                                             \
    void Kernel(To* to, const From* from, std::size_t components, Stores stores) {                  \
        const std::size_t done = WithStores(                                                        \
            stores, to, [=](auto store) HWY_ATTR { return Convert(to, from, components, store); }); \
        reference::convertDepth(to + done, from + done, components - done);                         \
    }
KESTREL_DEPTH(Convert8To16, std::uint16_t, std::uint8_t)
KESTREL_DEPTH(ConvertHalfTo16, std::uint16_t, half)
KESTREL_DEPTH(ConvertFloatTo16, std::uint16_t, float)
KESTREL_DEPTH(Convert8ToFloat, float, std::uint8_t)
KESTREL_DEPTH(Convert16ToFloat, float, std::uint16_t)
KESTREL_DEPTH(ConvertHalfToFloat, float, half)
#undef KESTREL_DEPTH
#define KESTREL_TO_ARGB(Kernel, From)                                                               \
    void Kernel(std::uint8_t* to, const From* from, std::size_t pixels, Stores stores) {            \
        const std::size_t done = WithStores(                                                        \
            stores, to, [=](auto store) HWY_ATTR { return Convert(to, from, 4 * pixels, store); }); \
        reference::convertToARGB(to + done, from + done, pixels - done / 4);                        \
    }
KESTREL_TO_ARGB(Convert16ToARGB8, std::uint16_t)
KESTREL_TO_ARGB(ConvertHalfToARGB8, half)
KESTREL_TO_ARGB(ConvertFloatToARGB8, float)
#undef KESTREL_TO_ARGB

}  // namespace kestrel::detail::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kestrel::detail {

#define KESTREL_DEPTH(name, To, From, Kernel)                               \
    HWY_EXPORT(Kernel);                                                     \
    void name(To* to, const From* from, std::size_t count, Stores stores) { \
        HWY_DYNAMIC_DISPATCH(Kernel)(to, from, count, stores);              \
    }
KESTREL_DEPTH(convertDepth, std::uint16_t, std::uint8_t, Convert8To16)
KESTREL_DEPTH(convertDepth, std::uint16_t, half, ConvertHalfTo16)
KESTREL_DEPTH(convertDepth, std::uint16_t, float, ConvertFloatTo16)
KESTREL_DEPTH(convertDepth, float, std::uint8_t, Convert8ToFloat)
KESTREL_DEPTH(convertDepth, float, std::uint16_t, Convert16ToFloat)
KESTREL_DEPTH(convertDepth, float, half, ConvertHalfToFloat)
KESTREL_DEPTH(convertToARGB, std::uint8_t, std::uint16_t, Convert16ToARGB8)
KESTREL_DEPTH(convertToARGB, std::uint8_t, half, ConvertHalfToARGB8)
KESTREL_DEPTH(convertToARGB, std::uint8_t, float, ConvertFloatToARGB8)
#undef KESTREL_DEPTH

// A value of 16 bits comes back from its number.

void convertDepth(std::uint16_t* to, const std::uint16_t* from, std::size_t components, Stores stores) {
    copyBytes(reinterpret_cast<std::uint8_t*>(to), reinterpret_cast<const std::uint8_t*>(from),
              components * sizeof *to, stores);
}

void convertDepth(float* to, const float* from, std::size_t components, Stores stores) {
    copyBytes(reinterpret_cast<std::uint8_t*>(to), reinterpret_cast<const std::uint8_t*>(from),
              components * sizeof *to, stores);
}

}  // namespace kestrel::detail
#endif
