// kestrel/time/detail/Clock.h - the one place where this folder learns what time it is.
#pragma once

#include <cstdint>

namespace kestrel::detail {

/// A reading of the wall clock: seconds since the epoch, and 0..999999 microseconds.
struct ClockReading {
    std::int64_t seconds;
    std::int32_t microseconds;
};

using ClockFunction = ClockReading (*)();

/// The present moment, from the system's time-of-day clock or from the function that stands in for it.
ClockReading readClock();

/// Puts function in the place of the system's clock for the whole process; null brings that back.
/// For tests. Any thread.
void setClock(ClockFunction function);

}  // namespace kestrel::detail
