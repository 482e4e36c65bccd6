// kestrel/time/KSTimer.h - a stopwatch.
#pragma once

#include <kestrel/platform/Export.h>

#include <cstdint>

/// A stopwatch over the wall clock that also keeps the average of all its timings.
///
/// Order      start, then any number of (pause, resume), then stop. A pause or stop at any other moment
///            gives a meaningless elapsed time and, for stop, counts it.
/// Units      seconds and microseconds of wall time: a clock that is set meanwhile shows.
/// Threads    one at a time.
/// Example
///     KSTimer timer;
///     for (auto& frame : frames) { timer.start(); render(frame); timer.stop(); }
///     std::printf("%g s a frame\n", timer.getAverageSeconds());
class KESTREL_API KSTimer {
public:
    KSTimer() noexcept = default;

    /// Back to the state of a new timer.
    void reset() noexcept { *this = KSTimer(); }
    /// Begins a timing at 0; earlier timings still count in the average.
    void start();
    /// Adds the time since start() or resume() and waits. No timing is counted.
    void pause();
    /// Goes on with the timing that pause() interrupted.
    void resume();
    /// Adds the time since start() or resume(), and counts the timing.
    void stop();
    /// Ends the timing: nothing is added or counted.
    void abortTiming() noexcept { m_startSeconds = notRunning; }

    /// The elapsed time of the current timing up to its last pause, or of the last timing.
    double getSeconds() const noexcept { return m_elapsedSeconds + m_elapsedMicroseconds / 1e6; }
    int secs() const noexcept { return m_elapsedSeconds; }        ///< whole seconds of it
    int uSecs() const noexcept { return m_elapsedMicroseconds; }  ///< and the microseconds, 0..999999
    /// How many timings stop() has counted.
    int getNumTimings() const noexcept { return m_numTimings; }
    /// Seconds a timing over all that are counted; 0 if none is.
    double getAverageSeconds() const noexcept { return m_numTimings ? m_totalSeconds / m_numTimings : 0.0; }
    /// Timings a second at the pace of getSeconds(); infinite when that is 0.
    double getRate() const noexcept { return 1.0 / getSeconds(); }

private:
    void setStartToNow();
    void addTimeSinceStart();

    static constexpr std::int32_t notRunning = -1;  // in place of the start's seconds
    static constexpr std::int32_t paused = -2;

    std::int32_t m_startSeconds = notRunning;
    std::int32_t m_startMicroseconds = 0;
    std::int32_t m_elapsedSeconds = 0;
    std::int32_t m_elapsedMicroseconds = 0;
    std::int32_t m_numTimings = 0;
    double m_totalSeconds = 0.0;
};
