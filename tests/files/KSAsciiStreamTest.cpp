#include <kestrel/files/KSAsciiStream.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <ostream>
#include <random>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

std::string textOf(const KSString& string) {
    char* const text = string.createCStr();
    const std::string copy = text ? text : "";
    std::free(text);
    return copy;
}

std::string textOf(const KSAsciiStream& stream) { return textOf(stream.getString()); }

std::string encode(const Bytes& bytes) {
    KSAsciiStream stream;
    EXPECT_EQ(stream.write(bytes.data(), bytes.size()), bytes.size());
    stream.close();
    return textOf(stream);
}

Bytes randomBytes(std::size_t count, std::uint32_t seed = 33) {
    std::mt19937 random(seed);
    Bytes bytes(count);
    for (auto& b : bytes) b = static_cast<std::uint8_t>(random());
    return bytes;
}

/// The length that a header tells.
std::uint64_t toldLength(const std::string& text) {
    const std::string alphabet = "*-0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    std::uint64_t bits = 0;
    for (int i = 0; i < 10; ++i) bits = bits << 6 | alphabet.find(text.at(static_cast<std::size_t>(i)));
    return bits << 4 | alphabet.find(text.at(10)) >> 2;
}

}  // namespace

struct KnownText {
    const char* name;
    Bytes bytes;
    std::string text;
};

void PrintTo(const KnownText& row, std::ostream* out) { *out << row.name; }

class KSAsciiStreamTexts : public testing::TestWithParam<KnownText> {};

TEST_P(KSAsciiStreamTexts, WritesAndReadsBack) {
    const KnownText& row = GetParam();
    EXPECT_EQ(encode(row.bytes), row.text);
    KSAsciiStream in;
    ASSERT_TRUE(in.open(row.text.c_str()));
    Bytes back(row.bytes.size() + 5);
    EXPECT_EQ(in.read(back.data(), back.size()), row.bytes.size());  // more than there is
    back.resize(row.bytes.size());
    EXPECT_EQ(back, row.bytes);
    EXPECT_EQ(in.read(back.data(), 1), 0u);
}

// Made by hand: of a length L below 256, the header's last group holds the values 0, L / 16, L % 16 * 4, 42.
INSTANTIATE_TEST_SUITE_P(
    Known, KSAsciiStreamTexts,
    testing::Values(KnownText{"OneByte", {0xFF}, "**********2ezk**"},
                    KnownText{"ThreeBytes", {0x00, 0x10, 0x83}, "**********Ae*-01"},
                    KnownText{"FourBytes", {0x00, 0x10, 0x83, 0x04}, "**********Ee*-01-***"},
                    KnownText{"SixtyFourZeros", Bytes(64, 0), "*********2*e" + std::string(88, '*')}),
    [](const auto& row) { return row.param.name; });

TEST(KSAsciiStream, TellsALengthOfTwoBytes) {
    const std::string text = encode(Bytes(0x0102, 7));
    EXPECT_EQ(text.substr(0, 12), "*********E6e");  // 01 02 2A: 0, 16, 8, 42
    EXPECT_EQ(toldLength(text), 0x0102u);
}

TEST(KSAsciiStream, ShowsAValidTextOfFullGroupsAtEveryMoment) {
    const Bytes bytes = randomBytes(40);
    KSAsciiStream out;
    for (std::size_t written = 1; written <= bytes.size(); ++written) {
        ASSERT_EQ(out.write(&bytes[written - 1], 1), 1u);
        const std::string text = textOf(out);
        const std::size_t flushed = written / 3 * 3;
        ASSERT_EQ(text.size(), flushed ? 12 + flushed / 3 * 4 : 0) << written;
        if (!flushed) continue;
        EXPECT_EQ(toldLength(text), flushed) << written;
        KSAsciiStream in;
        ASSERT_TRUE(in.open(text.c_str()));
        Bytes back(bytes.size());
        ASSERT_EQ(in.read(back.data(), back.size()), flushed);
        EXPECT_TRUE(std::equal(back.begin(), back.begin() + static_cast<long>(flushed), bytes.begin()));
    }
    out.close();  // 40 bytes: one waits
    EXPECT_EQ(toldLength(textOf(out)), 40u);
    EXPECT_EQ(textOf(out), encode(bytes));
    out.close();
    EXPECT_EQ(textOf(out), encode(bytes)) << "a second close adds nothing";
}

