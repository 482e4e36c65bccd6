#include <kestrel/concurrency/KSSemaphore.h>

#include <mutex>

bool KSSemaphore::take() {
    unsigned int count = m_count;
    while (count != 0)
        if (m_count.compare_exchange_weak(count, count - 1)) return true;
    return false;
}

void KSSemaphore::wait() {
    if (take()) return;
    const std::lock_guard guard(m_mutex);
    struct Waiter {  // goes also when the thread is cancelled
        explicit Waiter(std::atomic<unsigned int>& waiterCount) : count(waiterCount) { ++count; }
        Waiter(const Waiter&) = delete;
        Waiter& operator=(const Waiter&) = delete;
        ~Waiter() { --count; }
        std::atomic<unsigned int>& count;
    } const waiter(m_waiters);
    while (!take()) m_condition.wait(&m_mutex);
}

void KSSemaphore::signal() {
    ++m_count;
    // A waiter first counts itself and then looks at the count, so one of the two sees the other.
    if (m_waiters == 0) return;
    { const std::lock_guard guard(m_mutex); }  // from here on the waiter sleeps, or has seen the count
    m_condition.signal();
}
