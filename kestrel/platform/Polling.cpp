#include <kestrel/platform/detail/Polling.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <ctime>

namespace kestrel::detail {

#if defined(__APPLE__)

// Without ppoll the unit is the millisecond, rounded up, in steps that fit an int.
int pollDescriptors(pollfd* entries, std::size_t count, std::int64_t microseconds) {
    const auto entryCount = static_cast<nfds_t>(count);
    if (microseconds < 0) return ::poll(entries, entryCount, -1);
    std::int64_t milliseconds = (microseconds + 999) / 1000;
    int result;
    do {
        const auto step = std::min<std::int64_t>(milliseconds, INT_MAX);
        result = ::poll(entries, entryCount, static_cast<int>(step));
        milliseconds -= step;
    } while (result == 0 && milliseconds > 0);
    return result;
}

#else

int pollDescriptors(pollfd* entries, std::size_t count, std::int64_t microseconds) {
    const auto entryCount = static_cast<nfds_t>(count);
    if (microseconds < 0) return ::poll(entries, entryCount, -1);
    const timespec timeout{static_cast<std::time_t>(microseconds / 1000000),
                           static_cast<long>(microseconds % 1000000 * 1000)};
    return ::ppoll(entries, entryCount, &timeout, nullptr);
}

#endif

int waitUntilReadable(int descriptor) {
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
