#include <kestrel/time/KSTimecode.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <type_traits>

namespace {

// Most numbers are positive and fit 32 bits, where division is faster.
std::int64_t divide(std::int64_t a, std::int64_t b) {
    if (((a | b) >> 32) == 0) return static_cast<std::uint32_t>(a) / static_cast<std::uint32_t>(b);
    return a / b;
}

// Far enough from the limits of 64 bits to add frames to.
constexpr std::int64_t largestCount = std::int64_t{1} << 62;

// The nearest number within largestCount: only rules that make no sense come to the end of it.
std::int64_t multiply(std::int64_t a, std::int64_t b) {
    std::int64_t product;
    if (__builtin_mul_overflow(a, b, &product)) return (a < 0) == (b < 0) ? largestCount : -largestCount;
    return std::clamp(product, -largestCount, largestCount);
}

int toInt(std::int64_t value) {
    using Limits = std::numeric_limits<int>;
    return static_cast<int>(std::clamp<std::int64_t>(value, Limits::min(), Limits::max()));
}

// At least two characters: a zero or, in rules that count backwards, a sign stands before a single digit.
template <class Unit>
Unit* writeNumber(Unit* out, std::int64_t value) {
    if (value < 0) {
        *out++ = '-';
        value = -value;
        if (value < 10) {
            *out++ = static_cast<Unit>('0' + value);
            return out;
        }
    }
    if (value >= 100) {
        out = writeNumber(out, value / 10);
        value %= 10;
    } else {
        *out++ = static_cast<Unit>('0' + value / 10);
    }
    *out++ = static_cast<Unit>('0' + value % 10);
    return out;
}

template <class Unit>
bool isDigit(Unit unit) {
    return unit >= '0' && unit <= '9';
}

template <class Unit>
bool isSpace(Unit unit) {
    return unit == ' ' || (unit >= '\t' && unit <= '\r');
}

// One bit for each separator; all lie below 64.
constexpr std::uint64_t separatorBits = [] {
    std::uint64_t bits = 0;
    for (const char* at = KSTimecode::separators; *at; ++at) bits |= std::uint64_t{1} << *at;
    return bits;
}();

template <class Unit>
bool isSeparator(Unit unit) {
    const unsigned code = static_cast<std::make_unsigned_t<Unit>>(unit);
    return code < 64 && (separatorBits >> code & 1) != 0;
}

// The number at the start of the field at text, which moves to the separator or to the end behind it.
template <class Unit>
std::int64_t readField(const Unit*& text, const Unit* end) {
    constexpr std::int64_t largest = std::numeric_limits<int>::max();
    while (text != end && isSpace(*text)) ++text;
    if (text != end && *text == '+') ++text;
    std::int64_t number = 0;
    for (; text != end && isDigit(*text); ++text) {
        if (number <= largest) number = number * 10 + (*text - '0');
    }
    while (text != end && !isSeparator(*text)) ++text;
    return std::min(number, largest);
}

// Up to four fields of a text.
struct Fields {
    std::array<std::int64_t, 4> numbers;
    int count;
};

template <class Unit>
Fields readFields(const Unit* text, const Unit* end) {
    Fields fields{{}, 0};
    while (fields.count < 4) {
        fields.numbers[fields.count++] = readField(text, end);
        if (text == end) break;
        ++text;  // the separator
    }
    return fields;
}

// Hours, minutes, seconds and frames.
std::array<std::int64_t, 4> toUnits(const Fields& fields) {
    std::array<std::int64_t, 4> units{};
    if (fields.count == 1) {
        std::int64_t number = fields.numbers[0];
        for (int i = 3; i >= 0; --i, number /= 100) units[i] = number % 100;
    } else {
        std::copy_n(fields.numbers.begin(), fields.count, units.end() - fields.count);
    }
    return units;
}

}  // namespace

