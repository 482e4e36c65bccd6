// The armour by vectors. Both ways work in blocks of 16 bytes of text, which hold 12 bytes of payload.
// Source: W. Mula, D. Lemire, "Faster Base64 Encoding and Decoding Using AVX2 Instructions", 2018, for the
// spreading of 6-bit values over bytes; the alphabet's lookups are our own.
#include <kestrel/files/detail/Armour.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kestrel/files/detail/Armour.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kestrel::detail::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR  // no blocks there

void encode(const std::uint8_t* bytes, std::size_t groups, char* text) {
    encodeArmourReference(bytes, groups, text);
}
void decode(const char* text, std::size_t groups, std::uint8_t* bytes) {
    decodeArmourReference(text, groups, bytes);
}

#else

using D8 = hn::ScalableTag<std::uint8_t>;
using D16 = hn::Repartition<std::uint16_t, D8>;
using D32 = hn::Repartition<std::uint32_t, D8>;
using V8 = hn::Vec<D8>;

#if HWY_TARGET == HWY_AVX2 || HWY_MAX_BYTES == 16

/// Loads the 12 bytes at 12 k into the start of each block k; its other four bytes are any.
HWY_INLINE V8 loadBlocks(const std::uint8_t* bytes) {
#if HWY_MAX_BYTES == 16
    return hn::LoadU(D8(), bytes);
#else  // cheaper than moving lanes between blocks
    const hn::Half<D8> half;
    return hn::Combine(D8(), hn::LoadU(half, bytes + 12), hn::LoadU(half, bytes));
#endif
}

/// Stores the first 12 bytes of each block k at 12 k. What it writes behind them, within a whole vector, is
/// any.
HWY_INLINE void storeBlocks(V8 blocks, std::uint8_t* bytes) {
#if HWY_MAX_BYTES == 16
    hn::StoreU(blocks, D8(), bytes);
#else
    const hn::Half<D8> half;
    hn::StoreU(hn::LowerHalf(half, blocks), half, bytes);
    hn::StoreU(hn::UpperHalf(half, blocks), half, bytes + 12);
#endif
}

#else

constexpr std::size_t maxLanes32 = HWY_MAX_BYTES / 4;

HWY_INLINE V8 loadBlocks(const std::uint8_t* bytes) {
    const D32 d32;
    alignas(HWY_MAX_BYTES) std::int32_t from[maxLanes32] = {};
    for (std::size_t i = 0; i < hn::Lanes(d32); ++i) from[i] = static_cast<std::int32_t>(i / 4 * 3 + i % 4);
    const auto lanes = hn::BitCast(d32, hn::LoadU(D8(), bytes));
    return hn::BitCast(D8(), hn::TableLookupLanes(lanes, hn::SetTableIndices(d32, from)));
}

HWY_INLINE void storeBlocks(V8 blocks, std::uint8_t* bytes) {
    const D32 d32;
    alignas(HWY_MAX_BYTES) std::int32_t from[maxLanes32] = {};
    for (std::size_t i = 0; i < hn::Lanes(d32) / 4 * 3; ++i)
        from[i] = static_cast<std::int32_t>(i / 3 * 4 + i % 3);
    const auto lanes = hn::TableLookupLanes(hn::BitCast(d32, blocks), hn::SetTableIndices(d32, from));
    hn::StoreU(hn::BitCast(D8(), lanes), D8(), bytes);
}

#endif

/// Four 6-bit values, one a byte, of every three bytes in each block's first twelve.
HWY_INLINE V8 splitGroups(V8 blocks) {
    const D8 d8;
    const D16 d16;
    const D32 d32;
    // Each 32-bit lane gets the group's bytes as 1 0 2 1, so that every value lies whole in a 16-bit lane.
    alignas(16) static constexpr std::uint8_t order[16] = {1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10};
    const auto lanes = hn::BitCast(d32, hn::TableLookupBytes(blocks, hn::LoadDup128(d8, order)));
    const auto ac = hn::BitCast(d16, hn::And(lanes, hn::Set(d32, 0x0FC0FC00)));    // values 0 and 2
    const auto bd = hn::BitCast(d16, hn::And(lanes, hn::Set(d32, 0x003F03F0)));    // values 1 and 3
    const auto low = hn::MulHigh(ac, hn::BitCast(d16, hn::Set(d32, 0x04000040)));  // down by 10 and 6
    const auto high = hn::Mul(bd, hn::BitCast(d16, hn::Set(d32, 0x01000010)));     // up by 4 and 8
    return hn::BitCast(d8, hn::Or(low, high));
}

