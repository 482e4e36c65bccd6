// kestrel/platform/detail/XmlScan.h - finds the bytes of an XML document that matter, many at a time.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kestrel::detail {

/// What the bytes of one window of a document are: byte i is bit i % 64 of word i / 64.
struct XmlMasks {
    static constexpr std::size_t windowBytes = 8192;
    using Bits = std::array<std::uint64_t, windowBytes / 64>;

    Bits markup;    ///< < & ] : what can end a run of text
    Bits quotes;    ///< " ' < & : what can end, or may not stand in, an attribute value
    Bits nameEnds;  ///< all but the ASCII characters that may stand in a name
    Bits suspects;  ///< control characters other than tab, line feed and return; bytes from 0x80 up
};

/// Classifies size bytes, at most a window. Bits past size are 0 to the end of the last word.
/// classifyXml takes the processor's widest vectors; the reference is its definition.
void classifyXml(const char* bytes, std::size_t size, XmlMasks& masks);
void classifyXmlReference(const char* bytes, std::size_t size, XmlMasks& masks);

/// Decodes the UTF-8 sequence at text, which is not at end. The number of its bytes, or 0 if it is none
/// (overlong, a surrogate, above U+10FFFF, cut short).
std::size_t decodeUtf8(const char* text, const char* end, char32_t& character);

/// The characters of XML 1.0, production [2].
constexpr bool isXmlCharacter(char32_t c) {
    return c >= 0x20 ? (c < 0xD800 || (c >= 0xE000 && c <= 0x10FFFF && c != 0xFFFE && c != 0xFFFF))
                     : c == '\t' || c == '\n' || c == '\r';
}

/// Walks over a document in UTF-8, forward only, and checks its characters on the way: no search may start
/// before the result of an earlier one.
///
/// Ownership  borrows the document.
class XmlScanner {
public:
    explicit XmlScanner(std::string_view document)
        : m_end(document.data() + document.size()), m_window(document.data()), m_windowEnd(m_window) {}

    /// The first "<", "&" or "]" at or after from, or the end.
    const char* findMarkup(const char* from) { return find(&XmlMasks::markup, from); }
    /// The first quote of either kind, "<" or "&" at or after from, or the end.
    const char* findQuote(const char* from) { return find(&XmlMasks::quotes, from); }

    /// The first byte at or after from that is no ASCII character of a name, or the end.
    const char* findNameEnd(const char* from) { return find(&XmlMasks::nameEnds, from); }

    /// The first place before through that is no UTF-8 or no XML character; null if there is none. A place
    /// that was found stays.
    const char* findInvalid(const char* through) {
        while (m_windowEnd < through) nextWindow();
        return m_invalid && m_invalid < through ? m_invalid : nullptr;
    }

private:
    const char* find(XmlMasks::Bits XmlMasks::*kind, const char* from) {
        for (;;) {
            if (from >= m_windowEnd) {
                if (from >= m_end) return m_end;
                nextWindow();
                continue;
            }
            const auto offset = static_cast<std::size_t>(from - m_window);
            const std::uint64_t bits = (m_masks.*kind)[offset / 64] >> (offset % 64);
            if (bits) return from + std::countr_zero(bits);
            const std::size_t next = (offset / 64 + 1) * 64;
            from = next < static_cast<std::size_t>(m_windowEnd - m_window) ? m_window + next : m_windowEnd;
        }
    }
    void nextWindow();
    void checkCharacters();

    const char* m_end;
    const char* m_window;     // where the classified window starts
    const char* m_windowEnd;  // and ends; every byte before it has been checked
    const char* m_checked = nullptr;
    const char* m_invalid = nullptr;
    XmlMasks m_masks;
};

}  // namespace kestrel::detail
