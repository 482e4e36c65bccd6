// kestrel/concurrency/KSBarrier.h - a place where threads wait for each other.
#pragma once

#include <kestrel/platform/Export.h>

#include <pthread.h>

#include <atomic>

/// A barrier for a fixed number of threads, at least 1, that can be passed any number of times.
///
/// Ownership  the destructor deliberately locks the barrier for good and destroys nothing: a barrier lives
///            as long as the process, or until no thread can reach it any more.
/// Threads    any. A thread that is cancelled in wait() has arrived: its place in this round stays taken.
/// Errors     none are reported.
/// Example
///     static KSBarrier barrier(3);
///     computeMyRows();
///     barrier.wait();  // all rows are there
class KESTREL_API KSBarrier {
public:
    explicit KSBarrier(unsigned int parties);
    KSBarrier(const KSBarrier&) = delete;
    KSBarrier& operator=(const KSBarrier&) = delete;
    ~KSBarrier();

    /// Returns when as many threads have called it as there are parties.
    void wait();

private:
    // POSIX objects, not our classes, whose destructors would destroy them.
    pthread_mutex_t m_mutex;
    pthread_cond_t m_condition;
    unsigned int m_parties;
    unsigned int m_remaining;
    std::atomic<unsigned char> m_phase{0};  // flips each time the barrier opens
};