/// The characters of 6-bit values: each range of the alphabet has one distance from its values.
HWY_INLINE V8 charactersOf(V8 values) {
    const D8 d8;
    const hn::RebindToSigned<D8> di8;
    // 0, 1, 2..11, 12..37 and 38..63 select the entries 0, 1, 2..11, 12 and 13.
    alignas(16) static constexpr std::uint8_t distance[16] = {42, 44, 46, 46, 46, 46, 46, 46,
                                                              46, 46, 46, 46, 53, 59, 0,  0};
    const auto small = hn::BitCast(
        d8, hn::VecFromMask(di8, hn::Gt(hn::BitCast(di8, values), hn::Set(di8, std::int8_t{37}))));
    const auto entry = hn::Sub(hn::Min(values, hn::Set(d8, std::uint8_t{12})), small);  // the mask is -1
    return hn::Add(values, hn::TableLookupBytes(hn::LoadDup128(d8, distance), entry));
}

/// The 6-bit values of characters; 0 for those outside the alphabet.
HWY_INLINE V8 valuesOf(V8 text) {
    const D8 d8;
    const D16 d16;
    // By high digit: '-' | '0'..'9' | 'A'..'O' | 'P'..'Z' | 'a'..'o' | 'p'..'z'. '*' is as good as foreign.
    alignas(16) static constexpr std::uint8_t distance[16] = {0, 0, 44, 46, 53, 53, 59, 59,
                                                              0, 0, 0,  0,  0,  0,  0,  0};
    alignas(16) static constexpr std::uint8_t row[16] = {0, 0, 1, 2, 4, 8, 4, 8, 0, 0, 0, 0, 0, 0, 0, 0};
    // By low digit: the rows in which that column is part of the alphabet.
    alignas(16) static constexpr std::uint8_t column[16] = {
        2 | 8,     2 | 4 | 8, 2 | 4 | 8, 2 | 4 | 8, 2 | 4 | 8, 2 | 4 | 8, 2 | 4 | 8, 2 | 4 | 8,
        2 | 4 | 8, 2 | 4 | 8, 4 | 8,     4,         4,         4 | 1,     4,         4};
    const auto digit = hn::Set(d8, std::uint8_t{15});
    const auto high = hn::And(hn::BitCast(d8, hn::ShiftRight<4>(hn::BitCast(d16, text))), digit);
    const auto inRow = hn::TableLookupBytes(hn::LoadDup128(d8, row), high);
    const auto inColumn = hn::TableLookupBytes(hn::LoadDup128(d8, column), hn::And(text, digit));
    const auto values = hn::Sub(text, hn::TableLookupBytes(hn::LoadDup128(d8, distance), high));
    const auto foreign = hn::VecFromMask(d8, hn::Eq(hn::And(inRow, inColumn), hn::Zero(d8)));
    return hn::AndNot(foreign, values);
}

/// Three bytes of every four 6-bit values, at the start of each block; the last four bytes are any.
HWY_INLINE V8 mergeGroups(V8 values) {
    const D8 d8;
#if HWY_TARGET == HWY_AVX2  // two multiplications that add neighbours do what takes seven steps elsewhere
    const hn::Vec<D16> twelve{_mm256_maddubs_epi16(values.raw, _mm256_set1_epi32(0x01400140))};
    const hn::Vec<D32> merged{_mm256_madd_epi16(twelve.raw, _mm256_set1_epi32(0x00011000))};
#elif HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    const hn::Vec<D16> twelve{_mm512_maddubs_epi16(values.raw, _mm512_set1_epi32(0x01400140))};
    const hn::Vec<D32> merged{_mm512_madd_epi16(twelve.raw, _mm512_set1_epi32(0x00011000))};
#else
    const D16 d16;
    const D32 d32;
    const auto v16 = hn::BitCast(d16, values);
    const auto twelve =
        hn::Or(hn::And(hn::ShiftLeft<6>(v16), hn::Set(d16, std::uint16_t{0x0FC0})), hn::ShiftRight<8>(v16));
    const auto v32 = hn::BitCast(d32, twelve);
    const auto merged = hn::Or(hn::ShiftLeft<12>(v32), hn::ShiftRight<16>(v32));  // the top byte is any
#endif
    alignas(16) static constexpr std::uint8_t order[16] = {2, 1,  0,  6,  5, 4, 10, 9,
                                                           8, 14, 13, 12, 0, 0, 0,  0};
    return hn::TableLookupBytes(hn::BitCast(d8, merged), hn::LoadDup128(d8, order));
}

