// kestrel/concurrency/KSThread.h - a thread that can be joined.
#pragma once

#include <kestrel/platform/Export.h>

#include <pthread.h>

/// A handle of a POSIX thread with default attributes.
///
/// Ownership  the object is only the handle: copies name the same thread, and the destructor does nothing.
///            Each thread is waited for exactly once, through one of the copies; one that never is keeps
///            its memory until the process ends.
/// Threads    any; the handle itself is not locked.
/// Errors     a thread that could not be started leaves the handle unset: it equals no running thread, and
///            cancel() and wait() do nothing on it. An exception that leaves the function ends the process.
/// Example
///     KSThread worker(renderRows, &job);
///     renderOtherRows(&job);
///     worker.wait();
class KESTREL_API KSThread {
public:
    /// Starts a thread that calls fn(arg).
    KSThread(void (*fn)(void*), void* arg);
    /// Holds the calling thread.
    KSThread();

    /// What a new thread runs: calls the function in the start record, which it owns, and frees the record,
    /// also when the thread is cancelled. Returns null.
    static void* startup(void* record);

    /// Asks the thread to end at its next cancellation point; it unwinds as by an exception.
    void cancel();
    /// Waits until the thread has ended.
    void wait();
    /// Makes this the handle of the calling thread and returns it.
    pthread_t self();

    /// Whether both name the same thread.
    bool operator==(const KSThread& other) const;
    /// Whether this is the calling thread.
    bool isSelf() const;

private:
    bool isSet() const;
    pthread_t m_handle;
};
