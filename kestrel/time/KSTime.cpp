#include <kestrel/foundation/KSPrint.h>
#include <kestrel/time/KSTime.h>
#include <kestrel/time/detail/Clock.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

std::int32_t toInt32(std::int64_t value) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, Limits::min(), Limits::max()));
}

// The value cut towards zero, as far as 32 bits hold it.
std::int32_t truncate(float value) {
    constexpr float tooLarge = 2147483648.0f;  // 2^31; its negative still fits
    if (value >= tooLarge) return std::numeric_limits<std::int32_t>::max();
    if (value < -tooLarge) return std::numeric_limits<std::int32_t>::min();
    return static_cast<std::int32_t>(value);
}

void addAndNormalise(KSTime& time, std::int64_t addSeconds, std::int64_t addMicroseconds) {
    constexpr std::int64_t million = 1000000;
    std::int64_t seconds = time.seconds + addSeconds;
    std::int64_t microseconds = time.microseconds + addMicroseconds;
    seconds += microseconds / million;
    microseconds %= million;
    if (microseconds < 0) {
        microseconds += million;
        seconds -= 1;
    }
    time.seconds = toInt32(seconds);
    time.microseconds = static_cast<std::int32_t>(microseconds);
}

}  // namespace

KSTime KSTime::now() {
    const auto reading = kestrel::detail::readClock();
    return {toInt32(reading.seconds), reading.microseconds};
}

void KSTime::add(int addSeconds, int addMicroseconds) noexcept {
    addAndNormalise(*this, addSeconds, addMicroseconds);
}

void KSTime::add(float addSeconds) noexcept {
    if (std::isnan(addSeconds)) addSeconds = 0.0f;
    const float rest = std::isinf(addSeconds) ? 0.0f : addSeconds - std::floor(addSeconds + 0.00001f);
    addAndNormalise(*this, truncate(addSeconds), truncate(rest * 1000000.0f));
}

bool KSTime::isPast() const {
    const auto now = kestrel::detail::readClock();
    return now.seconds > seconds || (now.seconds == seconds && microseconds <= now.microseconds);
}

bool KSTime::isFuture() const {
    const auto now = kestrel::detail::readClock();
    return seconds > now.seconds || (seconds == now.seconds && now.microseconds < microseconds);
}

void KSTime::print(unsigned int indent) const {
    KSPrintIndent(indent, "%ld sec %ld usec", static_cast<long>(seconds), static_cast<long>(microseconds));
}