void encode(const std::uint8_t* bytes, std::size_t groups, char* text) {
    const D8 d8;
    const std::size_t step = hn::Lanes(d8) / 4;  // groups a vector
    auto* out = reinterpret_cast<std::uint8_t*>(text);
    const auto encodeVector = [&](std::size_t k) HWY_ATTR {
        const auto values = splitGroups(loadBlocks(bytes + 3 * step * k));
        hn::StoreU(charactersOf(values), d8, out + 4 * step * k);
    };
    // A whole vector is read though only three quarters of it are used: as long as one is there.
    while (groups * 3 >= hn::Lanes(d8)) {
        const std::size_t vectors = groups * 3 >= 4 * hn::Lanes(d8) ? 4 : 1;
        if (vectors == 4) encodeVector(3), encodeVector(2), encodeVector(1);
        encodeVector(0);
        bytes += 3 * step * vectors;
        out += 4 * step * vectors;
        groups -= step * vectors;
    }
    encodeArmourReference(bytes, groups, reinterpret_cast<char*>(out));
}

void decode(const char* text, std::size_t groups, std::uint8_t* bytes) {
    const D8 d8;
    const std::size_t step = hn::Lanes(d8) / 4;
    const auto* in = reinterpret_cast<const std::uint8_t*>(text);
    const auto decodeVector = [&](std::size_t k) HWY_ATTR {
        storeBlocks(mergeGroups(valuesOf(hn::LoadU(d8, in + 4 * step * k))), bytes + 3 * step * k);
    };
    // A whole vector is written though only three quarters of it are meant; the next one writes the rest.
    while (groups * 3 >= hn::Lanes(d8)) {
        const std::size_t vectors = groups * 3 >= 4 * hn::Lanes(d8) ? 4 : 1;
        decodeVector(0);
        if (vectors == 4) decodeVector(1), decodeVector(2), decodeVector(3);
        in += 4 * step * vectors;
        bytes += 3 * step * vectors;
        groups -= step * vectors;
    }
    decodeArmourReference(reinterpret_cast<const char*>(in), groups, bytes);
}

#endif

}  // namespace kestrel::detail::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kestrel::detail {

HWY_EXPORT(encode);
HWY_EXPORT(decode);

constexpr std::size_t fewGroups = 6;  // less than any vector takes

void encodeArmour(const std::uint8_t* bytes, std::size_t groups, char* text) noexcept {
    if (groups < fewGroups) return encodeArmourReference(bytes, groups, text);
    HWY_DYNAMIC_DISPATCH(encode)(bytes, groups, text);
}

void decodeArmour(const char* text, std::size_t groups, std::uint8_t* bytes) noexcept {
    if (groups < fewGroups) return decodeArmourReference(text, groups, bytes);
    HWY_DYNAMIC_DISPATCH(decode)(text, groups, bytes);
}

void encodeArmourReference(const std::uint8_t* bytes, std::size_t groups, char* text) noexcept {
    for (; groups > 0; --groups, bytes += 3, text += 4) {
        const unsigned b0 = bytes[0], b1 = bytes[1], b2 = bytes[2];
        text[0] = encodeVals[b0 >> 2];
        text[1] = encodeVals[((b0 & 3) << 4) + (b1 >> 4)];
        text[2] = encodeVals[((b1 & 15) << 2) + (b2 >> 6)];
        text[3] = encodeVals[b2 & 63];
    }
}

void decodeArmourReference(const char* text, std::size_t groups, std::uint8_t* bytes) noexcept {
    const auto value = [](char c) -> unsigned { return decodeVals.values[static_cast<unsigned char>(c)]; };
    for (; groups > 0; --groups, text += 4, bytes += 3) {
        const unsigned d0 = value(text[0]), d1 = value(text[1]), d2 = value(text[2]), d3 = value(text[3]);
        bytes[0] = static_cast<std::uint8_t>((d0 << 2) | (d1 >> 4));
        bytes[1] = static_cast<std::uint8_t>((d1 << 4) | (d2 >> 2));
        bytes[2] = static_cast<std::uint8_t>((d2 << 6) | d3);
    }
}

}  // namespace kestrel::detail
#endif
