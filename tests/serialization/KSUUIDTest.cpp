// Identifiers from text.
#include <gtest/gtest.h>
#include <kestrel/serialization/KSUUID.h>

#include <array>
#include <string>

namespace {

struct Row {
    const char* name;
    const char* text;
    bool valid;
    KSUUID uuid;
};
constexpr auto rows = std::to_array<Row>({
    {"LowerCase", "0123456789abcdef00000000ffffffff", true, {0x01234567, 0x89abcdef, 0, 0xffffffff}},
    {"UpperCaseAndRest", "DEADBEEFdeadbeef0000000100000002 rest", true, {0xdeadbeef, 0xdeadbeef, 1, 2}},
    {"DigitsBehind", "000000010000000200000003000000040", true, {1, 2, 3, 4}},
    {"ThirtyOneAndBlank", "0123456789abcdef00000000fffffff ", false, {}},
    {"ThirtyOneAndEnd", "0123456789abcdef00000000fffffff", false, {}},
    {"BlankInFront", " 0123456789abcdef00000000ffffffff", false, {}},
    {"NeighboursOfDigits", "0123456789abcdef00000000ffff/:@G", false, {}},
    {"NeighboursOfLetters", "0123456789abcdef00000000ffff`gff", false, {}},
    {"Dashes", "01234567-89ab-cdef-0000-0000ffffffff", false, {}},
    {"Empty", "", false, {}},
});

class KSUUIDText : public testing::TestWithParam<Row> {};
TEST_P(KSUUIDText, ParsesOrStays) {
    const Row& row = GetParam();
    const std::string heap(row.text);  // so that a read past the end shows
    const char* at = heap.c_str();
    const auto uuid = KSUUID::parse(at);
    EXPECT_EQ(uuid.has_value(), row.valid);
    EXPECT_EQ(at - heap.c_str(), row.valid ? 32 : 0);
    EXPECT_EQ(uuid.value_or(KSUUID()), row.uuid);
}
INSTANTIATE_TEST_SUITE_P(Rows, KSUUIDText, testing::ValuesIn(rows),
                         [](const auto& row) { return row.param.name; });

}  // namespace
