// One pass of compares turns each window of a document into four bit sets, after which finding the end of
// a text, a value or a name is a shift and a count of zeros. The scalar twin defines the bits.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kestrel/platform/XmlScan.cpp"  // compiled once per vector target
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <kestrel/platform/detail/XmlNames.h>
#include <kestrel/platform/detail/XmlScan.h>

#include <algorithm>

#ifndef KESTREL_XML_NAME_TABLES  // what the targets share
#define KESTREL_XML_NAME_TABLES
namespace kestrel::detail {
namespace {

/// Bit h of rows[l] says whether the byte h * 16 + l belongs to names; columns[h] is that bit.
struct NameTables {
    std::uint8_t rows[16];
    std::uint8_t columns[16];
};
constexpr NameTables nameTables = [] {
    NameTables tables{};
    for (unsigned c = 0; c < 0x80; ++c) {
        const auto bit = static_cast<std::uint8_t>(1u << c / 16);
        tables.columns[c / 16] = bit;
        if (isXmlByte(static_cast<char>(c), xmlName)) tables.rows[c % 16] |= bit;
    }
    return tables;
}();

}  // namespace
}  // namespace kestrel::detail
#endif

HWY_BEFORE_NAMESPACE();
namespace kestrel::detail::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR
/// hn::Or of masks that exclude each other. For SVE, g++ 12 makes of hn::Or a choice lane by lane, and forgets
/// the lanes from the 17th on.
template <class Mask>
HWY_INLINE Mask Either(Mask a, Mask b) {
#if HWY_HAVE_SCALABLE
    return hn::Not(hn::ExclusiveNeither(a, b));
#else
    return hn::Or(a, b);
#endif
}
#endif

void classify(const char* bytes, std::size_t size, XmlMasks& masks) {
#if HWY_TARGET != HWY_SCALAR
    const std::size_t whole = size / 64 * 64;
    const hn::CappedTag<std::uint8_t, 64> d;
    const hn::RebindToSigned<decltype(d)> di;
    const std::size_t lanes = hn::Lanes(d);
    const auto* input = reinterpret_cast<const std::uint8_t*>(bytes);
    auto* markup = reinterpret_cast<std::uint8_t*>(masks.markup.data());
    auto* quotes = reinterpret_cast<std::uint8_t*>(masks.quotes.data());
    auto* nameEnds = reinterpret_cast<std::uint8_t*>(masks.nameEnds.data());
    auto* suspects = reinterpret_cast<std::uint8_t*>(masks.suspects.data());
    const auto rows = hn::LoadDup128(d, nameTables.rows);
    const auto columns = hn::LoadDup128(d, nameTables.columns);
    const auto lowHalf = hn::Set(d, std::uint8_t{0x0F});
    for (std::size_t i = 0; i < whole; i += lanes) {
        const auto v = hn::LoadU(d, input + i);
        const auto is = [&](char c) HWY_ATTR { return hn::Eq(v, hn::Set(d, static_cast<std::uint8_t>(c))); };
        const auto opens = Either(is('<'), is('&'));
        const auto blank = Either(is('\n'), Either(is('\t'), is('\r')));
        // As signed numbers, control characters and bytes from 0x80 up are all below the blank.
        const auto low = hn::RebindMask(d, hn::Lt(hn::BitCast(di, v), hn::Set(di, std::int8_t{' '})));
        hn::StoreMaskBits(d, Either(opens, is(']')), markup + i / 8);
        hn::StoreMaskBits(d, Either(opens, Either(is('"'), is('\''))), quotes + i / 8);
        const auto row = hn::TableLookupBytes(rows, hn::And(v, lowHalf));
        const auto column = hn::TableLookupBytes(columns, hn::ShiftRight<4>(v));
        hn::StoreMaskBits(d, hn::Eq(hn::And(row, column), hn::Zero(d)), nameEnds + i / 8);
        hn::StoreMaskBits(d, hn::AndNot(blank, low), suspects + i / 8);
    }
    if (whole == size) return;
    XmlMasks tail;  // fewer than 64 bytes: the reference itself
    classifyXmlReference(bytes + whole, size - whole, tail);
    masks.markup[whole / 64] = tail.markup[0];
    masks.quotes[whole / 64] = tail.quotes[0];
    masks.nameEnds[whole / 64] = tail.nameEnds[0];
    masks.suspects[whole / 64] = tail.suspects[0];
#else
    classifyXmlReference(bytes, size, masks);
#endif
}

}  // namespace
}  // namespace kestrel::detail::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kestrel::detail {

