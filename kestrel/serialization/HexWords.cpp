#include <kestrel/serialization/detail/HexWords.h>

#include <algorithm>

namespace kestrel::detail {
namespace {

constexpr int digitValue(char c) noexcept {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

}  // namespace

bool parseHexWords(const char*& text, std::uint32_t (&words)[4]) noexcept {
    const char* at = text;
    std::uint32_t read[4] = {};
    for (std::uint32_t& word : read) {
        for (int i = 0; i < 8; ++i, ++at) {
            const int digit = digitValue(*at);  // the terminator is no digit, so this never runs past it
            if (digit < 0) return false;
            word = word << 4 | static_cast<std::uint32_t>(digit);
        }
    }
    std::copy(read, read + 4, words);
    text = at;
    return true;
}

char* formatHexWords(char* out, const std::uint32_t (&words)[4]) noexcept {
    for (const std::uint32_t word : words) {
        for (int shift = 28; shift >= 0; shift -= 4) *out++ = "0123456789abcdef"[word >> shift & 15];
    }
    return out;
}

}  // namespace kestrel::detail
