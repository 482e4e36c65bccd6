// kestrel/foundation/detail/NumberText.h - reads numbers in text as the C locale writes them.
#pragma once

namespace kestrel::detail {

/// Skips what isspace knows in the C locale: blank, tab, line feed, vertical tab, form feed, return.
inline const char* skipBlanks(const char* text, const char* end) {
    while (text < end && (*text == ' ' || (*text >= '\t' && *text <= '\r'))) ++text;
    return text;
}

/// Reads one number from the text between text and end, exactly as the standard functions named below do
/// in the C locale, whatever the locale of the process; nothing behind end is looked at, and no NUL need
/// stand there.
///
///     int, unsigned                 strtol, strtoul, base 10, with the range of 32 bits
///     long long, unsigned long long strtoll, strtoull, base 10
///     double, float                 strtod (decimal, hexadecimal, infinities, NaNs); a float is narrowed
///                                   from the double, so that 1e39 is infinity and no error
///
/// Leading blanks and a sign are read; a minus before an unsigned number negates it modulo its range.
///
/// @param text   moved behind the number; left alone, with value 0, where no number is
/// @param value  what was read; the nearest limit on a range error
/// @return       false on a range error: an integer out of its range, a double too large, or one that is
///               too small even for a subnormal number. A subnormal number is a number.
template <typename Number>
bool readNumber(const char*& text, const char* end, Number& value);

}  // namespace kestrel::detail
