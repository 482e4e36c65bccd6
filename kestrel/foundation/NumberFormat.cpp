// Ten significant digits of a double.
//
// The value v = m * 2^e is multiplied by the power of ten that brings it between 10^9 and 10^11, with 64
// bits of each factor; rounding the product to an integer gives the digits. The product is off by less
// than 2^-28, so the rounding is right unless the fraction lies that close to one half; those few
// values go to the exact conversion of the standard library.
#include <kestrel/foundation/detail/NumberFormat.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace kestrel::detail {
namespace {

__extension__ using Uint128 = unsigned __int128;

/// A power of ten as mantissa * 2^exponent, the mantissa's top bit set and its rest cut off.
struct Power {
    std::uint64_t mantissa;
    int exponent;
};

constexpr int minPower = -300, maxPower = 334;  // 9 - floor(log10(v)) for every finite v, and one more

/// Each power comes from its neighbour in 128 bits, so that 334 roundings stay far below the 64th bit.
constexpr auto makePowers() {
    std::array<Power, maxPower - minPower + 1> powers{};
    const auto fill = [&](int step) {
        Uint128 mantissa = Uint128{1} << 127;
        int exponent = -127;
        for (int k = 0; minPower <= k && k <= maxPower; k += step) {
            powers[static_cast<std::size_t>(k - minPower)] = {static_cast<std::uint64_t>(mantissa >> 64),
                                                              exponent + 64};
            mantissa = step > 0 ? (mantissa >> 4) * 10 : mantissa / 10;
            if (step > 0) exponent += 4;
            for (; !(mantissa >> 127); --exponent) mantissa <<= 1;
        }
    };
    fill(+1);
    fill(-1);
    return powers;
}
constexpr auto powers = makePowers();

/// Ten digits with the decimal exponent of the first.
struct Digits {
    std::uint64_t digits;  // 10^9 <= digits < 10^10
    int exponent;
};

/// False where the approximation cannot tell how to round.
bool findDigits(double value, Digits& result) noexcept {
    const auto bits = std::bit_cast<std::uint64_t>(value);
    std::uint64_t mantissa = bits & ((std::uint64_t{1} << 52) - 1);
    int exponent = static_cast<int>(bits >> 52);  // the sign is gone already
    if (exponent) {
        mantissa |= std::uint64_t{1} << 52;
    } else {
        exponent = 1;  // subnormal
    }
    const int zeros = std::countl_zero(mantissa);
    mantissa <<= zeros;
    exponent -= 1075 + zeros;  // value = mantissa * 2^exponent

    // floor(log10(2^n)) for the n in question; the value's own may be one more.
    int decimal = ((exponent + 63) * 78913) >> 18;
    for (;; ++decimal) {
        const Power& power = powers[static_cast<std::size_t>(9 - decimal - minPower)];
        const Uint128 product = Uint128{mantissa} * power.mantissa;
        const int fractionBits = -(exponent + power.exponent);  // 91 ... 99
        const auto fraction = static_cast<std::uint32_t>(product >> (fractionBits - 32));
        constexpr std::uint32_t half = std::uint32_t{1} << 31, doubt = 32;  // in units of 2^-32
        if (fraction - (half - doubt) <= 2 * doubt) return false;
        const std::uint64_t digits = static_cast<std::uint64_t>(product >> fractionBits) + (fraction >> 31);
        if (digits < 10'000'000'000) {
            result = {digits, decimal};
            return true;
        }
    }
}

constexpr auto makePairs() {
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}
constexpr auto pairs = makePairs();

char* put(char* out, const char* text, int length) noexcept {
    std::memcpy(out, text, static_cast<std::size_t>(length));
    return out + length;
}

/// The layout of "%g": plain notation for exponents -4 ... 9, no zeros at the end of a fraction.
char* layOut(char* out, const Digits& number) noexcept {
    char text[10];
    std::uint64_t rest = number.digits;
    for (int i = 8; i >= 0; i -= 2, rest /= 100) std::memcpy(text + i, &pairs[rest % 100 * 2], 2);
    int count = 10;
    while (text[count - 1] == '0') --count;  // the first digit is none

    const int exponent = number.exponent;
    if (0 <= exponent && exponent < 10) {
        const int whole = exponent + 1;
        if (count <= whole) return put(out, text, whole);
        out = put(out, text, whole);
        *out++ = '.';
        return put(out, text + whole, count - whole);
    }
    if (-4 <= exponent && exponent < 0) {
        out = put(out, "0.000", 1 - exponent);
        return put(out, text, count);
    }
    *out++ = text[0];
    if (count > 1) *out++ = '.';
    out = put(out, text + 1, count - 1);
    *out++ = 'e';
    *out++ = exponent < 0 ? '-' : '+';
    const int size = std::abs(exponent);
    if (size >= 100) *out++ = static_cast<char>('0' + size / 100);
    return put(out, &pairs[static_cast<std::size_t>(size % 100 * 2)], 2);
}

}  // namespace

char* formatDouble(char* out, double value) noexcept {
    if (std::signbit(value)) {
        *out++ = '-';
        value = -value;
    }
    if (value < 1e9) {  // small integers are frequent; zero is one of them
        const auto integer = static_cast<std::uint32_t>(value);
        if (integer == value) return formatInteger(out, integer);
    }
    Digits digits;
    if (std::isfinite(value) && findDigits(value, digits)) return layOut(out, digits);
    // The room left holds at least 23 bytes, the longest text is 16 without its sign.
    return std::to_chars(out, out + numberRoom - 1, value, std::chars_format::general, 10).ptr;
}

}  // namespace kestrel::detail