void classifyXmlReference(const char* bytes, std::size_t size, XmlMasks& masks) {
    for (std::size_t block = 0; block < size; block += 64) {
        std::uint64_t markup = 0, quotes = 0, nameEnds = 0, suspects = 0;
        for (std::size_t i = 0; i < std::min<std::size_t>(64, size - block); ++i) {
            const auto c = static_cast<unsigned char>(bytes[block + i]);
            const std::uint64_t bit = std::uint64_t{1} << i;
            if (c == '<' || c == '&' || c == ']') markup |= bit;
            if (c == '<' || c == '&' || c == '"' || c == '\'') quotes |= bit;
            if (!isXmlByte(bytes[block + i], xmlName)) nameEnds |= bit;
            if (c >= 0x80 || !isXmlCharacter(c)) suspects |= bit;
        }
        masks.markup[block / 64] = markup;
        masks.quotes[block / 64] = quotes;
        masks.nameEnds[block / 64] = nameEnds;
        masks.suspects[block / 64] = suspects;
    }
}

HWY_EXPORT(classify);
void classifyXml(const char* bytes, std::size_t size, XmlMasks& masks) {
    HWY_DYNAMIC_DISPATCH(classify)(bytes, size, masks);
}

std::size_t decodeUtf8(const char* text, const char* end, char32_t& character) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const auto follows = [&](std::size_t i) { return (byte(i) & 0xC0) == 0x80; };
    const auto left = static_cast<std::size_t>(end - text);
    const unsigned first = byte(0);
    if (first < 0x80) {
        character = first;
        return 1;
    }
    if (first < 0xE0) {
        if (first < 0xC2 || left < 2 || !follows(1)) return 0;
        character = (first & 0x1Fu) << 6 | (byte(1) & 0x3Fu);
        return 2;
    }
    if (first < 0xF0) {
        if (left < 3 || !follows(1) || !follows(2)) return 0;
        character = (first & 0x0Fu) << 12 | (byte(1) & 0x3Fu) << 6 | (byte(2) & 0x3Fu);
        return character >= 0x800 && (character < 0xD800 || character > 0xDFFF) ? 3 : 0;
    }
    if (first > 0xF4 || left < 4 || !follows(1) || !follows(2) || !follows(3)) return 0;
    character = (first & 0x07u) << 18 | (byte(1) & 0x3Fu) << 12 | (byte(2) & 0x3Fu) << 6 | (byte(3) & 0x3Fu);
    return character >= 0x10000 && character <= 0x10FFFF ? 4 : 0;
}

void XmlScanner::nextWindow() {
    m_window = m_windowEnd;
    const auto size = std::min(XmlMasks::windowBytes, static_cast<std::size_t>(m_end - m_window));
    classifyXml(m_window, size, m_masks);
    m_windowEnd = m_window + size;
    if (!m_invalid) checkCharacters();
}

// Looks only at the bytes that the window's bit set names: ASCII text costs a test for each 64 bytes.
void XmlScanner::checkCharacters() {
    const auto size = static_cast<std::size_t>(m_windowEnd - m_window);
    for (std::size_t block = 0; block < size; block += 64) {
        std::uint64_t bits = m_masks.suspects[block / 64];
        while (bits) {
            const char* place = m_window + block + std::countr_zero(bits);
            bits &= bits - 1;
            if (place < m_checked) continue;  // a later byte of a sequence that was decoded already
            char32_t character = 0;
            const std::size_t length = decodeUtf8(place, m_end, character);
            if (length == 0 || !isXmlCharacter(character)) {
                m_invalid = place;
                return;
            }
            m_checked = place + length;
        }
    }
}

}  // namespace kestrel::detail
#endif
