// tests/time/FakeClock.h - a clock that stands still until a test moves it.
#pragma once

#include <kestrel/time/detail/Clock.h>

#include <cstdint>

/// Takes the place of the system's clock while it lives; one at a time.
class FakeClock {
public:
    explicit FakeClock(std::int64_t seconds, std::int32_t microseconds = 0) {
        set(seconds, microseconds);
        kestrel::detail::setClock([] { return s_reading; });
    }
    ~FakeClock() { kestrel::detail::setClock(nullptr); }
    FakeClock(const FakeClock&) = delete;
    FakeClock& operator=(const FakeClock&) = delete;

    void set(std::int64_t seconds, std::int32_t microseconds = 0) { s_reading = {seconds, microseconds}; }

private:
    inline static kestrel::detail::ClockReading s_reading{};
};
