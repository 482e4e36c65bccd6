// Number texts against the C library's formatter in the C locale.
#include <gtest/gtest.h>
#include <kestrel/foundation/detail/NumberFormat.h>

#include <bit>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <utility>

namespace {

using kestrel::detail::formatDouble;
using kestrel::detail::formatInteger;

std::string ours(double value) {
    char text[kestrel::detail::numberRoom + 8];
    std::memset(text, '#', sizeof text);
    const char* end = formatDouble(text, value);
    EXPECT_LE(end, text + kestrel::detail::numberRoom);
    for (const char* at = text + kestrel::detail::numberRoom; at < text + sizeof text; ++at)
        EXPECT_EQ(*at, '#');
    return std::string(text, static_cast<std::size_t>(end - text));
}

std::string theirs(double value) {
    char text[64];
    std::snprintf(text, sizeof text, "%.10g", value);
    return text;
}

/// Both signs; false on the first difference, so that loops of millions stop there.
bool agree(double value) {
    for (const double v : {value, -value}) {
        if (ours(v) == theirs(v)) continue;
        ADD_FAILURE() << std::hexfloat << v << ": " << ours(v) << ", not " << theirs(v);
        return false;
    }
    return true;
}

TEST(NumberFormat, SpecialValues) {
    using Limits = std::numeric_limits<double>;
    for (const double value : {Limits::infinity(), Limits::quiet_NaN(), Limits::max(), Limits::epsilon(),
                               std::nextafter(Limits::min(), 0.0), double{0.1f}})
        agree(value);
    const char* numbers =
        "0 0.1 1e9 999999999.5 9999999999.0 9999999999.4 9999999999.5 9999999999.6 1e10 12345678905.0 "
        "12345678915.0 0.0001 0.00009999999999 0.000099999999995 0.00001 4294967295.0 4294967296.0 1e22 1e23 "
        "5e-324 2.2250738585072011e-308 2.2250738585072014e-308 1e100 1e-100 123456.7890625";
    for (char* end = nullptr; *numbers; numbers = end) agree(std::strtod(numbers, &end));
}

TEST(NumberFormat, EveryBinaryAndDecimalExponent) {
    for (int e = -1074; e <= 1023; ++e) {  // powers of two, and their neighbours
        const double power = std::ldexp(1.0, e);
        if (!agree(power) || !agree(std::nextafter(power, 0.0)) || !agree(std::nextafter(power, HUGE_VAL)))
            return;
    }
    for (int e = -323; e <= 308; ++e) {
        for (const char* mantissa : {"1", "9.9999999994", "9.9999999995", "9.99999999951", "1.00000000005"}) {
            const double value =
                std::strtod((std::string(mantissa) + "e" + std::to_string(e)).c_str(), nullptr);
            if (!agree(value) || !agree(std::nextafter(value, 0.0)) ||
                !agree(std::nextafter(value, HUGE_VAL))) {
                return;
            }
        }
    }
}

TEST(NumberFormat, ExactTiesRoundToEven) {
    // n + 1/2 with ten digits before the point, and the same scaled by powers of two that keep the tie.
    for (std::uint64_t n = 1'000'000'000; n < 10'000'000'000; n += 8'999'999) {
        if (!agree(static_cast<double>(n) + 0.5)) return;
        if (!agree((static_cast<double>(n) + 0.5) * 10)) return;
        if (!agree((static_cast<double>(n) + 0.5) * 1000)) return;
    }
    for (int n = 1; n < 1 << 16; n += 2) {  // short binary fractions: 11 digits ending in 5 among them
        for (int shift = 0; shift <= 40; shift += 4) {
            if (!agree(std::ldexp(n, -shift))) return;
        }
    }
}

TEST(NumberFormat, RandomBitsAndRandomScenes) {
    std::mt19937_64 random(1321);
    for (int i = 0; i < 400'000; ++i) {
        if (!agree(std::bit_cast<double>(random() & 0x7fff'ffff'ffff'ffff))) return;  // any double at all
        if (!agree(double{std::bit_cast<float>(static_cast<std::uint32_t>(random() >> 33))})) return;
        if (!agree(static_cast<double>(random() % 100'000'000) / 10'000.0)) return;  // coordinates
        if (!agree(static_cast<double>(random() % 1'000'000'000'000) / 1e6)) return;
    }
}

template <class Integer>
void checkIntegers(const char* format) {
    using Limits = std::numeric_limits<Integer>;
    for (const Integer value :
         {Limits::min(), static_cast<Integer>(Limits::min() + 1), static_cast<Integer>(-1), Integer{0},
          Integer{9}, Integer{10}, Integer{99999}, Limits::max()}) {
        char want[32], got[kestrel::detail::numberRoom];
        std::snprintf(want, sizeof want, format, value);
        EXPECT_EQ(std::string(got, formatInteger(got, value)), want);
    }
}

TEST(NumberFormat, IntegersOfEveryWidth) {
    checkIntegers<int>("%d");
    checkIntegers<unsigned int>("%u");
    checkIntegers<long long>("%lld");
    checkIntegers<unsigned long long>("%llu");
}

TEST(NumberFormat, DecimalCommaStaysOut) {
    const char* comma = nullptr;
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "de_DE"}) {
        if ((comma = std::setlocale(LC_ALL, name))) break;
    }
    ASSERT_NE(comma, nullptr) << "no locale with a decimal comma is installed";
    EXPECT_EQ(theirs(0.5), "0,5");  // the locale is in force
    const std::string half = ours(0.5), large = ours(12345678.25), tie = ours(1000000000.5);
    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(half, "0.5");
    EXPECT_EQ(large, "12345678.25");
    EXPECT_EQ(tie, "1000000000");
}

}  // namespace
