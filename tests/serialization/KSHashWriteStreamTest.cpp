// Fingerprints against the digest of bytes collected by hand.
#include <gtest/gtest.h>
#include <kestrel/foundation/KSString.h>
#include <kestrel/serialization/KSHash128.h>
#include <kestrel/serialization/KSHashWriteStream.h>
#include <kestrel/serialization/KSUUID.h>

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

/// The definition: pieces of exactly 4096 bytes, the last one shorter.
KSHash128 fingerprint(const Bytes& bytes) {
    KSHash128 hash;
    for (std::size_t at = 0; at < bytes.size(); at += 4096) {
        hash.addData(bytes.data() + at,
                     static_cast<unsigned>(std::min<std::size_t>(4096, bytes.size() - at)));
    }
    return hash;
}

/// What goes to the stream and, as bytes, to the list.
struct Both {
    KSHashWriteStream stream;
    Bytes bytes;

    template <class Value>
    void number(Value value, bool attribute = false) {
        attribute ? stream.writeAttribute(7, value) : stream.writeValue(value);
        const auto* at = reinterpret_cast<const unsigned char*>(&value);
        bytes.insert(bytes.end(), at, at + sizeof value);
    }
    void text(const std::vector<unsigned short>& units) {
        KSString string("");
        if (!units.empty()) string.set(units.data(), static_cast<unsigned>(units.size()));
        stream.writeValue(string);
        for (const unsigned short unit : units) {
            bytes.push_back(static_cast<unsigned char>(unit));
            bytes.push_back(static_cast<unsigned char>(unit >> 8));
        }
        bytes.insert(bytes.end(), 2, 0);
    }
};

TEST(KSHashWriteStream, EveryKindOfValueInTurn) {
    std::mt19937_64 random(2);
    for (int round = 0; round < 40; ++round) {
        Both both;
        for (int i = 0; i < 1500; ++i) {
            const bool attribute = random() & 1;
            switch (random() % 8) {
                case 0:
                    both.number(static_cast<int>(random()), attribute);
                    break;
                case 1:
                    both.number(static_cast<unsigned int>(random()), attribute);
                    break;
                case 2:
                    both.number(static_cast<long long>(random()), attribute);
                    break;
                case 3:
                    both.number(static_cast<unsigned long long>(random()), attribute);
                    break;
                case 4:
                    both.number(static_cast<float>(random()) / 3, attribute);
                    break;
                case 5:
                    both.number(static_cast<double>(random()) / 3, attribute);
                    break;
                case 6:
                    both.number(KSUUID(1, static_cast<std::uint32_t>(random()), 0xffffffff, 4), attribute);
                    break;
                case 7: {  // odd cuts through the buffer; sometimes longer than it
                    std::vector<unsigned short> units(random() % 20 == 0 ? 5000 : random() % 9);
                    for (auto& unit : units) unit = static_cast<unsigned short>(random());
                    both.text(units);
                    break;
                }
            }
        }
        ASSERT_EQ(both.stream.getHash(), fingerprint(both.bytes)) << round;
    }
}

struct Row {
    const char* name;
    std::function<void(KSHashWriteStream&)> write;
    Bytes bytes;
};
const Row rows[] = {
    {"Nothing", [](auto&) {}, {}},
    {"OneInt", [](auto& out) { out.writeValue(1); }, {1, 0, 0, 0}},
    {"EmptyText", [](auto& out) { out.writeValue(KSString("")); }, {0, 0}},
    {"NullText", [](auto& out) { out.writeValue(KSString()); }, {}},
    {"TextKeepsNul",
     [](auto& out) {
         const unsigned short units[] = {'a', 0, 'b'};
         out.writeValue(KSString().set(units, 3));
     },
     {'a', 0, 0, 0, 'b', 0, 0, 0}},
    {"StructureIsLeftOut",
     [](auto& out) {
         unsigned int a[] = {1};
         float f[] = {1};
         double d[] = {1};
         out.startElement(99);  // no scope is needed
         out.writeAttribute(3, KSString("text"));
         out.writeArray(a, 1);
         out.writeArray(f, 1);
         out.writeArray(d, 1);
         out.writeBlankLine();
         out.writeAttribute(4, 2);
         out.endElement();
     },
     {2, 0, 0, 0}},
};
class KSHashWriteStreamRows : public testing::TestWithParam<Row> {};
TEST_P(KSHashWriteStreamRows, FeedTheseBytes) {
    KSHashWriteStream out;
    GetParam().write(out);
    EXPECT_EQ(out.getHash(), fingerprint(GetParam().bytes));
}
INSTANTIATE_TEST_SUITE_P(Rows, KSHashWriteStreamRows, testing::ValuesIn(rows),
                         [](const auto& row) { return row.param.name; });

TEST(KSHashWriteStream, AFullBufferWaitsForTheNextByte) {
    for (const int count : {1023, 1024, 1025, 2048, 2049}) {
        Both both;
        for (int i = 0; i < count; ++i) both.number(i);
        EXPECT_EQ(both.stream.getHash(), fingerprint(both.bytes)) << count;
    }
}

TEST(KSHashWriteStream, FlushResetAndSet) {
    KSHashWriteStream early, late;
    early.writeValue(1);
    early.close();  // cuts here
    early.writeValue(2);
    late.writeValue(1);
    late.writeValue(2);
    KSHash128 cut = fingerprint({1, 0, 0, 0});
    const unsigned char two[] = {2, 0, 0, 0};
    cut.addData(two, 4);
    EXPECT_EQ(early.getHash(), cut);
    EXPECT_FALSE(early.getHash() == late.getHash());

    late.writeValue(3);
    late.reset();
    EXPECT_EQ(late.getHash(), KSHash128());
    late.writeValue(1);
    EXPECT_EQ(late.getHash(), fingerprint({1, 0, 0, 0}));

    late.writeValue(5);
    late.setHash(KSHash128(1, 2, 3, 4));  // the buffered 5 is gone
    EXPECT_EQ(late.getHash(), KSHash128(1, 2, 3, 4));
}

TEST(KSHashWriteStream, PrintShowsTheBuffer) {
    KSHashWriteStream out;
    testing::internal::CaptureStdout();
    out.print();
    out.writeValue(0x01020aff);
    out.print();
    out.getHash();
    out.print();
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "      reset\n      ff0a0201\n      reset\n");
}

}  // namespace
