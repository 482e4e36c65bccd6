// kestrel/concurrency/KSSemaphore.h - a counter that threads wait for.
#pragma once

#include <kestrel/concurrency/KSConditionVariable.h>
#include <kestrel/concurrency/KSMutex.h>
#include <kestrel/platform/Export.h>

#include <atomic>

/// A counting semaphore.
///
/// Range      the count has 32 bits and wraps.
/// Threads    any. signal() wakes a waiter after it has released its own lock, so the semaphore must outlive
///            every signal() that is still running, even when the waiter has already gone on.
/// Errors     none are reported. A thread that is cancelled in wait() takes nothing and leaves it usable.
/// Example
///     KSSemaphore free(4);  // at most four workers at once
///     free.wait();
///     render(); free.signal();
class KESTREL_API KSSemaphore {
public:
    explicit KSSemaphore(unsigned int initial) : m_count(initial) {}

    /// Waits until the count is above zero and takes one.
    void wait();
    /// Adds one and wakes one waiter.
    void signal();

private:
    bool take();

    std::atomic<unsigned int> m_count;
    KSConditionVariable m_condition;
    KSMutex m_mutex;
    std::atomic<unsigned int> m_waiters{0};  // threads that sleep, or are about to
};
