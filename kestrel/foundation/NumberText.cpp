#include <kestrel/foundation/detail/NumberText.h>

#include <locale.h>
#include <cerrno>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>
#include <type_traits>

namespace kestrel::detail {
namespace {

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

// The standard function itself, for the rare texts: hexadecimal, infinite, no number, out of range.
bool readWithStrtod(const char*& text, const char* place, const char* end, double& value) {
    static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", nullptr);
    const char* blank = place;  // a number holds no blank, so that a copy up to one is enough
    while (blank < end && skipBlanks(blank, blank + 1) == blank) ++blank;
    const std::string copy(place, blank);
    char* stop = nullptr;
    errno = 0;
    value = strtod_l(copy.c_str(), &stop, cLocale);
    if (stop != copy.c_str()) text = place + (stop - copy.c_str());
    return errno != ERANGE || !(value == 0 || std::isinf(value));
}

bool readDouble(const char*& text, const char* end, double& value) {
    const char* place = skipBlanks(text, end);
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
