#include <kestrel/foundation/detail/NumberText.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <sstream>
#include <string>
#include <vector>

using kestrel::detail::readNumber;

namespace {

template <typename Number>
struct Reading {
    bool inRange;
    Number value;
    std::size_t used;
};

// The text alone on the heap, without a NUL: a look behind its end shows under the address sanitizer.
template <typename Number>
Reading<Number> read(const std::string& text) {
    const std::vector<char> bytes(text.begin(), text.end());
    const char* place = bytes.data();
    Number value = 77;
    const bool inRange = readNumber(place, bytes.data() + bytes.size(), value);
    return {inRange, value, static_cast<std::size_t>(place - bytes.data())};
}

// Around every limit and every way to begin, end or miss a number; a bar stands between them.
const char texts[] =
    "| |\t\n\v\f\r|0|-0|+0|1|+1|-1| 42|\t\n\v\f\r 42 |42x|42 43|0042|-|+|--1|+-1|- 1|x|1-|12,5|12.5|.5|"
    "-.5|+.5|.|-.|5.|1e3|1E3|1e+3|1e-3|1e|1e+|1e x|e5|.e5|1.5.5|0x10|0X1F|0x|0xg|-0x1p4|0x1.8p1|0x.8|"
    "0x.|0x1p|inf|-inf|+INF|infinity|Infinit|INFINITYx|nan|-nan|NaN(12)|nan(|nan(x y)|in|n|2147483647|"
    "2147483648|-2147483648|-2147483649|4294967295|4294967296|-4294967295|-4294967296|"
    "9223372036854775807|9223372036854775808|-9223372036854775808|-9223372036854775809|"
    "18446744073709551615|18446744073709551616|-18446744073709551615|-18446744073709551616|"
    "99999999999999999999999999999|-99999999999999999999999999999|21474836470|429496729500000000001|"
    "1e39|-1e39|3.4028235e38|1e308|1.7976931348623157e308|1.7976931348623159e308|1e309|-1e309|"
    "2.2250738585072014e-308|2.2250738585072011e-308|4.9406564584124654e-324|5e-324|"
    "2.4703282292062328e-324|2.4703282292062327e-324|1e-400|-1e-400|0e-400|0e999999999999|"
    "1e99999999999999999999|0.1|0.30000000000000004|123456789012345678901234567890|9007199254740993|"
    "0x1p-1074|0x1p-1075|0x1.8p-1075|0x1p1024|"
    "0.000000000000000000000000000000000000000000000000000000000001|1_000|\u00A01|1\u00A0|\u0661";

std::vector<std::string> allTexts() {
    std::vector<std::string> all;
    std::istringstream pieces(texts);
    for (std::string piece; std::getline(pieces, piece, '|');) all.push_back(piece);
    std::mt19937_64 random(754);
    for (int i = 0; i < 200000; ++i) {
        char text[64];
        double value;
        const std::uint64_t bits = random();
        std::memcpy(&value, &bits, sizeof value);
        switch (i % 4) {
            case 0:
                std::snprintf(text, sizeof text, "%.17g", value);
                break;
            case 1:
                std::snprintf(text, sizeof text, "%.10g ", value);
                break;
            case 2:
                std::snprintf(text, sizeof text, "%lld", static_cast<long long>(bits >> (random() % 64)));
                break;
            default:
                std::snprintf(text, sizeof text, " %a", value);
        }
        all.emplace_back(text);
    }
    return all;
}

template <typename Number, typename Standard>
void expectLikeStandard(Standard standard) {
    for (const std::string& text : allTexts()) {
        char* end = nullptr;
        errno = 0;
        const auto want = standard(text.c_str(), &end);
        const bool inRange = errno != ERANGE;
        const auto got = read<Number>(text);
        ASSERT_EQ(got.used, static_cast<std::size_t>(end - text.c_str())) << '"' << text << '"';
        if constexpr (std::is_integral_v<Number>) {
            ASSERT_EQ(got.value, want) << '"' << text << '"';
            ASSERT_EQ(got.inRange, inRange) << '"' << text << '"';
        } else {
            const auto narrowed = static_cast<Number>(want);
            ASSERT_EQ(std::signbit(got.value), std::signbit(narrowed)) << '"' << text << '"';
            if (std::isnan(want))
                ASSERT_TRUE(std::isnan(got.value)) << '"' << text << '"';
            else
                ASSERT_EQ(got.value, narrowed) << '"' << text << '"';
            // The standard function reports a subnormal number too, which is a number all the same.
            const bool isSubnormal = want != 0 && std::fabs(want) < 2.3e-308;
            ASSERT_EQ(got.inRange, inRange || isSubnormal) << '"' << text << '"';
        }
    }
}

TEST(NumberText, ReadsWhatTheStandardFunctionsRead) {
    expectLikeStandard<long long>([](const char* text, char** end) { return std::strtoll(text, end, 10); });
    expectLikeStandard<unsigned long long>(
        [](const char* text, char** end) { return std::strtoull(text, end, 10); });
    expectLikeStandard<double>([](const char* text, char** end) { return std::strtod(text, end); });
    expectLikeStandard<float>([](const char* text, char** end) { return std::strtod(text, end); });
}

TEST(NumberText, IntegersHaveTheRangeOfThirtyTwoBits) {
    struct Row {
        const char* text;
        bool signedFits;
        int signedValue;
        bool unsignedFits;
        unsigned unsignedValue;
    };
    constexpr Row rows[] = {
        {"2147483647", true, INT_MAX, true, 2147483647u},
        {"2147483648", false, INT_MAX, true, 2147483648u},
        {"-2147483648", true, INT_MIN, true, 2147483648u},
        {"-2147483649", false, INT_MIN, true, 2147483647u},
        {"4294967295", false, INT_MAX, true, UINT_MAX},
        {"4294967296", false, INT_MAX, false, UINT_MAX},
        {"-1", true, -1, true, UINT_MAX},
        {"-4294967295", false, INT_MIN, true, 1u},
        {"-4294967296", false, INT_MIN, false, UINT_MAX},
        {"99999999999999999999", false, INT_MAX, false, UINT_MAX},
        {"abc", true, 0, true, 0u},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        const auto asInt = read<int>(row.text);
        const auto asUnsigned = read<unsigned>(row.text);
        EXPECT_EQ(asInt.inRange, row.signedFits);
        EXPECT_EQ(asInt.value, row.signedValue);
        EXPECT_EQ(asUnsigned.inRange, row.unsignedFits);
        EXPECT_EQ(asUnsigned.value, row.unsignedValue);
    }
}

TEST(NumberText, TheProcessLocaleDoesNotMatter) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    const char* comma = nullptr;
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "fr_FR.utf8"})
        if (!comma) comma = std::setlocale(LC_ALL, name);
    ASSERT_NE(comma, nullptr) << "no locale with a decimal comma is installed";
    for (const char* text : {"1.5", "0x1.8p0"}) {
        const auto got = read<double>(text);
        EXPECT_EQ(got.value, 1.5) << text << " in " << comma;
        EXPECT_EQ(got.used, std::strlen(text));
    }
    EXPECT_EQ(read<double>("1,5").value, 1.0);
    std::setlocale(LC_ALL, before.c_str());
}

TEST(NumberText, NumbersOneAfterTheOtherAreReadInOnePass) {
    for (const char* number : {"0x1p-2 ", "inf", "-Infinity", "nan", "NaN(1)", "+0x1", "-0x1e", "+1e999"}) {
        constexpr int numbers = 300000;
        std::string text;
        for (int i = 0; i < numbers; ++i) text += number;
        const char* place = text.data();
        const char* const end = place + text.size();
        int count = 0;
        for (double value = 0; kestrel::detail::skipBlanks(place, end) < end && count < numbers; ++count)
            readNumber(place, end, value);
        EXPECT_EQ(count, numbers) << number;
        EXPECT_EQ(kestrel::detail::skipBlanks(place, end), end) << number;
    }
}

}  // namespace