std::int64_t KSTimecode::countDropped(std::int64_t frame, const KSTimecodeMode& mode) noexcept {
    if (mode.m_framesPerKeep == 0) return 0;
    const std::int64_t drop = mode.m_dropFrames;
    const std::int64_t keepIntervals = divide(frame, mode.m_framesPerKeep);
    const std::int64_t rest = frame - keepIntervals * mode.m_framesPerKeep;
    // The frames before the first drop point of a keep interval, and the numbers that it keeps.
    const bool isBeforeDrops = rest >= 0 && rest < drop;
    const std::int64_t drops = isBeforeDrops ? 0 : divide(rest - drop, mode.m_framesPerDrop);
    return multiply(drops + multiply(mode.m_dropsPerKeep - 1, keepIntervals), drop);
}

int KSTimecode::getDroppedFrames(const int& frame, const KSTimecodeMode& mode) noexcept {
    return toInt(countDropped(frame, mode));
}

template <class Unit>
Unit* KSTimecode::write(Unit* out, int frame, const KSTimecodeMode& mode) noexcept {
    std::int64_t number = frame;
    if (number < 0) {
        number = -number;
        *out++ = '-';
    }
    number += countDropped(number, mode);
    const std::int64_t seconds = divide(number, mode.m_fps);
    const std::int64_t minutes = divide(seconds, 60);
    const std::int64_t hours = divide(minutes, 60);
    out = writeNumber(out, hours);
    *out++ = ':';
    out = writeNumber(out, minutes - hours * 60);
    *out++ = ':';
    out = writeNumber(out, seconds - minutes * 60);
    *out++ = mode.m_framesPerKeep ? Unit{';'} : Unit{':'};
    return writeNumber(out, number - seconds * mode.m_fps);
}

void KSTimecode::getTimecode(const int& frame, const KSTimecodeMode& mode, KSString& out) {
    unsigned short text[maxTextSize];
    out.set(text, static_cast<unsigned int>(write(text, frame, mode) - text));
}

std::size_t KSTimecode::getTimecode(int frame, const KSTimecodeMode& mode, char* out,
                                    std::size_t size) noexcept {
    char text[maxTextSize];
    char* const direct = size >= maxTextSize ? out : text;
    char* const end = write(direct, frame, mode);
    *end = '\0';
    const auto length = static_cast<std::size_t>(end - direct);
    if (direct == text && size > 0) {
        const std::size_t kept = std::min(length, size - 1);
        std::memcpy(out, text, kept);
        out[kept] = '\0';
    }
    return length;
}

template <class Unit>
int KSTimecode::parse(const Unit* text, const Unit* end, const KSTimecodeMode& mode) noexcept {
    const bool isNegative = text != end && *text == '-';
    if (isNegative) ++text;

    const auto [hours, minutes, seconds, frames] = toUnits(readFields(text, end));
    std::int64_t allSeconds = (hours * 60 + minutes) * 60 + seconds;
    if (allSeconds > 0xFFFFFFFF)  // the product must stay within 64 bits
        allSeconds = std::min(allSeconds, (std::int64_t{1} << 62) / mode.m_fps);
    std::int64_t value = allSeconds * mode.m_fps + frames;
    if (mode.m_framesPerKeep != 0) {
        const std::int64_t framesPerInterval = std::int64_t{mode.m_fps} * mode.m_dropInterval;
        const std::int64_t framesPerKeep = mode.m_dropsPerKeep * framesPerInterval;
        const std::int64_t last = std::max<std::int64_t>(value - 1, 0);
        const std::int64_t drops = divide(last, framesPerInterval) - divide(last, framesPerKeep);
        const std::int64_t skipped = multiply(drops, mode.m_dropFrames);
        if (__builtin_sub_overflow(value, skipped, &value)) value = largestCount;  // skipped is negative
    }
    return toInt(isNegative ? -value : value);
}

int KSTimecode::getTimeIndex(const KSString& text, const KSTimecodeMode& mode) noexcept {
    const unsigned short* const units = text.u_str();
    const unsigned short* const end = units + text.size();
    return units ? parse(units, std::find(units, end, 0), mode) : 0;
}

int KSTimecode::getTimeIndex(const char* text, std::size_t length, const KSTimecodeMode& mode) noexcept {
    return text ? parse(text, std::find(text, text + length, '\0'), mode) : 0;
}
