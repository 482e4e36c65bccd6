// Byte patterns (see ByteKernels.h) and the conversion between 4:2:2 and ARGB (see YUVKernels.h).
#include <kestrel/imaging/detail/ByteKernels.h>
#include <kestrel/imaging/detail/YUVKernels.h>

#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kestrel/imaging/detail/ByteKernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>
#include <kestrel/imaging/detail/Stores-inl.h>

HWY_BEFORE_NAMESPACE();
namespace kestrel::detail::HWY_NAMESPACE {
#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128
using namespace reference;  // without vectors, the plain twins run: emulated ones store unaligned units
void shuffleBytes(std::uint8_t* to, const std::uint8_t* from, std::size_t bytes, const BytePattern& order,
                  Stores) {
    reference::shuffleBytes(to, from, bytes, order);
}
void convert422ToARGB(std::uint8_t* to, const std::uint8_t* from, std::size_t pixels, Stores) {
    reference::convert422ToARGB(to, from, pixels);
}
void halve32(std::uint32_t* to, const std::uint32_t* from, std::size_t n) {
    reference::halvePixels(to, from, n);
}
void halve64(std::uint64_t* to, const std::uint64_t* from, std::size_t n) {
    reference::halvePixels(to, from, n);
}
void double32(std::uint32_t* to, const std::uint32_t* from, std::size_t n) {
    reference::doublePixels(to, from, n);
}
void double64(std::uint64_t* to, const std::uint64_t* from, std::size_t n) {
    reference::doublePixels(to, from, n);
}
#else
namespace hn = hwy::HWY_NAMESPACE;

template <class Store>
HWY_INLINE std::size_t ShuffleMost(std::uint8_t* to, const std::uint8_t* from, std::size_t bytes,
                                   const BytePattern& order, Store store) {
    const hn::ScalableTag<std::uint8_t> d;
    const std::size_t lanes = hn::Lanes(d);
    const auto indices = hn::LoadDup128(d, order.data());
    std::size_t i = 0;
    for (; i + 2 * lanes <= bytes; i += 2 * lanes) {
        const auto a = hn::LoadU(d, from + i), b = hn::LoadU(d, from + i + lanes);
        store(hn::TableLookupBytes(a, indices), d, to + i);
        store(hn::TableLookupBytes(b, indices), d, to + i + lanes);
    }
    return i;
}

void shuffleBytes(std::uint8_t* to, const std::uint8_t* from, std::size_t bytes, const BytePattern& order,
                  Stores stores) {
    const std::size_t done = WithStores(
        stores, to, [&](auto store) HWY_ATTR { return ShuffleMost(to, from, bytes, order, store); });
    reference::shuffleBytes(to + done, from + done, bytes - done, order);
}

void maskBytes(std::uint8_t* bytes, std::size_t count, const BytePattern& keep, const BytePattern& flip) {
    const hn::ScalableTag<std::uint8_t> d;
    const std::size_t lanes = hn::Lanes(d);
    const auto keeps = hn::LoadDup128(d, keep.data()), flips = hn::LoadDup128(d, flip.data());
    std::size_t i = 0;
    for (; i + 2 * lanes <= count; i += 2 * lanes) {
        const auto a = hn::LoadU(d, bytes + i), b = hn::LoadU(d, bytes + i + lanes);
        hn::StoreU(hn::Xor(hn::And(a, keeps), flips), d, bytes + i);
        hn::StoreU(hn::Xor(hn::And(b, keeps), flips), d, bytes + i + lanes);
    }
    reference::maskBytes(bytes + i, count - i, keep, flip);
}

/// As long as all pixels of a vector come from as many consecutive ones, or from twice as many, they are
/// permuted in registers.
void samplePixels(std::uint32_t* to, const std::uint32_t* from, std::size_t available,
                  const std::uint32_t* columns, std::size_t count) {
    const hn::ScalableTag<std::uint32_t> d;
    const std::size_t lanes = hn::Lanes(d);
    const auto size = hn::Set(d, static_cast<std::uint32_t>(lanes));
    std::size_t x = 0;
    for (; x + lanes <= count; x += lanes) {
        const std::uint32_t first = columns[x], span = columns[x + lanes - 1] - first;
        if (span >= 2 * lanes || first + 2 * lanes > available) {
            reference::samplePixels(to + x, from, available, columns + x, lanes);
            continue;
        }
        const auto index = hn::Sub(hn::LoadU(d, columns + x), hn::Set(d, first));
        const auto low = hn::LoadU(d, from + first);
        if (span < lanes) {
            hn::StoreU(hn::TableLookupLanes(low, hn::IndicesFromVec(d, index)), d, to + x);
            continue;
        }
        const auto high = hn::LoadU(d, from + first + lanes);
        const auto isLow = hn::Lt(index, size);
        const auto indices = hn::IndicesFromVec(d, hn::IfThenElse(isLow, index, hn::Sub(index, size)));
        hn::StoreU(
            hn::IfThenElse(isLow, hn::TableLookupLanes(low, indices), hn::TableLookupLanes(high, indices)), d,
            to + x);
    }
    reference::samplePixels(to + x, from, available, columns + x, count - x);
}

template <typename Pixel>
HWY_INLINE void Halve(Pixel* to, const Pixel* from, std::size_t count) {
    const hn::ScalableTag<Pixel> d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t x = 0;
    for (; x + lanes < count; x += lanes) {  // the last pixel of the last pair may not exist
        hn::Vec<decltype(d)> even, odd;
        hn::LoadInterleaved2(d, from + 2 * x, even, odd);
        hn::StoreU(even, d, to + x);
    }
    reference::halvePixels(to + x, from + 2 * x, count - x);
}

template <typename Pixel>
HWY_INLINE void Double(Pixel* to, const Pixel* from, std::size_t count) {
    const hn::ScalableTag<Pixel> d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t x = 0;
    for (; x + 2 * lanes <= count; x += 2 * lanes) {
        const auto pixels = hn::LoadU(d, from + x / 2);
        hn::StoreInterleaved2(pixels, pixels, d, to + x);
    }
    reference::doublePixels(to + x, from + x / 2, count - x);
}

void halve32(std::uint32_t* to, const std::uint32_t* from, std::size_t count) { Halve(to, from, count); }
void halve64(std::uint64_t* to, const std::uint64_t* from, std::size_t count) { Halve(to, from, count); }
void double32(std::uint32_t* to, const std::uint32_t* from, std::size_t count) { Double(to, from, count); }
void double64(std::uint64_t* to, const std::uint64_t* from, std::size_t count) { Double(to, from, count); }

// In both conversions a 16-bit lane is one pixel of 4:2:2: chroma (U in even lanes, V in odd ones) in its low
// byte, luma in its high byte. An ARGB pixel is two lanes: A | R << 8 and G | B << 8.

alignas(16) constexpr std::uint8_t evenOfPair[16] = {0, 1, 0, 1, 4, 5, 4, 5, 8, 9, 8, 9, 12, 13, 12, 13};
alignas(16) constexpr std::uint8_t oddOfPair[16] = {2, 3, 2, 3, 6, 7, 6, 7, 10, 11, 10, 11, 14, 15, 14, 15};
alignas(16) constexpr std::uint8_t otherOfPair[16] = {2, 3, 0, 1, 6, 7, 4, 5, 10, 11, 8, 9, 14, 15, 12, 13};

/// The multiples of 256 are taken out of the sums before the shift (409 = 256 + 153, 298 = 256 + 42 and so
/// on), which leaves every sum within 16 bits.
#if HWY_TARGET == HWY_AVX2
/// Products of neighbouring bytes are summed by one instruction, of an unsigned factor with a signed one: so
/// all bytes lie around 0, luma at Y - 128 = C - 112. The 112 comes back above the fraction of the sums
/// (42 * 112 + 256 * 112 = 33376), which makes them positive, and packing clamps.
template <class Store>
HWY_INLINE std::size_t ConvertMost422(std::uint8_t* to, const std::uint8_t* from, std::size_t pixels,
                                      Store store) {
    const hn::ScalableTag<std::uint8_t> d8;
    const auto both = [](int chroma, int luma) HWY_ATTR {
        return _mm256_set1_epi16(static_cast<std::int16_t>(luma << 8 | (chroma & 0xFF)));
    };
    const auto spreadU =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 1, 0, 3, 4, 5, 4, 7, 8, 9, 8, 11, 12, 13, 12, 15));
    const auto spreadV =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(2, 1, 2, 3, 6, 5, 6, 7, 10, 9, 10, 11, 14, 13, 14, 15));
    const auto sign = _mm256_set1_epi8(-128), opaque = _mm256_set1_epi16(255);
    const auto bias = _mm256_set1_epi16(static_cast<std::int16_t>(33376));
    const auto fraction = [=](auto sum)
                              HWY_ATTR { return _mm256_srli_epi16(_mm256_add_epi16(sum, bias), 8); };
    std::size_t x = 0;
    for (; x + 16 <= pixels; x += 16) {
        const auto loaded = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from + 2 * x));
        // The quarters 0 2 1 3: interleaving within blocks then gives whole runs of pixels.
        const auto pixel = _mm256_xor_si256(_mm256_permute4x64_epi64(loaded, 0xD8), sign);
        const auto uy = _mm256_shuffle_epi8(pixel, spreadU), vy = _mm256_shuffle_epi8(pixel, spreadV);
        const auto sumG =
            _mm256_sub_epi16(_mm256_maddubs_epi16(both(48, 42), vy), _mm256_maddubs_epi16(both(100, 0), uy));
        const auto r = _mm256_add_epi16(_mm256_maddubs_epi16(both(1, 1), vy),
                                        fraction(_mm256_maddubs_epi16(both(153, 42), vy)));
        const auto g =
            _mm256_add_epi16(_mm256_maddubs_epi16(_mm256_xor_si256(vy, sign), both(-1, 1)), fraction(sumG));
        const auto b = _mm256_add_epi16(_mm256_maddubs_epi16(both(2, 1), uy),
                                        fraction(_mm256_maddubs_epi16(both(4, 42), uy)));
        const auto ag = _mm256_packus_epi16(opaque, g), rb = _mm256_packus_epi16(r, b);
        const auto ar = _mm256_unpacklo_epi8(ag, rb), gb = _mm256_unpackhi_epi8(ag, rb);
        store(hn::Vec<decltype(d8)>{_mm256_unpacklo_epi16(ar, gb)}, d8, to + 4 * x);
        store(hn::Vec<decltype(d8)>{_mm256_unpackhi_epi16(ar, gb)}, d8, to + 4 * x + 32);
    }
    return x;
}
#else
template <class Store>
HWY_INLINE std::size_t ConvertMost422(std::uint8_t* to, const std::uint8_t* from, std::size_t pixels, Store) {
    const hn::ScalableTag<std::uint16_t> du;
    const hn::RebindToSigned<decltype(du)> di;
    const hn::Repartition<std::uint8_t, decltype(du)> d8;
    const std::size_t lanes = hn::Lanes(du);
    const auto even = hn::BitCast(du, hn::LoadDup128(d8, evenOfPair));
    const auto odd = hn::BitCast(du, hn::LoadDup128(d8, oddOfPair));
    const auto low = hn::Set(du, 0xFF);
    const auto times = [di](auto v, int factor)
                           HWY_ATTR { return hn::Mul(v, hn::Set(di, static_cast<std::int16_t>(factor))); };
    const auto byte = [di, du](auto v) HWY_ATTR {
        return hn::BitCast(du, hn::Min(hn::Max(v, hn::Zero(di)), hn::Set(di, 255)));
    };
    std::size_t x = 0;
    for (; x + lanes <= pixels; x += lanes) {
        const auto pixel = hn::LoadU(du, reinterpret_cast<const std::uint16_t*>(from + 2 * x));
        const auto chroma = hn::And(pixel, low);
        const auto c = hn::Sub(hn::BitCast(di, hn::ShiftRight<8>(pixel)), hn::Set(di, 16));
        const auto d = hn::Sub(hn::BitCast(di, hn::TableLookupBytes(chroma, even)), hn::Set(di, 128));
        const auto e = hn::Sub(hn::BitCast(di, hn::TableLookupBytes(chroma, odd)), hn::Set(di, 128));
        const auto t = times(c, 42);
        const auto r = hn::Add(hn::Add(c, e), hn::ShiftRight<8>(hn::Add(t, times(e, 153))));
        const auto g =
            hn::Add(hn::Sub(c, e), hn::ShiftRight<8>(hn::Add(hn::Sub(t, times(d, 100)), times(e, 48))));
        const auto b = hn::Add(hn::Add(c, hn::Add(d, d)), hn::ShiftRight<8>(hn::Add(t, times(d, 4))));
        hn::StoreInterleaved2(hn::Or(low, hn::ShiftLeft<8>(byte(r))),
                              hn::Or(byte(g), hn::ShiftLeft<8>(byte(b))), du,
                              reinterpret_cast<std::uint16_t*>(to + 4 * x));
    }
    return x;
}
#endif

