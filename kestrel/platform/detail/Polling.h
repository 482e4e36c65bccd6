// kestrel/platform/detail/Polling.h - waiting for descriptors of any number, with select's results.
#pragma once

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <ctime>

namespace kestrel::detail {

/// The time-out of a wait that has none.
inline constexpr std::int64_t noTimeout = -1;

/// Waits until a descriptor of entries is readable, hung up, broken or closed, or until the time-out of
/// that many microseconds has passed; it never ends early because of rounding. Without entries it sleeps.
/// The number of entries with something to report, 0 after the time-out, -1 with errno on an error;
/// an interrupted wait is an error, EINTR. A cancellation point.
inline int pollDescriptors(pollfd* entries, std::size_t count, std::int64_t microseconds) {
    const auto entryCount = static_cast<nfds_t>(count);
    if (microseconds < 0) return ::poll(entries, entryCount, -1);
#if defined(__APPLE__)
    // Without ppoll the unit is the millisecond, rounded up, in steps that fit an int.
    std::int64_t milliseconds = (microseconds + 999) / 1000;
    int result;
    do {
        const auto step = std::min<std::int64_t>(milliseconds, INT_MAX);
        result = ::poll(entries, entryCount, static_cast<int>(step));
        milliseconds -= step;
    } while (result == 0 && milliseconds > 0);
    return result;
#else
    const timespec timeout{static_cast<std::time_t>(microseconds / 1000000),
                           static_cast<long>(microseconds % 1000000 * 1000)};
    return ::ppoll(entries, entryCount, &timeout, nullptr);
#endif
}

/// What select answers for this one descriptor in the read set: 1 when a read would not block (data, a
/// hang-up or an error is there), -1 with errno on an error; EINTR for an interrupted wait and EBADF for
/// a descriptor that is not open. A cancellation point.
inline int waitUntilReadable(int descriptor) {
    if (descriptor < 0) {  // poll would skip it, and wait for ever
        errno = EBADF;
        return -1;
    }
    pollfd entry{descriptor, POLLIN, 0};
    const int result = pollDescriptors(&entry, 1, noTimeout);
    if (result > 0 && (entry.revents & POLLNVAL)) {
        errno = EBADF;
        return -1;
    }
    return result;
}

}  // namespace kestrel::detail
