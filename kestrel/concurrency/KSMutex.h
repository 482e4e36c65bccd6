// kestrel/concurrency/KSMutex.h - mutual exclusion.
#pragma once

#include <kestrel/platform/Export.h>

#include <pthread.h>

/// One POSIX mutex with default attributes: not recursive, so a thread that locks it twice waits for ever.
///
/// Ownership  cannot be copied; must be unlocked when it is destroyed.
/// Threads    any; the thread that locked it unlocks it.
/// Errors     none are reported.
/// Example    std::lock_guard works with it, and keeps it right when a thread is cancelled:
///     KSMutex mutex;
///     std::lock_guard guard(mutex);
///     ++counter;
class KESTREL_API KSMutex {
public:
    KSMutex() { pthread_mutex_init(&m_mutex, nullptr); }
    KSMutex(const KSMutex&) = delete;
    KSMutex& operator=(const KSMutex&) = delete;
    ~KSMutex() { pthread_mutex_destroy(&m_mutex); }

    void lock() { pthread_mutex_lock(&m_mutex); }
    void unlock() { pthread_mutex_unlock(&m_mutex); }

private:
    friend class KSConditionVariable;  // waits on the mutex directly
    pthread_mutex_t m_mutex;
};
