// UTF-16 to UTF-8 and back. A vector of ASCII is narrowed or widened at once. Other text becomes UTF-8 four
// units at a time: each lane builds the one to three bytes of its unit, and a shuffle from a table closes the
// gaps. Surrogates, and everything on the way back, go character by character. The well-formed sequences are
// those of the Unicode standard, table 3-7.
#include <kestrel/platform/detail/Utf8.h>

#include <kestrel/platform/detail/AsciiRun.h>

#include <array>
#include <cstdint>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kestrel/platform/Utf8.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#ifndef KESTREL_UTF8_TABLE
#define KESTREL_UTF8_TABLE
namespace kestrel::detail {

/// For four 32-bit lanes that hold one to three bytes each: the shuffle that moves those bytes together, and
/// in its last place their number. Bits 0 to 3 of the index tell which lanes hold three, 4 to 7 which one.
inline constexpr auto closeGaps = [] {
    std::array<std::array<std::uint8_t, 16>, 256> table{};
    for (unsigned index = 0; index < 256; ++index) {
        std::uint8_t count = 0;
        for (unsigned lane = 0; lane < 4; ++lane) {
            const unsigned size = index >> lane & 1 ? 3 : index >> lane & 16 ? 1 : 2;
            for (unsigned i = 0; i < size; ++i)
                table[index][count++] = static_cast<std::uint8_t>(4 * lane + i);
        }
        table[index][15] = count;
    }
    return table;
}();

}  // namespace kestrel::detail
#endif

HWY_BEFORE_NAMESPACE();
namespace kestrel::detail::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// Writes the character at unit as UTF-8 and moves both on. Up to three bytes are always written, and the
/// pointer moves by those that count: lengths follow no pattern that a branch could be predicted by.
HWY_INLINE void encodeNext(const UniChar*& unit, const UniChar* end, std::uint8_t*& byte) {
    unsigned character = *unit++;
    if ((character & 0xF800) == 0xD800) {
        if (character < 0xDC00 && unit != end && (*unit & 0xFC00) == 0xDC00) {
            character = 0x10000 + ((character & 0x3FF) << 10) + (*unit++ & 0x3FFu);
            *byte++ = static_cast<std::uint8_t>(0xF0 | character >> 18);
            *byte++ = static_cast<std::uint8_t>(0x80 | (character >> 12 & 0x3F));
            *byte++ = static_cast<std::uint8_t>(0x80 | (character >> 6 & 0x3F));
            *byte++ = static_cast<std::uint8_t>(0x80 | (character & 0x3F));
            return;
        }
        character = 0xFFFD;
    }
    const bool isLong = character >= 0x800;
    const unsigned middle = 0x80 | (character >> 6 & 0x3F);
    const unsigned last = 0x80 | (character & 0x3F);
    const unsigned first = isLong ? 0xE0 | character >> 12 : 0xC0 | character >> 6;
    byte[0] = static_cast<std::uint8_t>(character < 0x80 ? character : first);
    byte[1] = static_cast<std::uint8_t>(isLong ? middle : last);
    byte[2] = static_cast<std::uint8_t>(last);
    byte += 1 + (character >= 0x80) + isLong;
}

/// Reads the character at byte into UTF-16 and moves both on; false when it is malformed.
HWY_INLINE bool decodeNext(const std::uint8_t*& byte, const std::uint8_t* end, UniChar*& unit) {
    const unsigned first = *byte;
    const auto left = static_cast<std::size_t>(end - byte);
    const auto bits = [&](std::size_t i) { return byte[i] & 0x3Fu; };
    const auto trails = [&](std::size_t i) { return (byte[i] & 0xC0) == 0x80; };
    if (first < 0x80) {
        *unit++ = static_cast<UniChar>(first);
        byte += 1;
        return true;
    }
    if (first < 0xE0) {
        if (first < 0xC2 || left < 2 || !trails(1)) return false;
        *unit++ = static_cast<UniChar>((first & 0x1F) << 6 | bits(1));
        byte += 2;
        return true;
    }
    if (first < 0xF0) {
        if (left < 3 || !trails(1) || !trails(2)) return false;
        const unsigned character = (first & 0x0F) << 12 | bits(1) << 6 | bits(2);
        if (character < 0x800 || (character & 0xF800) == 0xD800) return false;
        *unit++ = static_cast<UniChar>(character);
        byte += 3;
        return true;
    }
    if (first > 0xF4 || left < 4 || !trails(1) || !trails(2) || !trails(3)) return false;
    const unsigned character = (first & 0x07) << 18 | bits(1) << 12 | bits(2) << 6 | bits(3);
    if (character < 0x10000 || character > 0x10FFFF) return false;
    *unit++ = static_cast<UniChar>(0xD7C0 + (character >> 10));
    *unit++ = static_cast<UniChar>(0xDC00 | (character & 0x3FF));
    byte += 4;
    return true;
}

