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

// Of a character that is no digit, a number above 9.
unsigned digitOf(char c) { return static_cast<unsigned char>(c) - unsigned{'0'}; }
bool isDigit(char c) { return digitOf(c) <= 9; }

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
        magnitude = magnitude * 10 + Unsigned{digitOf(*place)};
    for (; place < end && isDigit(*place); ++place) {
        const auto digit = Unsigned{digitOf(*place)};
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

/// A word of eight digits as their number (Lemire, "Number Parsing at a Gigabyte per Second", 2021); false,
/// with value as it was, if there is another character among the eight.
bool readEightDigits(const char* text, std::uint64_t& value) {
    std::uint64_t bytes;
    std::memcpy(&bytes, text, sizeof bytes);
    bytes ^= 0x3030303030303030;  // a digit is now its value
    if ((bytes | (bytes + 0x0606060606060606)) & 0xF0F0F0F0F0F0F0F0) return false;
    bytes = (bytes * 10 + (bytes >> 8)) & 0x00FF00FF00FF00FF;
    bytes = (bytes * 100 + (bytes >> 16)) & 0x0000FFFF0000FFFF;
    value = (bytes * 10'000 + (bytes >> 32)) & 0xFFFFFFFF;
    return true;
}

// Decimal numbers of few digits, which most are: while the digits as an integer and the power of ten are
// both exact, their product or quotient has the one rounding that the nearest double has (Clinger, "How to
// Read Floating Point Numbers Accurately", 1990). The end of the number; null when it takes more than that.
const char* readShortDecimal(const char* place, const char* end, double& value) {
    static constexpr double powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                        1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                        1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    constexpr int mostDigits = 15;            // any such integer is below 2^53
    constexpr int mostRead = mostDigits + 2;  // with a point, and one digit too many
    const bool negative = place < end && *place == '-';
    if (place < end && (*place == '-' || *place == '+')) ++place;

    const char* const first = place;
    const char* const stop = end - place > mostRead ? place + mostRead : end;
    std::uint64_t integer = 0;
    const auto readDigits = [&] {
        for (; place < stop && isDigit(*place); ++place) integer = integer * 10 + digitOf(*place);
    };
    readDigits();
    std::ptrdiff_t digits = place - first, exponent = 0;
    if (place < stop && *place == '.') {
        const char* const fraction = ++place;
        if (std::uint64_t eight = 0; stop - place >= 8 && readEightDigits(place, eight)) {
            integer = integer * 100'000'000 + eight;
            place += 8;
        }
        readDigits();
        exponent = fraction - place;
        digits -= exponent;
    }
    if (digits == 0 || digits > mostDigits) return nullptr;
    if (place < end && (*place | 0x20) == 'x') return nullptr;  // "0x"
    if (place < end && (*place | 0x20) == 'e') {
        const char* part = place + 1;
        const bool negativePart = part < end && *part == '-';
        if (part < end && (*part == '-' || *part == '+')) ++part;
        int power = 0;
        const char* const firstOfPart = part;
        for (; part < end && isDigit(*part) && part - firstOfPart < 4; ++part)
            power = power * 10 + static_cast<int>(digitOf(*part));
        if (part == firstOfPart || (part < end && isDigit(*part))) return nullptr;
        exponent += negativePart ? -power : power;
        if (exponent < -22 || exponent > 22) return nullptr;
        place = part;
    }
    const auto exact = static_cast<double>(static_cast<std::int64_t>(integer));
    const double number = exponent < 0 ? exact / powers[-exponent] : exact * powers[exponent];
    value = negative ? -number : number;
    return place;
}

// All other numbers.
[[gnu::cold]] bool readLongDouble(const char*& text, const char* place, const char* end, double& value) {
    // from_chars gives the same bits for decimal numbers; it knows no "+" and no "0x".
    const char* digits = place < end && (*place == '-' || *place == '+') ? place + 1 : place;
    if (digits < end && (isDigit(*digits) || *digits == '.') &&
        !(end - digits > 1 && digits[0] == '0' && (digits[1] | 0x20) == 'x')) {
        const char* from = place < end && *place == '+' ? digits : place;
        const auto [stop, error] = std::from_chars(from, end, value);
        if (error == std::errc()) {
            text = stop;
            return true;
        }
    }
    return readWithStrtod(text, place, end, value);
}

bool readDouble(const char*& text, const char* end, double& value) {
    const char* place = skipBlanks(text, end);
    const char* stop = readShortDecimal(place, end, value);
    if (!stop) return readLongDouble(text, place, end, value);
    text = stop;
    return true;
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
