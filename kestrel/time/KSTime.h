// kestrel/time/KSTime.h - an instant of the wall clock.
#pragma once

#include <kestrel/platform/Export.h>

#include <cstdint>

/// An absolute instant of the wall clock, the deadline of every time-out in this library.
///
/// Units      seconds since the epoch (1 January 1970, 00:00 UTC) and microseconds. The constructors
///            store microseconds as given; after add() they lie in 0..999999.
/// Range      32 bits of seconds, so until 19 January 2038. Seconds beyond it stay at the nearest limit.
/// Never      both fields 0x7FFFFFFF, the default, stand for an instant that is never reached. Nothing
///            guards it: adding to never normalises its microseconds, and it is an instant like others.
/// Threads    a plain value.
/// Example
///     KSTime deadline = KSTime::now();
///     deadline.add(2.5f);
///     while (deadline.isFuture()) poll();
class KESTREL_API KSTime {
public:
    /// Never.
    constexpr KSTime() noexcept = default;
    /// Stores both as given, without normalising.
    constexpr KSTime(int secondsSinceEpoch, int microsecondsOfSecond) noexcept
        : seconds(secondsSinceEpoch), microseconds(microsecondsOfSecond) {}

    /// The present moment, normalised.
    static KSTime now();

    /// Adds field by field, then moves whole seconds out of the microseconds.
    void add(int addSeconds, int addMicroseconds) noexcept;

    /// Adds a positive number of seconds, in single precision: the whole part, cut towards zero, to the
    /// seconds; the rest above floor(addSeconds + 0.00001) to the microseconds, cut towards zero.
    ///
    /// The two rules are deliberately not the same. They part for negative arguments (-1.5 moves the
    /// instant by -0.5 s) and just below a whole number (2.999995 moves it by 1.999995 s). Not a number
    /// counts as 0.
    void add(float addSeconds) noexcept;

    /// True at or after this instant.
    bool isPast() const;
    /// True strictly before this instant.
    bool isFuture() const;

    /// Prints both fields through KSPrintIndent; no newline is added.
    void print(unsigned int indent) const;

    /// Compares the fields as they are stored.
    constexpr bool operator==(const KSTime&) const noexcept = default;

    std::int32_t seconds = 0x7FFFFFFF;
    std::int32_t microseconds = 0x7FFFFFFF;
};
