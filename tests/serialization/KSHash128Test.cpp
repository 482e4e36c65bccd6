// The digest against the published results of the function that it is built on.
#include <gtest/gtest.h>
#include <kestrel/foundation/KSString.h>
#include <kestrel/serialization/KSHash128.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

constexpr KSHash128 initial(0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476);

KSHash128 digest(const Bytes& bytes) { return {bytes.data(), static_cast<unsigned>(bytes.size())}; }

Bytes pattern(std::size_t size) {
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<unsigned char>(i * 37 + (i >> 8));
    return bytes;
}

std::string text(const KSHash128& hash) {
    char* buffer = hash.getString().createCStr();
    const std::string result(buffer);
    std::free(buffer);
    return result;
}

/// RFC 1321, section A.5. Its padding and length field are added here, so that whole blocks remain.
struct Vector {
    const char* name;
    const char* message;
    const char* digest;
};
constexpr auto vectors = std::to_array<Vector>({
    {"Empty", "", "d41d8cd98f00b204e9800998ecf8427e"},
    {"A", "a", "0cc175b9c0f1b6a831c399e269772661"},
    {"Abc", "abc", "900150983cd24fb0d6963f7d28e17f72"},
    {"Words", "message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
    {"Alphabet", "abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
    {"TwoBlocks", "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
     "d174ab98d277d9f5a5611c2c9f419d9f"},
    {"Eighty", "12345678901234567890123456789012345678901234567890123456789012345678901234567890",
     "57edf4a22be3c955ac49da2e2107b67a"},
});
class KSHash128Vectors : public testing::TestWithParam<Vector> {};
TEST_P(KSHash128Vectors, WholeBlocksChainAsPublished) {
    const std::string message = GetParam().message;
    Bytes padded(message.begin(), message.end());
    padded.push_back(0x80);
    while (padded.size() % 64 != 56) padded.push_back(0);
    for (std::uint64_t bits = message.size() * 8, i = 0; i < 8; ++i) {
        padded.push_back(static_cast<unsigned char>(bits >> 8 * i));
    }
    std::string got;
    for (const std::uint32_t word : digest(padded).words) {
        for (int shift = 0; shift < 32; shift += 8) {
            char byte[3];
            std::snprintf(byte, sizeof byte, "%02x", word >> shift & 0xff);
            got += byte;
        }
    }
    EXPECT_EQ(got, GetParam().digest);
}
INSTANTIATE_TEST_SUITE_P(Rfc1321, KSHash128Vectors, testing::ValuesIn(vectors),
                         [](const auto& row) { return row.param.name; });

TEST(KSHash128, EmptyAndNothing) {
    EXPECT_EQ(text(KSHash128()), std::string(32, '0'));
    EXPECT_EQ(KSHash128(nullptr, 0), initial);
    EXPECT_EQ(text(initial), "67452301efcdab8998badcfe10325476");
    KSHash128 hash = digest(pattern(64));
    const KSHash128 before = hash;
    hash.addData(nullptr, 0);  // only an empty digest is changed by no data
    EXPECT_EQ(hash, before);
}

TEST(KSHash128, EachCallPadsItsOwnTailToOneBlock) {
    for (std::size_t size = 0; size <= 200; ++size) {
        const Bytes bytes = pattern(size);
        Bytes padded = bytes;
        if (size % 64) {
            padded.push_back(0x80);
            while (padded.size() % 64) padded.push_back(0);
        }
        ASSERT_EQ(digest(bytes), digest(padded)) << size;
        for (std::size_t shift = 1; shift < 4; ++shift) {  // unaligned
            Bytes moved(size + shift);
            std::copy(bytes.begin(), bytes.end(), moved.begin() + static_cast<std::ptrdiff_t>(shift));
            ASSERT_EQ(KSHash128(moved.data() + shift, static_cast<unsigned>(size)), digest(bytes)) << size;
        }
    }
}

TEST(KSHash128, CallsChainAtMultiplesOf64Only) {
    const Bytes bytes = pattern(320);
    KSHash128 parts(bytes.data(), 64);
    parts.addData(bytes.data() + 64, 192);
    parts.addData(bytes.data() + 256, 64);
    EXPECT_EQ(parts, digest(bytes));
    KSHash128 cut(bytes.data(), 10);
    cut.addData(bytes.data() + 10, 20);
    EXPECT_FALSE(cut == KSHash128(bytes.data(), 30));
}

/// The block of a combination: four words, a marker word, zeros.
Bytes combinationBlock(const KSHash128& hash) {
    Bytes block(64);
    std::memcpy(block.data(), hash.words, 16);
    block[19] = 0x80;  // the top byte of a little-endian word
    return block;
}

TEST(KSHash128, Combination) {
    const KSHash128 a = digest(pattern(100)), b = digest(pattern(7));
    KSHash128 sum = a, expected = a;
    expected.addData(combinationBlock(b).data(), 64);
    EXPECT_EQ(&(sum += b), &sum);
    EXPECT_EQ(sum, expected);

    KSHash128 twice = a, expectedTwice = a;
    expectedTwice.addData(combinationBlock(a).data(), 64);
    twice += twice;
    EXPECT_EQ(twice, expectedTwice);

    KSHash128 empty, emptyTwice;
    empty += b;
    EXPECT_EQ(empty, digest(combinationBlock(b)));
    emptyTwice += emptyTwice;  // the words as they were: zeros, not the initial state
    EXPECT_EQ(emptyTwice, digest(combinationBlock(KSHash128())));
}

TEST(KSHash128, TransformTakesTheStateAsItIs) {
    const Bytes bytes = pattern(64);
    unsigned int block[16];
    std::memcpy(block, bytes.data(), sizeof block);
    KSHash128 started = initial, zero;
    started.transform(block);
    zero.transform(block);
    EXPECT_EQ(started, digest(bytes));
    EXPECT_FALSE(zero == started);
}

struct TextRow {
    const char* name;
    KSString text;
    KSHash128 hash;
};
const TextRow textRows[] = {
    {"BothCases", "00000001ABCDEFabcdef012300000004", {1, 0xABCDEFab, 0xcdef0123, 4}},
    {"MoreBehind", "00000001000000020000000300000004zz", {1, 2, 3, 4}},
    {"BadDigit", "0000000100000002000000030000000g", {}},
    {"BadDigitLate", "00000001000000020000000300000 04", {}},
    {"Short", "0000000100000002000000030000000", {}},
    {"Empty", "", {}},
    {"Null", KSString(), {}},
};
class KSHash128Text : public testing::TestWithParam<TextRow> {};
TEST_P(KSHash128Text, ParsesOrIsEmpty) { EXPECT_EQ(KSHash128(GetParam().text), GetParam().hash); }
INSTANTIATE_TEST_SUITE_P(Rows, KSHash128Text, testing::ValuesIn(textRows),
                         [](const auto& row) { return row.param.name; });

TEST(KSHash128, TextThatCannotBeConvertedIsNoDigest) {
    const std::string digits = "00000001000000020000000300000004";
    std::vector<unsigned short> units(digits.begin(), digits.end());
    units.push_back(0x4E2D);  // no character of Mac OS Roman
    KSString text;
    text.set(units.data(), static_cast<unsigned>(units.size()));
    EXPECT_EQ(KSHash128(text), KSHash128());
    const KSHash128 hash = digest(pattern(99));
    EXPECT_EQ(KSHash128(hash.getString()), hash);
}

}  // namespace
