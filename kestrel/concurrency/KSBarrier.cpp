#include <kestrel/concurrency/KSBarrier.h>

#include <kestrel/platform/detail/SpinPause.h>

namespace {

/// About as long as it takes to put a thread to sleep and wake it again.
constexpr int spinCount = 256;

/// Unlocks at its end, also when the thread is cancelled while it waits.
class Guard {
public:
    explicit Guard(pthread_mutex_t& mutex) : m_mutex(mutex) { pthread_mutex_lock(&m_mutex); }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;
    ~Guard() { pthread_mutex_unlock(&m_mutex); }

private:
    pthread_mutex_t& m_mutex;
};

}  // namespace

KSBarrier::KSBarrier(unsigned int parties) : m_parties(parties), m_remaining(parties) {
    pthread_mutex_init(&m_mutex, nullptr);
    pthread_cond_init(&m_condition, nullptr);
}

KSBarrier::~KSBarrier() { pthread_mutex_lock(&m_mutex); }

void KSBarrier::wait() {
    unsigned char phase;
    {
        const Guard guard(m_mutex);
        phase = m_phase;
        if (--m_remaining == 0) {
            m_phase = phase ^ 1;
            m_remaining = m_parties;
            pthread_cond_broadcast(&m_condition);
            return;
        }
    }
    // Parties that run at the same time meet here, without a sleep.
    for (int i = 0; i < spinCount; ++i) {
        if (m_phase != phase) return;
        kestrel::detail::spinPause();
    }
    const Guard guard(m_mutex);
    while (m_phase == phase) pthread_cond_wait(&m_condition, &m_mutex);
}
