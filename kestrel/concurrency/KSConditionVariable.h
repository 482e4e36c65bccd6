// kestrel/concurrency/KSConditionVariable.h - waiting for a condition that a mutex guards.
#pragma once

#include <kestrel/concurrency/KSMutex.h>
#include <kestrel/platform/Export.h>

#include <pthread.h>

/// One POSIX condition variable with default attributes. There is deliberately no broadcast: whoever
/// changes the state for several waiters signals once for each.
///
/// Threads    any. A cancelled waiter unwinds with the mutex locked again, as POSIX says.
/// Errors     none are reported; a wait may end without a signal, so test the state in a loop.
/// Example
///     mutex.lock();
///     while (queue.empty()) filled.wait(&mutex);
///     auto job = queue.front();  // then pop it and unlock
class KESTREL_API KSConditionVariable {
public:
    KSConditionVariable() { pthread_cond_init(&m_condition, nullptr); }
    KSConditionVariable(const KSConditionVariable&) = delete;
    KSConditionVariable& operator=(const KSConditionVariable&) = delete;
    ~KSConditionVariable() { pthread_cond_destroy(&m_condition); }

    /// Releases the mutex, which the caller holds, waits, and locks it again.
    void wait(KSMutex* mutex) { pthread_cond_wait(&m_condition, &mutex->m_mutex); }
    /// Wakes one waiter; with none, does nothing. The mutex need not be held.
    void signal() { pthread_cond_signal(&m_condition); }

private:
    pthread_cond_t m_condition;
};
