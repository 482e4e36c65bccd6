#include <kestrel/concurrency/KSWaitable.h>

#include <kestrel/platform/detail/Polling.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

namespace {

using kestrel::detail::noTimeout;
using kestrel::detail::pollDescriptors;

constexpr KSTime never;

bool isBefore(const KSTime& a, const KSTime& b) {
    return a.seconds != b.seconds ? a.seconds < b.seconds : a.microseconds < b.microseconds;
}

/// Microseconds until deadline, 0 when it has been reached. In 64 bits no deadline is too far.
std::int64_t timeLeft(const KSTime& deadline) {
    const KSTime now = KSTime::now();
    if (!isBefore(now, deadline)) return 0;
    const std::int64_t left = (std::int64_t{deadline.seconds} - now.seconds) * 1000000 +
                              (std::int64_t{deadline.microseconds} - now.microseconds);
    return left > 0 ? left : 0;  // fields that nobody normalised
}

/// The descriptors to poll, one slot for each entry of the list: on the stack for usual lists.
class PollSet {
public:
    explicit PollSet(std::size_t capacity) {
        if (capacity <= m_few.size()) return;
        m_many.reset(new (std::nothrow) pollfd[capacity]);
        m_entries = m_many.get();
    }
    bool isValid() const { return m_entries != nullptr; }
    void add(int descriptor) {
        if (m_entries) m_entries[m_count++] = {descriptor, POLLIN, 0};
    }
    bool isEmpty() const { return m_count == 0; }
    int poll(std::int64_t microseconds) { return pollDescriptors(m_entries, m_count, microseconds); }

private:
    std::array<pollfd, 64> m_few;
    std::unique_ptr<pollfd[]> m_many;
    pollfd* m_entries = m_few.data();
    std::size_t m_count = 0;
};

}  // namespace

void KSWaitable::wait(const std::vector<KSWaitable>& list) {
    PollSet descriptors(list.size());
    Function last = nullptr;
    KSTime deadline = never;
    for (const KSWaitable& entry : list) {
        if (entry.m_function)
            last = entry.m_function;
        else if (entry.m_descriptor >= 0)
            descriptors.add(entry.m_descriptor);
        else if (isBefore(entry.m_deadline, deadline))
            deadline = entry.m_deadline;
    }
    if (last) return last(list);
    if (!descriptors.isValid()) return;

    const bool isEndless = deadline == never;
    if (isEndless && descriptors.isEmpty()) return;
    for (;;) {
        const std::int64_t left = isEndless ? noTimeout : timeLeft(deadline);
        if (left == 0) return;
        const int result = descriptors.poll(left);
        if (result > 0 || (result < 0 && errno != EINTR)) return;
    }
}

void KSWaitable::wait(const KSTime& deadline) {
    while (const std::int64_t left = timeLeft(deadline)) {
        if (pollDescriptors(nullptr, 0, left) >= 0 || errno != EINTR) return;
    }
}
