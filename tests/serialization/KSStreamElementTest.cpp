#include "ReadProbe.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <memory>

namespace {

constexpr KSScope scope[] = {{"item", 1, 0},  {"size", 1, 10}, {"name", 1, 11}, {"size", 1, 12},
                             {"other", 2, 0}, {"size", 2, 10}, {"id", 1, 13},   {nullptr, 0, 0}};

struct Element : KSStreamElement {
    explicit Element(const char* value = nullptr) : KSStreamElement(1, scope, nullptr) {
        if (value) setValue(KSString(value));
    }
};

template <typename Number>
struct Read {
    bool result;
    Number value;
    bool operator==(const Read&) const = default;
};
Read<int> int32(KSStreamElement& e) {
    int value = 99;
    const bool result = e.getAsInt32(&value);
    return {result, value};
}

TEST(KSStreamElement, SuccessiveReadsGiveSuccessiveNumbers) {
    Element element("12  34\n");
    EXPECT_EQ(int32(element), (Read<int>{true, 12}));
    EXPECT_EQ(int32(element), (Read<int>{true, 34}));
    EXPECT_EQ(int32(element), (Read<int>{false, 99})) << "at the end nothing is stored";
    KSString text;
    EXPECT_TRUE(element.getAsString(&text));
    EXPECT_EQ(utf8(text), "12  34\n");
}

TEST(KSStreamElement, NoNumberReadsAsZeroAndStays) {
    Element word(" abc");
    EXPECT_EQ(int32(word), (Read<int>{true, 0}));
    EXPECT_EQ(int32(word), (Read<int>{true, 0}));
    Element blanks(" \t ");
    EXPECT_EQ(int32(blanks), (Read<int>{true, 0}));
    EXPECT_EQ(int32(blanks), (Read<int>{false, 99}));
    Element empty(""), none;
    EXPECT_EQ(int32(empty), (Read<int>{false, 99}));
    EXPECT_FALSE(none.initParams());
    EXPECT_EQ(int32(none), (Read<int>{false, 99}));
}

TEST(KSStreamElement, ARangeErrorStoresTheLimitAndStays) {
    Element element("99999999999 5");
    EXPECT_EQ(int32(element), (Read<int>{false, INT_MAX}));
    unsigned int asUnsigned = 0;
    EXPECT_FALSE(element.getAsUInt32(&asUnsigned));
    EXPECT_EQ(asUnsigned, UINT_MAX);
    long long wide = 0;
    EXPECT_TRUE(element.getAsInt64(&wide));
    EXPECT_EQ(wide, 99999999999);
    EXPECT_EQ(int32(element), (Read<int>{true, 5}));
}

TEST(KSStreamElement, EveryKindOfValueAndAttribute) {
    Element element("-1 18446744073709551615 1e39 -2.5e-310 0 2 abc");
    unsigned int asUnsigned = 0;
    unsigned long long wide = 0;
    float narrow = 0;
    double number = 0;
    bool flag = true;
    EXPECT_TRUE(element.getAsUInt32(&asUnsigned));
    EXPECT_EQ(asUnsigned, UINT_MAX) << "-1 wraps within 32 bits";
    EXPECT_TRUE(element.getAsUInt64(&wide));
    EXPECT_EQ(wide, ULLONG_MAX);
    EXPECT_TRUE(element.getAsFloat(&narrow)) << "narrowed from a double, so no range error";
    EXPECT_TRUE(std::isinf(narrow));
    EXPECT_TRUE(element.getAsDouble(&number)) << "a subnormal number is a number";
    EXPECT_EQ(number, -2.5e-310);
    EXPECT_TRUE(element.getAsBool(&flag));
    EXPECT_FALSE(flag);
    EXPECT_TRUE(element.getAsBool(&flag));
    EXPECT_TRUE(flag);
    EXPECT_TRUE(element.getAsBool(&flag)) << "no number, no range error";
    EXPECT_FALSE(flag);

    const auto with = [](const char* text) {
        auto e = std::make_unique<Element>();
        e->addAttribute("size", KSString(text));
        return e;
    };
    int asInt = 0;
    long long asWide = 0;
    EXPECT_TRUE(with(" -7 8")->getAttributeAsInt32(10, &asInt));
    EXPECT_EQ(asInt, -7);
    EXPECT_TRUE(with("")->getAttributeAsInt32(10, &asInt)) << "an empty attribute is there, and no number";
    EXPECT_EQ(asInt, 0);
    EXPECT_FALSE(with("4294967296")->getAttributeAsUInt32(10, &asUnsigned));
    EXPECT_EQ(asUnsigned, UINT_MAX);
    EXPECT_TRUE(with("-9223372036854775808")->getAttributeAsInt64(10, &asWide));
    EXPECT_EQ(asWide, LLONG_MIN);
    EXPECT_TRUE(with("-1")->getAttributeAsUInt64(10, &wide));
    EXPECT_EQ(wide, ULLONG_MAX);
    EXPECT_TRUE(with("0x10")->getAttributeAsFloat(10, &narrow));
    EXPECT_EQ(narrow, 16.0f);
    EXPECT_FALSE(with("1e999")->getAttributeAsDouble(10, &number));
    EXPECT_TRUE(std::isinf(number));
    EXPECT_TRUE(with("2")->getAttributeAsBool(10, &flag));
    EXPECT_TRUE(flag);
    EXPECT_TRUE(with("abc")->getAttributeAsBool(10, &flag));
    EXPECT_FALSE(flag);
}

TEST(KSStreamElement, AttributesGoWhereTheScopeNamesThem) {
    Element element;
    element.addAttribute("size", KSString("4"));
    element.addAttribute("color", KSString("5"));
    int first = 0, second = 0;
    EXPECT_TRUE(element.getAttributeAsInt32(10, &first));
    EXPECT_TRUE(element.getAttributeAsInt32(12, &second)) << "every entry with the name is filled";
    EXPECT_EQ(first + second, 8);
    element.addAttribute("size", CFSTR("6"));
    EXPECT_TRUE(element.getAttributeAsInt32(12, &second)) << "a later value replaces";
    EXPECT_EQ(second, 6);
    KSString text("kept");
    EXPECT_FALSE(element.getAttributeAsString(11, &text));
    EXPECT_EQ(utf8(text), "kept");
    EXPECT_FALSE(element.getAttributeAsBool(11, nullptr));
    EXPECT_FALSE(element.getAttributeAsDouble(0, nullptr)) << "no attribute has the token of elements";
    EXPECT_EQ(element.getAttributeAsCString(11), nullptr);
    EXPECT_EQ(element.getAttributeAsUUID(11), nullptr);
    KSStreamElement noScope(1, nullptr, nullptr);
    noScope.addAttribute("size", KSString("1"));
    EXPECT_FALSE(noScope.getAttributeAsInt32(10, &first));
}

TEST(KSStreamElement, CStringsAreUtf8) {
    Element element;
    const unsigned short units[] = {0x65E5, 'x', 0};
    element.addAttribute("name", KSString(units));
    char* text = element.getAttributeAsCString(11);
    EXPECT_STREQ(text, "\xE6\x97\xA5x");
    std::free(text);
}

TEST(KSStreamElement, Identifiers) {
    const KSUUID expected(0x00000001, 0xDEADBEEF, 0xABCDEF00, 0xFFFFFFFF);
    const char* const digits = "00000001deadBEEFabcdef00FFFFFFFF";
    Element element((std::string(digits) + "7 8").c_str());
    const std::unique_ptr<KSUUID> fromValue(element.getAsUUID());
    ASSERT_TRUE(fromValue);
    EXPECT_EQ(*fromValue, expected);
    EXPECT_EQ(int32(element), (Read<int>{true, 7})) << "the cursor stands right behind the digits";
    EXPECT_EQ(element.getAsUUID(), nullptr);
    EXPECT_EQ(int32(element), (Read<int>{true, 8}));
    EXPECT_EQ(element.getAsUUID(), nullptr) << "at the end";

    element.addAttribute("id", KSString(digits));
    const std::unique_ptr<KSUUID> fromAttribute(element.getAttributeAsUUID(13));
    ASSERT_TRUE(fromAttribute);
    EXPECT_EQ(*fromAttribute, expected);

    for (const char* bad : {"", "00000001deadBEEFabcdef00FFFFFFF", "00000001deadBEEFabcdef00FFFFFFF ",
                            " 0000001deadBEEFabcdef00FFFFFFFF", "0000000gdeadBEEFabcdef00FFFFFFFF"}) {
        std::string copy = bad;
        char* place = copy.data();
        EXPECT_EQ(KSStreamElement::atoUUID(&place), nullptr) << bad;
        EXPECT_EQ(place, copy.data()) << bad;
        Element value(bad);
        EXPECT_EQ(value.getAsUUID(), nullptr) << bad;
    }
    std::string twice = std::string(digits) + digits;
    char* place = twice.data();
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(*std::unique_ptr<KSUUID>(KSStreamElement::atoUUID(&place)), expected);
    EXPECT_EQ(place, twice.data() + 64);
}

TEST(KSStreamElement, AReaderThatHasBegunKeepsItsText) {
    Element element("1 2");
    EXPECT_EQ(int32(element), (Read<int>{true, 1}));
    element.setValue(KSString("a much longer text that needs another block of memory than the first one"));
    EXPECT_EQ(int32(element), (Read<int>{true, 2}));
}

TEST(KSStreamElement, TheStreamForwardsToTheElement) {
    HandFedStream stream;
    Element element("1 2 3 4 5 6 7 00000001000000020000000300000004");
    element.addAttribute("size", KSString("9"));
    element.addAttribute("id", KSString("00000001000000020000000300000004"));
    int i = 0;
    unsigned u = 0;
    long long l = 0;
    unsigned long long ul = 0;
    float f = 0;
    double d = 0;
    bool b = false;
    KSString s;
    EXPECT_TRUE(stream.getAsInt32(element, &i) && stream.getAsUInt32(element, &u) &&
                stream.getAsInt64(element, &l));
    EXPECT_TRUE(stream.getAsUInt64(element, &ul) && stream.getAsFloat(element, &f) &&
                stream.getAsDouble(element, &d));
    EXPECT_TRUE(stream.getAsBool(element, &b) && stream.getAsString(element, &s));
    EXPECT_EQ((std::vector<double>{double(i), double(u), double(l), double(ul), f, d}),
              (std::vector<double>{1, 2, 3, 4, 5, 6}));
    EXPECT_TRUE(b);
    EXPECT_EQ(s.size(), 46u);
    const std::unique_ptr<KSUUID> value(stream.getAsUUID(element)),
        id(stream.getAttributeAsUUID(element, 13));
    EXPECT_TRUE(value && id && *value == *id);
    EXPECT_TRUE(stream.getAttributeAsInt32(element, 10, &i) && stream.getAttributeAsUInt32(element, 10, &u));
    EXPECT_TRUE(stream.getAttributeAsInt64(element, 10, &l) && stream.getAttributeAsUInt64(element, 10, &ul));
    EXPECT_TRUE(stream.getAttributeAsFloat(element, 10, &f) && stream.getAttributeAsDouble(element, 10, &d));
    EXPECT_TRUE(stream.getAttributeAsBool(element, 10, &b) && stream.getAttributeAsString(element, 10, &s));
    EXPECT_EQ((std::vector<double>{double(i), double(u), double(l), double(ul), f, d}),
              std::vector<double>(6, 9));
    EXPECT_EQ(utf8(s), "9");
}

}  // namespace
