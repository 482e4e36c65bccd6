// kestrel/time/KSTimeValue.h - a time paired with a frame rate.
#pragma once

#include <kestrel/platform/Export.h>

/// The reciprocal of the number of parts that a frame is divided into.
inline constexpr double KSRecipFrameParts = 1.0 / 256;

/// A time and the frame rate it belongs to, with the NTSC-style rates recognised.
///
/// Units      rate is in frames a second. With ntsc set, the true rate is rate * 1000/1001.
/// Rates      a rate less than 0.1 below 24, 30 or 60 (23.976, 29.97, 59.94) is stored as that whole
///            number with ntsc set; any other is kept as given, not a number and the infinite ones too.
/// Threads    a plain value.
/// Example
///     KSTimeValue value(29.97);                 // rate 30, ntsc true
///     value.time = 12.5;
///     std::printf("%g\n", value.getDisplayRate());  // 29.97
class KESTREL_API KSTimeValue {
public:
    /// Time 0 at the given rate.
    explicit KSTimeValue(double framesPerSecond) noexcept : KSTimeValue(0.0, framesPerSecond, false) {}
    KSTimeValue(double timeValue, double framesPerSecond, bool isNtsc) noexcept : time(timeValue) {
        setRate(framesPerSecond, isNtsc);
    }

    /// Stores both; a rate that is recognised sets ntsc, and none ever clears it.
    void setRate(double framesPerSecond, bool isNtsc) noexcept;

    /// The rate to show to a person: the true rate to two places with ntsc set (29.97 for 30, 23.98 for
    /// 24), otherwise the rate itself.
    double getDisplayRate() const noexcept;

    bool operator==(const KSTimeValue&) const noexcept = default;

    double time;
    double rate;
    bool ntsc;
};