void convert422ToARGB(std::uint8_t* to, const std::uint8_t* from, std::size_t pixels, Stores stores) {
    const std::size_t done =
        WithStores(stores, to, [=](auto store) HWY_ATTR { return ConvertMost422(to, from, pixels, store); });
    reference::convert422ToARGB(to + 4 * done, from + 2 * done, pixels - done);
}

void convertARGBTo422(std::uint8_t* to, const std::uint8_t* from, std::size_t pairs) {
    const hn::ScalableTag<std::uint16_t> du;
    const hn::RebindToSigned<decltype(du)> di;
    const hn::Repartition<std::uint8_t, decltype(du)> d8;
    const std::size_t lanes = hn::Lanes(du);
    const auto other = hn::BitCast(du, hn::LoadDup128(d8, otherOfPair));
    const auto low = hn::Set(du, 0xFF);
    alignas(16) constexpr std::int16_t reds[8] = {-38, 112, -38, 112, -38, 112, -38, 112};
    alignas(16) constexpr std::int16_t greens[8] = {-74, -94, -74, -94, -74, -94, -74, -94};
    alignas(16) constexpr std::int16_t blues[8] = {112, -18, 112, -18, 112, -18, 112, -18};
    const auto red = hn::LoadDup128(di, reds), green = hn::LoadDup128(di, greens),
               blue = hn::LoadDup128(di, blues);
    const auto times = [du](auto v, unsigned factor)
                           HWY_ATTR { return hn::Mul(v, hn::Set(du, static_cast<std::uint16_t>(factor))); };
    // Vectors are passed, never captured: those of SVE have no size.
    const auto mean = [di](auto v, auto other) HWY_ATTR {  // of a pair, in both of its lanes
        return hn::BitCast(di, hn::ShiftRight<1>(hn::Add(v, hn::TableLookupBytes(v, other))));
    };
    std::size_t x = 0;
    for (; x + lanes <= 2 * pairs; x += lanes) {
        hn::Vec<decltype(du)> alphaRed, greenBlue;
        hn::LoadInterleaved2(du, reinterpret_cast<const std::uint16_t*>(from + 4 * x), alphaRed, greenBlue);
        const auto r = hn::ShiftRight<8>(alphaRed), g = hn::And(greenBlue, low),
                   b = hn::ShiftRight<8>(greenBlue);
        const auto sum = hn::Add(hn::Add(times(r, 66), times(g, 129)), times(b, 25));
        const auto luma = hn::Add(hn::ShiftRight<8>(sum), hn::Set(du, 16));
        const auto chroma = hn::Add(hn::Add(hn::Mul(mean(r, other), red), hn::Mul(mean(g, other), green)),
                                    hn::Mul(mean(b, other), blue));
        const auto shifted = hn::BitCast(du, hn::Add(hn::ShiftRight<8>(chroma), hn::Set(di, 128)));
        hn::StoreU(hn::Or(hn::And(shifted, low), hn::ShiftLeft<8>(luma)), du,
                   reinterpret_cast<std::uint16_t*>(to + 2 * x));
    }
    reference::convertARGBTo422(to + 2 * x, from + 4 * x, pairs - x / 2);
}