#if HWY_TARGET != HWY_SCALAR
/// Writes four units as UTF-8 and returns the number of bytes, 0 when one of them is a surrogate. Sixteen
/// bytes are always written.
HWY_INLINE std::size_t encodeFour(const UniChar* unit, std::uint8_t* byte) {
    const hn::FixedTag<std::int32_t, 4> d;
    const hn::FixedTag<std::uint16_t, 4> d16;
    const hn::FixedTag<std::uint8_t, 16> d8;
    const auto set = [&](int value) HWY_ATTR { return hn::Set(d, value); };
    const auto character =
        hn::BitCast(d, hn::PromoteTo(hn::RebindToUnsigned<decltype(d)>(), hn::LoadU(d16, unit)));
    if (!hn::AllFalse(d, hn::Eq(hn::And(character, set(0xF800)), set(0xD800)))) return 0;
    const auto isLong = hn::Gt(character, set(0x7FF));
    const auto isAscii = hn::Lt(character, set(0x80));
    const auto last = hn::Or(hn::And(character, set(0x3F)), set(0x80));
    const auto high = hn::ShiftRight<6>(character);
    const auto two = hn::Or(hn::Or(high, set(0xC0)), hn::ShiftLeft<8>(last));
    const auto middle = hn::Or(hn::And(high, set(0x3F)), set(0x80));
    const auto three = hn::Or(hn::Or(hn::ShiftRight<12>(character), set(0xE0)),
                              hn::Or(hn::ShiftLeft<8>(middle), hn::ShiftLeft<16>(last)));
    const auto bytes = hn::IfThenElse(isLong, three, hn::IfThenElse(isAscii, character, two));
    std::uint8_t longBits[8], asciiBits[8];
    hn::StoreMaskBits(d, isLong, longBits);
    hn::StoreMaskBits(d, isAscii, asciiBits);
    const std::uint8_t* gaps = closeGaps[(longBits[0] & 15u) | (asciiBits[0] & 15u) << 4].data();
    hn::StoreU(hn::TableLookupBytes(hn::BitCast(d8, bytes), hn::LoadU(d8, gaps)), d8, byte);
    return gaps[15];
}
#endif

std::size_t encode(const UniChar* unit, std::size_t count, std::uint8_t* const bytes) {
    const hn::ScalableTag<std::uint16_t> d16;
    const hn::RebindToSigned<decltype(d16)> di16;
    const hn::Rebind<std::uint8_t, decltype(d16)> d8;
    const std::size_t lanes = hn::Lanes(d16);
    const auto limit = hn::Set(d16, 0x7F);
    const UniChar* const end = unit + count;
    std::uint8_t* byte = bytes;
    while (static_cast<std::size_t>(end - unit) >= 2 * lanes) {
        const auto low = hn::LoadU(d16, unit);
        const auto high = hn::LoadU(d16, unit + lanes);
        if (hn::AllFalse(d16, hn::Gt(hn::Or(low, high), limit))) {
            hn::StoreU(hn::DemoteTo(d8, hn::BitCast(di16, low)), d8, byte);
            hn::StoreU(hn::DemoteTo(d8, hn::BitCast(di16, high)), d8, byte + lanes);
            unit += 2 * lanes;
            byte += 2 * lanes;
            continue;
        }
        const UniChar* const blockEnd = unit + 2 * lanes;
#if HWY_TARGET != HWY_SCALAR
        // Two units more have room for what four of them may write too much.
        while (unit < blockEnd && end - unit >= 6) {
            if (const std::size_t written = encodeFour(unit, byte)) {
                unit += 4;
                byte += written;
            } else {
                for (const UniChar* const fourEnd = unit + 4; unit < fourEnd;) encodeNext(unit, end, byte);
            }
        }
#endif
        while (unit < blockEnd) encodeNext(unit, end, byte);
    }
    while (unit < end) encodeNext(unit, end, byte);
    return static_cast<std::size_t>(byte - bytes);
}

std::size_t decode(const std::uint8_t* byte, std::size_t count, UniChar* const units) {
    const hn::ScalableTag<std::uint16_t> d16;
    const hn::Rebind<std::uint8_t, decltype(d16)> d8;
    const std::size_t lanes = hn::Lanes(d16);
    const auto limit = hn::Set(d16, 0x7F);
    const std::uint8_t* const end = byte + count;
    UniChar* unit = units;
    while (static_cast<std::size_t>(end - byte) >= 2 * lanes) {
        const auto low = hn::PromoteTo(d16, hn::LoadU(d8, byte));
        const auto high = hn::PromoteTo(d16, hn::LoadU(d8, byte + lanes));
        if (hn::AllFalse(d16, hn::Gt(hn::Or(low, high), limit))) {
            hn::StoreU(low, d16, unit);
            hn::StoreU(high, d16, unit + lanes);
            byte += 2 * lanes;
            unit += 2 * lanes;
            continue;
        }
        for (const std::uint8_t* const blockEnd = byte + 2 * lanes; byte < blockEnd;)
            if (!decodeNext(byte, end, unit)) return invalidText;
    }
    while (byte < end)
        if (!decodeNext(byte, end, unit)) return invalidText;
    return static_cast<std::size_t>(unit - units);
}

}  // namespace kestrel::detail::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kestrel::detail {

