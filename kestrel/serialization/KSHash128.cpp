// The compression function is that of RFC 1321, section 3.4. What lengthens a chain of 64 dependent steps
// counts here: in each round the operand that the step before produced, b, enters as late as it can.
#include <kestrel/foundation/KSString.h>
#include <kestrel/platform/CFString.h>
#include <kestrel/serialization/KSHash128.h>
#include <kestrel/serialization/detail/HexWords.h>

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

static_assert(std::endian::native == std::endian::little, "the digest is defined by little-endian order");

namespace {

// floor(2^32 * abs(sin(i + 1))), the additive constants of RFC 1321.
constexpr std::uint32_t constants[64] = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391,
};

constexpr std::uint32_t initialState[4] = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};

// Per round: the rotations of four steps in turn, and where word i of the block is taken.
constexpr int rotations[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};
constexpr int factors[4] = {1, 5, 3, 7}, offsets[4] = {0, 1, 5, 0};

constexpr std::size_t blockSize = 64;

/// Has value computed, in a register, before what it is used in. Compilers regroup sums as they like, and
/// lengthen the chain of steps by it; or they make vectors of the state, which cost a trip through memory.
inline std::uint32_t first(std::uint32_t value) noexcept {
    __asm__("" : "+r"(value));
    return value;
}

template <int i>
[[gnu::always_inline]] inline void step(std::uint32_t (&state)[4], const unsigned char* block) noexcept {
    constexpr int round = i / 16;
    std::uint32_t& a = state[(64 - i) % 4];
    const std::uint32_t b = state[(65 - i) % 4], c = state[(66 - i) % 4], d = state[(67 - i) % 4];
    std::uint32_t word;
    std::memcpy(&word, block + (factors[round] * i + offsets[round]) % 16 * 4, sizeof word);
    a = first(a + constants[i] + word);
    if constexpr (round == 0) a += d ^ (b & first(c ^ d));
    if constexpr (round == 1) a = first(a + (c & ~d)) + (b & d);  // no bit is in both, so a sum is an "or"
    if constexpr (round == 2) a += b ^ first(c ^ d);
    if constexpr (round == 3) a += c ^ (b | ~d);
    a = b + std::rotl(a, rotations[round][i % 4]);
}

template <int... i>
[[gnu::always_inline]] inline void allSteps(std::uint32_t (&state)[4], const unsigned char* block,
                                            std::integer_sequence<int, i...>) noexcept {
    (step<i>(state, block), ...);
}

/// Compresses whole blocks; they need no alignment.
void compress(std::uint32_t (&words)[4], const unsigned char* blocks, std::size_t count) noexcept {
    std::uint32_t chain[4] = {words[0], words[1], words[2], words[3]};
    for (; count; --count, blocks += blockSize) {
        std::uint32_t state[4] = {chain[0], chain[1], chain[2], chain[3]};
        allSteps(state, blocks, std::make_integer_sequence<int, 64>{});
        for (int i = 0; i < 4; ++i) chain[i] = first(chain[i] + state[i]);
    }
    std::copy(chain, chain + 4, words);
}

/// An empty digest starts from the initial state.
void start(std::uint32_t (&words)[4]) noexcept {
    if (!(words[0] | words[1] | words[2] | words[3])) std::copy(initialState, initialState + 4, words);
}

}  // namespace

KSHash128::KSHash128(const unsigned char* data, unsigned int length) noexcept { addData(data, length); }

KSHash128::KSHash128(const KSString& text) {
    // A text that Mac OS Roman cannot hold is no digest either, even behind 32 digits.
    const std::size_t room = std::size_t{text.size()} + 1;
    const std::unique_ptr<char, decltype(&std::free)> buffer(static_cast<char*>(std::malloc(room)),
                                                             &std::free);
    if (!buffer || !CFStringGetCString(text.cf_str(), buffer.get(), static_cast<CFIndex>(room),
                                       kCFStringEncodingMacRoman)) {
        return;
    }
    const char* at = buffer.get();
    kestrel::detail::parseHexWords(at, words);
}

void KSHash128::addData(const unsigned char* data, unsigned int length) noexcept {
    start(words);
    if (!data) return;
    compress(words, data, length / blockSize);
    const std::size_t tail = length % blockSize;
    if (!tail) return;
    unsigned char block[blockSize] = {};
    std::memcpy(block, data + length - tail, tail);
    block[tail] = 0x80;
    compress(words, block, 1);
}

KSHash128& KSHash128::operator+=(const KSHash128& other) noexcept {
    std::uint32_t block[16] = {other.words[0], other.words[1], other.words[2], other.words[3], 0x80000000};
    start(words);
    transform(block);
    return *this;
}

KSString KSHash128::getString() const {
    char text[33];
    *kestrel::detail::formatHexWords(text, words) = 0;
    return KSString(text);
}

void KSHash128::transform(const unsigned int* block) noexcept {
    compress(words, reinterpret_cast<const unsigned char*>(block), 1);
}
