#include <kestrel/foundation/detail/NumberText.h>

#include <locale.h>
#include <bit>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>

namespace kestrel::detail {
namespace {

static_assert(std::endian::native == std::endian::little, "digits are read from words, the first lowest");

bool isDigit(char c) { return c >= '0' && c <= '9'; }

template <typename Integer>
bool readInteger(const char*& text, const char* end, Integer& value) {
    using Unsigned = std::make_unsigned_t<Integer>;
    using Limits = std::numeric_limits<Integer>;
    value = 0;
    const char* place = skipBlanks(text, end);
    const bool negative = place < end && *place == '-';
    if (place < end && (*place == '-' || *place == '+')) ++place;
    if (place == end || !isDigit(*place)) return true;

    Unsigned magnitude = 0;
    // The magnitude of a signed minimum is one more than that of the maximum.
    const auto largest = static_cast<Unsigned>(std::is_signed_v<Integer> && negative
                                                   ? Unsigned{0} - static_cast<Unsigned>(Limits::min())
                                                   : static_cast<Unsigned>(Limits::max()));
    bool fits = true;
    const char* const first = place;
    for (; place < end && place - first < Limits::digits10 && isDigit(*place); ++place)
        magnitude = magnitude * 10 + static_cast<Unsigned>(*place - '0');
    for (; place < end && isDigit(*place); ++place) {
        const auto digit = static_cast<Unsigned>(*place - '0');
        if (magnitude > (largest - digit) / 10)
            fits = false;
        else
            magnitude = magnitude * 10 + digit;
    }
    text = place;
    if (!fits)
        value = std::is_signed_v<Integer> && negative ? Limits::min() : Limits::max();
    else
        value = static_cast<Integer>(negative ? Unsigned{0} - magnitude : magnitude);
    return fits;
}

// Whether the text starts with the word, which is in small letters, in letters of either case.
bool startsWithWord(const char* text, const char* end, std::string_view word) {
    if (static_cast<std::size_t>(end - text) < word.size()) return false;
    for (const char c : word)
        if ((*text++ | 0x20) != c) return false;
    return true;
}

// Where the number at place ends at the latest. It follows the grammar, so that reading number after number
// out of a text without blanks ("infinfinf", "0x1-0x1") looks at each byte a bounded number of times.
const char* numberEnd(const char* place, const char* end) {
    const auto skipSign = [&] { place += place < end && (*place == '-' || *place == '+'); };
    skipSign();
    if (startsWithWord(place, end, "infinity")) return place + 8;
    if (startsWithWord(place, end, "inf")) return place + 3;
    if (startsWithWord(place, end, "nan")) {
        place += 3;
        const auto inBrackets = [](char c) {
            return isDigit(c) || c == '_' || ((c | 0x20) >= 'a' && (c | 0x20) <= 'z');
        };
        if (place == end || *place != '(') return place;
        ++place;
        while (place < end && inBrackets(*place)) ++place;
        return place < end ? place + 1 : place;  // with the bracket that closes it
    }
    const bool isHexadecimal = startsWithWord(place, end, "0x");
    if (isHexadecimal) place += 2;
    const auto skipDigits = [&](bool hexadecimal) {
        while (place < end &&
               (isDigit(*place) || (hexadecimal && (*place | 0x20) >= 'a' && (*place | 0x20) <= 'f')))
            ++place;
    };
    skipDigits(isHexadecimal);
    if (place < end && *place == '.') ++place;
    skipDigits(isHexadecimal);
    if (place < end && (*place | 0x20) == (isHexadecimal ? 'p' : 'e')) {
        ++place;
        skipSign();
        skipDigits(false);
    }
    return place;
}

// The standard function itself, for the rare texts: hexadecimal, infinite, no number, out of range.
bool readWithStrtod(const char*& text, const char* place, const char* end, double& value) {
    static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", nullptr);
    const std::string copy(place, numberEnd(place, end));
    char* stop = nullptr;
    errno = 0;
    value = strtod_l(copy.c_str(), &stop, cLocale);
    if (stop != copy.c_str()) text = place + (stop - copy.c_str());
    return errno != ERANGE || !(value == 0 || std::isinf(value));
}

/// Digits as they stand one after another, at most eight.
struct DigitRun {
    std::uint64_t value;
    int count;
};

// Eight bytes at once, with a few multiplications for all of their digits (Lemire, "Number Parsing at a
// Gigabyte per Second", 2021). Reads nothing before begin or behind end.
DigitRun readDigitRun(const char* begin, const char* place, const char* end) {
    constexpr std::ptrdiff_t width = 8;
    const std::ptrdiff_t left = end - place;
    if (left == 0 || end - begin < width) {
        DigitRun run{0, 0};
        for (; place < end && isDigit(*place); ++place, ++run.count)
            run.value = run.value * 10 + static_cast<std::uint64_t>(*place - '0');
        return run;
    }
    std::uint64_t bytes;  // the first in the lowest bits
    std::memcpy(&bytes, left < width ? end - width : place, width);
    if (left < width) bytes >>= 8 * (width - left);
    bytes ^= 0x3030303030303030;  // a digit is now its value
    const std::uint64_t others = (bytes | (bytes + 0x0606060606060606)) & 0xF0F0F0F0F0F0F0F0;
    const int count = others ? std::countr_zero(others) / 8 : 8;
    if (count == 0) return {0, 0};
    bytes <<= 8 * (8 - count);  // zeros before the digits
    bytes = (bytes * 10 + (bytes >> 8)) & 0x00FF00FF00FF00FF;
    bytes = (bytes * 100 + (bytes >> 16)) & 0x0000FFFF0000FFFF;
    return {(bytes * 10000 + (bytes >> 32)) & 0xFFFFFFFF, count};
}

// Decimal numbers of few digits, which most are: while the digits as an integer and the power of ten are
// both exact, their product or quotient has the one rounding that the nearest double has (Clinger, "How to
// Read Floating Point Numbers Accurately", 1990). The end of the number; null when it takes more than that.
const char* readShortDecimal(const char* place, const char* end, double& value) {
    constexpr double powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    constexpr std::uint64_t shifts[] = {1,       10,        100,        1'000,      10'000,
                                        100'000, 1'000'000, 10'000'000, 100'000'000};
    constexpr int mostDigits = 15;  // any such integer is below 2^53
    const char* const begin = place;
    const bool negative = *place == '-';
    if (negative) ++place;
    std::uint64_t integer = 0;
    int digits = 0, exponent = 0;
    const auto readDigits = [&] {
        DigitRun run;
        do {
            run = readDigitRun(begin, place, end);
            integer = integer * shifts[run.count] + run.value;
            digits += run.count;
            place += run.count;
        } while (run.count == 8 && digits <= mostDigits);
    };
    readDigits();
    if (place < end && *place == '.') {
        ++place;
        const int before = digits;
        readDigits();
        exponent = before - digits;
    }
    if (digits == 0 || digits > mostDigits) return nullptr;
    if (place < end && (*place | 0x20) == 'e') {
        const char* part = place + 1;
        const bool negativePart = part < end && *part == '-';
        if (part < end && (*part == '-' || *part == '+')) ++part;
        int power = 0;
        const char* const first = part;
        for (; part < end && isDigit(*part) && part - first < 4; ++part) power = power * 10 + (*part - '0');
        if (part == first || (part < end && isDigit(*part))) return nullptr;
        exponent += negativePart ? -power : power;
        place = part;
    }
    if (exponent < -22 || exponent > 22) return nullptr;
    const auto exact = static_cast<double>(static_cast<std::int64_t>(integer));
    value = exponent < 0 ? exact / powers[-exponent] : exact * powers[exponent];
    if (negative) value = -value;
    return place;
}

bool readDouble(const char*& text, const char* end, double& value) {
    const char* place = skipBlanks(text, end);
    // from_chars gives the same bits for decimal numbers; it knows no "+" and no "0x".
    const char* digits = place < end && (*place == '-' || *place == '+') ? place + 1 : place;
    if (digits < end && (isDigit(*digits) || *digits == '.') &&
        !(end - digits > 1 && digits[0] == '0' && (digits[1] | 0x20) == 'x')) {
        const char* from = place < end && *place == '+' ? digits : place;
        if (const char* stop = readShortDecimal(from, end, value)) {
            text = stop;
            return true;
        }
        const auto [stop, error] = std::from_chars(from, end, value);
        if (error == std::errc()) {
            text = stop;
            return true;
        }
    }
    return readWithStrtod(text, place, end, value);
}

}  // namespace

template <typename Number>
bool readNumber(const char*& text, const char* end, Number& value) {
    if constexpr (std::is_integral_v<Number>) {
        return readInteger(text, end, value);
    } else {
        double wide = 0;
        const bool inRange = readDouble(text, end, wide);
        value = static_cast<Number>(wide);
        return inRange;
    }
}

template bool readNumber(const char*&, const char*, int&);
template bool readNumber(const char*&, const char*, unsigned&);
template bool readNumber(const char*&, const char*, long long&);
template bool readNumber(const char*&, const char*, unsigned long long&);
template bool readNumber(const char*&, const char*, float&);
template bool readNumber(const char*&, const char*, double&);

}  // namespace kestrel::detail
