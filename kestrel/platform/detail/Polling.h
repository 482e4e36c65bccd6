// kestrel/platform/detail/Polling.h - waiting for descriptors of any number, with select's results.
#pragma once

#include <poll.h>

#include <cstddef>
#include <cstdint>

namespace kestrel::detail {

/// The time-out of a wait that has none.
inline constexpr std::int64_t noTimeout = -1;

/// Waits until a descriptor of entries is readable, hung up, broken or closed, or until the time-out of
/// that many microseconds has passed; it never ends early because of rounding. Without entries it sleeps.
/// The number of entries with something to report, 0 after the time-out, -1 with errno on an error;
/// an interrupted wait is an error, EINTR. A cancellation point.
int pollDescriptors(pollfd* entries, std::size_t count, std::int64_t microseconds);

/// What select answers for this one descriptor in the read set: 1 when a read would not block (data, a
/// hang-up or an error is there), -1 with errno on an error; EINTR for an interrupted wait and EBADF for
/// a descriptor that is not open. A cancellation point.
int waitUntilReadable(int descriptor);

}  // namespace kestrel::detail
