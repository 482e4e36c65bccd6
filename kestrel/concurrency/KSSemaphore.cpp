#include <kestrel/concurrency/KSSemaphore.h>

#include <mutex>

void KSSemaphore::wait() {
    const std::lock_guard guard(m_mutex);
    while (m_count == 0) m_condition.wait(&m_mutex);
    --m_count;
}

void KSSemaphore::signal() {
    {
        const std::lock_guard guard(m_mutex);
        ++m_count;
    }
    m_condition.signal();
}
