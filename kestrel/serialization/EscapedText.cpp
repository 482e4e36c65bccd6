#include <kestrel/serialization/detail/EscapedText.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace kestrel::detail {
namespace {

constexpr std::ptrdiff_t pieceUnits = 2048;
constexpr std::size_t longestUnit = 6;  // "&quot;"

constexpr bool isHighSurrogate(unsigned unit) noexcept { return unit >> 10 == 0xD800 >> 10; }
constexpr bool isLowSurrogate(unsigned unit) noexcept { return unit >> 10 == 0xDC00 >> 10; }

constexpr std::string_view entityOf(unsigned unit) noexcept {
    switch (unit) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        default:
            return {};
    }
}

char* putUTF8(char* out, std::uint32_t code) noexcept {
    const auto tail = [&](int shift) { *out++ = static_cast<char>(0x80 | (code >> shift & 0x3F)); };
    if (code < 0x800) {
        *out++ = static_cast<char>(0xC0 | code >> 6);
    } else if (code < 0x10000) {
        *out++ = static_cast<char>(0xE0 | code >> 12);
        tail(6);
    } else {
        *out++ = static_cast<char>(0xF0 | code >> 18);
        tail(12);
        tail(6);
    }
    tail(0);
    return out;
}

}  // namespace

const unsigned short* appendEscaped(std::string& out, const unsigned short* begin,
                                    const unsigned short* end) {
    const unsigned short* pieceEnd = begin + std::min(end - begin, pieceUnits);
    if (pieceEnd != end && isHighSurrogate(pieceEnd[-1])) --pieceEnd;

    const std::size_t before = out.size();
    out.resize(before + static_cast<std::size_t>(pieceEnd - begin) * longestUnit);
    char* at = out.data() + before;
    for (const unsigned short* from = begin; from != pieceEnd; ++from) {
        const unsigned unit = *from;
        if (unit < 0x80) {
            if (const std::string_view entity = entityOf(unit); !entity.empty()) {
                at = std::copy(entity.begin(), entity.end(), at);
            } else {
                *at++ = static_cast<char>(unit);
            }
        } else if (isHighSurrogate(unit) && from + 1 != pieceEnd && isLowSurrogate(from[1])) {
            at = putUTF8(at, 0x10000 + ((unit & 0x3FF) << 10 | (*++from & 0x3FFu)));
        } else {
            at = putUTF8(at, isHighSurrogate(unit) || isLowSurrogate(unit) ? 0xFFFD : unit);
        }
    }
    out.resize(static_cast<std::size_t>(at - out.data()));
    return pieceEnd;
}

}  // namespace kestrel::detail