HWY_EXPORT(encode);
HWY_EXPORT(decode);

// For a text of this size, choosing vectors at run time costs more than they gain.
constexpr std::size_t shortText = 128;

std::size_t utf8FromUtf16(std::span<const UniChar> units, char* bytes) noexcept {
    auto* const target = reinterpret_cast<std::uint8_t*>(bytes);
    const bool isShort = units.size() <= shortText;
    if (isShort && narrowAscii(units.data(), units.size(), target) == units.size()) return units.size();
    return HWY_DYNAMIC_DISPATCH(encode)(units.data(), units.size(), target);
}

std::size_t utf16FromUtf8(std::span<const char> bytes, UniChar* units) noexcept {
    const auto* const source = reinterpret_cast<const std::uint8_t*>(bytes.data());
    const bool isShort = bytes.size() <= shortText;
    if (isShort && widenAscii(source, bytes.size(), units) == bytes.size()) return bytes.size();
    return HWY_DYNAMIC_DISPATCH(decode)(source, bytes.size(), units);
}

std::size_t utf8FromUtf16Reference(std::span<const UniChar> units, char* bytes) noexcept {
    const auto put = [&bytes](unsigned byte) { *bytes++ = static_cast<char>(byte); };
    const char* const start = bytes;
    for (std::size_t i = 0; i < units.size(); ++i) {
        unsigned character = units[i];
        if (character >= 0xD800 && character < 0xE000) {
            const bool isPair =
                character < 0xDC00 && i + 1 < units.size() && units[i + 1] >= 0xDC00 && units[i + 1] < 0xE000;
            character = isPair ? 0x10000 + ((character - 0xD800) << 10) + (units[++i] - 0xDC00u) : 0xFFFD;
        }
        if (character < 0x80) {
            put(character);
        } else if (character < 0x800) {
            put(0xC0 | character >> 6);
            put(0x80 | (character & 0x3F));
        } else if (character < 0x10000) {
            put(0xE0 | character >> 12);
            put(0x80 | (character >> 6 & 0x3F));
            put(0x80 | (character & 0x3F));
        } else {
            put(0xF0 | character >> 18);
            put(0x80 | (character >> 12 & 0x3F));
            put(0x80 | (character >> 6 & 0x3F));
            put(0x80 | (character & 0x3F));
        }
    }
    return static_cast<std::size_t>(bytes - start);
}

std::size_t utf16FromUtf8Reference(std::span<const char> bytes, UniChar* units) noexcept {
    struct Length {
        unsigned first, last;  // of the first byte
        unsigned trailing;     // bytes that follow
        unsigned smallest;     // character that needs this length
    };
    static constexpr Length lengths[] = {
        {0x00, 0x7F, 0, 0}, {0xC0, 0xDF, 1, 0x80}, {0xE0, 0xEF, 2, 0x800}, {0xF0, 0xF7, 3, 0x10000}};
    const UniChar* const start = units;
    for (std::size_t i = 0; i < bytes.size();) {
        const unsigned first = static_cast<std::uint8_t>(bytes[i++]);
        const Length* length = nullptr;
        for (const Length& row : lengths)
            if (first >= row.first && first <= row.last) length = &row;
        if (!length || bytes.size() - i < length->trailing) return invalidText;
        unsigned character = first - length->first;
        for (unsigned k = 0; k < length->trailing; ++k) {
            const unsigned next = static_cast<std::uint8_t>(bytes[i++]);
            if ((next & 0xC0) != 0x80) return invalidText;
            character = character << 6 | (next & 0x3F);
        }
        const bool isSurrogate = character >= 0xD800 && character < 0xE000;
        if (character < length->smallest || character > 0x10FFFF || isSurrogate) return invalidText;
        if (character >= 0x10000) {
            *units++ = static_cast<UniChar>(0xD800 + ((character - 0x10000) >> 10));
            character = 0xDC00 + (character & 0x3FF);
        }
        *units++ = static_cast<UniChar>(character);
    }
    return static_cast<std::size_t>(units - start);
}

std::string utf8Of(std::span<const UniChar> units) {
    std::string text(units.size() * maximumUtf8PerUnit, '\0');
    text.resize(utf8FromUtf16(units, text.data()));
    return text;
}

}  // namespace kestrel::detail
#endif
