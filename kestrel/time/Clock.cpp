#include <kestrel/time/detail/Clock.h>

#include <sys/time.h>

#include <atomic>

namespace kestrel::detail {
namespace {

ClockReading readSystemClock() {
    timeval now{};
    gettimeofday(&now, nullptr);
    return {now.tv_sec, static_cast<std::int32_t>(now.tv_usec)};
}

std::atomic<ClockFunction> clockFunction = readSystemClock;

}  // namespace

ClockReading readClock() { return clockFunction.load(std::memory_order_acquire)(); }

void setClock(ClockFunction function) {
    clockFunction.store(function ? function : readSystemClock, std::memory_order_release);
}

}  // namespace kestrel::detail
