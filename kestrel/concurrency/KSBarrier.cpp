#include <kestrel/concurrency/KSBarrier.h>

KSBarrier::KSBarrier(unsigned int parties) : m_parties(parties), m_remaining(parties) {
    pthread_mutex_init(&m_mutex, nullptr);
    pthread_cond_init(&m_condition, nullptr);
}

KSBarrier::~KSBarrier() { pthread_mutex_lock(&m_mutex); }

void KSBarrier::wait() {
    struct Guard {  // a cancelled waiter holds the mutex again and must give it up
        explicit Guard(pthread_mutex_t& heldMutex) : mutex(heldMutex) { pthread_mutex_lock(&mutex); }
        Guard(const Guard&) = delete;
        Guard& operator=(const Guard&) = delete;
        ~Guard() { pthread_mutex_unlock(&mutex); }
        pthread_mutex_t& mutex;
    };
    const Guard guard(m_mutex);
    if (--m_remaining == 0) {
        m_phase ^= 1;
        m_remaining = m_parties;
        pthread_cond_broadcast(&m_condition);
        return;
    }
    const unsigned char phase = m_phase;
    while (m_phase == phase) pthread_cond_wait(&m_condition, &m_mutex);
}