#endif
}  // namespace kestrel::detail::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kestrel::detail {

HWY_EXPORT(shuffleBytes);
HWY_EXPORT(maskBytes);
HWY_EXPORT(samplePixels);
HWY_EXPORT(convert422ToARGB);
HWY_EXPORT(convertARGBTo422);

void shuffleBytes(std::uint8_t* to, const std::uint8_t* from, std::size_t bytes, const BytePattern& order,
                  Stores stores) {
    HWY_DYNAMIC_DISPATCH(shuffleBytes)(to, from, bytes, order, stores);
}

void copyBytes(std::uint8_t* to, const std::uint8_t* from, std::size_t bytes, Stores stores) {
    if (stores == Stores::cached)
        std::memmove(to, from, bytes);
    else
        shuffleBytes(to, from, bytes, componentOrder<std::uint8_t, 4>({0, 1, 2, 3}), stores);
}

void maskBytes(std::uint8_t* bytes, std::size_t count, const BytePattern& keep, const BytePattern& flip) {
    HWY_DYNAMIC_DISPATCH(maskBytes)(bytes, count, keep, flip);
}

void samplePixels(std::uint32_t* to, const std::uint32_t* from, std::size_t available,
                  const std::uint32_t* columns, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(samplePixels)(to, from, available, columns, count);
}

#define KESTREL_RATIO(Function, Pixel, Kernel)                       \
    HWY_EXPORT(Kernel);                                              \
    void Function(Pixel* to, const Pixel* from, std::size_t count) { \
        HWY_DYNAMIC_DISPATCH(Kernel)(to, from, count);               \
    }
KESTREL_RATIO(halvePixels, std::uint32_t, halve32)
KESTREL_RATIO(halvePixels, std::uint64_t, halve64)
KESTREL_RATIO(doublePixels, std::uint32_t, double32)
KESTREL_RATIO(doublePixels, std::uint64_t, double64)
#undef KESTREL_RATIO

void convert422ToARGB(std::uint8_t* to, const std::uint8_t* from, std::size_t pixels, Stores stores) {
    HWY_DYNAMIC_DISPATCH(convert422ToARGB)(to, from, pixels, stores);
}

void convertARGBTo422(std::uint8_t* to, const std::uint8_t* from, std::size_t pairs) {
    HWY_DYNAMIC_DISPATCH(convertARGBTo422)(to, from, pairs);
}

}  // namespace kestrel::detail
#endif