TEST(KSAsciiStream, ComesThroughPiecesOfAnySize) {
    std::mt19937 random(7);
    for (std::size_t size = 0; size < 400; size += 1 + size / 9) {
        const Bytes bytes = randomBytes(size, static_cast<std::uint32_t>(size));
        KSAsciiStream out;
        for (std::size_t at = 0; at < size;) {
            const std::size_t piece = std::min<std::size_t>(random() % 70, size - at);
            ASSERT_EQ(out.write(bytes.data() + at, piece), piece);
            at += piece;
        }
        out.close();
        const std::string text = textOf(out);
        ASSERT_EQ(text, encode(bytes));
        KSAsciiStream in;
        ASSERT_EQ(in.open(text.data(), text.size()), size > 0);
        Bytes back;
        while (back.size() < size) {
            Bytes piece(random() % 70);
            const std::size_t want = std::min(piece.size(), size - back.size());
            ASSERT_EQ(in.read(piece.data(), piece.size()), want);
            back.insert(back.end(), piece.begin(), piece.begin() + static_cast<long>(want));
        }
        ASSERT_EQ(back, bytes);
    }
}

TEST(KSAsciiStream, RefusesWhatIsNoArmour) {
    const std::string good = encode({1, 2, 3});
    std::string changed = good;
    changed[11] = 'f';
    struct Row {
        const char* name;
        std::string text;
        const char* error;
    };
    for (const Row& row :
         std::array<Row, 4>{{{"Empty", "", "Not enough data"},
                             {"ElevenCharacters", good.substr(0, 11), "Not enough data"},
                             {"ChangedMagic", changed, "Magic Number does not match"},
                             {"Prose", "once upon a time", "Magic Number does not match"}}}) {
        KSAsciiStream in;
        std::uint8_t byte;
        EXPECT_FALSE(in.open(row.text.c_str())) << row.name;
        EXPECT_EQ(textOf(in.getError()), row.error) << row.name;
        EXPECT_EQ(in.read(&byte, 1), 0u) << row.name;
        EXPECT_FALSE(in.open(row.text.data(), row.text.size())) << row.name;
        EXPECT_TRUE(in.open(good.c_str())) << row.name;
        EXPECT_EQ(in.read(&byte, 1), 1u) << row.name;
    }
    EXPECT_FALSE(KSAsciiStream().open(nullptr));
}

TEST(KSAsciiStream, GivesTheWholeGroupsOfATruncatedText) {
    const Bytes bytes = randomBytes(100);
    const std::string text = encode(bytes);
    for (std::size_t size = 12; size <= text.size(); ++size) {
        const std::vector<char> cut(text.begin(),
                                    text.begin() + static_cast<long>(size));  // no NUL behind it
        KSAsciiStream in;
        ASSERT_TRUE(in.open(cut.data(), cut.size()));
        Bytes back(200);
        const std::size_t there = std::min<std::size_t>((size - 12) / 4 * 3, 100);
        ASSERT_EQ(in.read(back.data(), back.size()), there);
        EXPECT_TRUE(std::equal(back.begin(), back.begin() + static_cast<long>(there), bytes.begin()));
    }
    // A header that promises 2^64 - 1 bytes.
    KSAsciiStream in;
    std::uint8_t byte;
    ASSERT_TRUE(in.open("zzzzzzzzzzwe0000"));
    EXPECT_EQ(in.read(&byte, 1), 1u);
}

TEST(KSAsciiStream, CountsForeignCharactersAsZeros) {
    KSAsciiStream in;
    std::uint8_t bytes[3];
    ASSERT_TRUE(in.open("**********Aez+ \xFF"));
    ASSERT_EQ(in.read(bytes, 3), 3u);
    EXPECT_EQ(bytes[0], 0xFC);
    EXPECT_EQ(bytes[1], 0);
    EXPECT_EQ(bytes[2], 0);
}

TEST(KSAsciiStream, MovesNothingInTheOtherDirectionUntilCleared) {
    std::uint8_t byte = 9;
    KSAsciiStream stream;
    EXPECT_EQ(stream.write("abcd", 4), 4u);
    EXPECT_EQ(stream.read(&byte, 1), 0u);
    const std::string text = encode({1, 2, 3, 4});
    ASSERT_TRUE(stream.open(text.c_str()));
    EXPECT_EQ(stream.write("xyz", 3), 0u);
    stream.close();
    EXPECT_EQ(textOf(stream), text);
    EXPECT_EQ(stream.read(&byte, 1), 1u);
    EXPECT_EQ(byte, 1);

    stream.clear();
    EXPECT_EQ(textOf(stream), "");
    stream.write("\x01\x02\x03\x04", 4);
    stream.close();
    EXPECT_EQ(textOf(stream), text) << "neither the held group nor the counters of before";
}

TEST(KSAsciiStream, KnowsItsAlphabet) {
    int valid = 0;
    for (int c = 0; c < 256; ++c) valid += KSAsciiStream::validChar(static_cast<unsigned char>(c));
    EXPECT_EQ(valid, 64);
    for (const char c : {'*', '-', '0', '9', 'A', 'Z', 'a', 'z'})
        EXPECT_TRUE(KSAsciiStream::validChar(static_cast<unsigned char>(c))) << c;
    for (const char c : {'+', ',', '.', '/', ':', '@', '[', '`', '{', '\0'})
        EXPECT_FALSE(KSAsciiStream::validChar(static_cast<unsigned char>(c))) << c;
}
