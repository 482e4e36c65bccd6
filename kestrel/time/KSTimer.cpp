#include <kestrel/time/KSTimer.h>
#include <kestrel/time/detail/Clock.h>

void KSTimer::start() {
    m_elapsedSeconds = m_elapsedMicroseconds = 0;
    setStartToNow();
}

void KSTimer::pause() {
    addTimeSinceStart();
    m_startSeconds = paused;
}

void KSTimer::resume() { setStartToNow(); }

void KSTimer::stop() {
    addTimeSinceStart();
    m_startSeconds = notRunning;
    ++m_numTimings;
    m_totalSeconds += getSeconds();
}

void KSTimer::setStartToNow() {
    const auto now = kestrel::detail::readClock();
    m_startSeconds = static_cast<std::int32_t>(now.seconds);
    m_startMicroseconds = now.microseconds;
}

// Seconds are 32 bits that wrap, so that a timing across January 2038 is right too.
void KSTimer::addTimeSinceStart() {
    const auto now = kestrel::detail::readClock();
    auto seconds = static_cast<std::uint32_t>(now.seconds) - static_cast<std::uint32_t>(m_startSeconds);
    auto microseconds = now.microseconds - m_startMicroseconds;
    if (microseconds < 0) {
        microseconds += 1000000;
        seconds -= 1;
    }
    seconds += static_cast<std::uint32_t>(m_elapsedSeconds);
    m_elapsedMicroseconds += microseconds;
    if (m_elapsedMicroseconds > 999999) {
        m_elapsedMicroseconds -= 1000000;
        seconds += 1;
    }
    m_elapsedSeconds = static_cast<std::int32_t>(seconds);
}
