// kestrel/concurrency/KSEvent.h - a flag that can be waited on together with sockets and deadlines.
#pragma once

#include <kestrel/concurrency/KSMutex.h>
#include <kestrel/platform/Export.h>

class KSWaitable;

/// A flag, raised or lowered, with a descriptor that is readable while it is raised.
///
/// The event is its own lock. Every change is lock() followed by exactly one raise() or lower(), which
/// release the lock again.
///
/// Ownership  owns two descriptors (close-on-exec, any number), cannot be copied.
/// Threads    any. raise() and lower() must be entered with the lock held; wait() without it. None of the
///            three changes is a cancellation point, wait() is. A forked child shares the descriptors with
///            its parent: there, make new events.
/// Errors     when the descriptors could not be made the event still keeps its flag, wait() returns an
///            error, and the waitable ends every wait at once.
/// Example
///     event.lock();
///     event.raise();  // and unlocks
///     KSWaitable::wait({event.getWaitable(), deadline});
class KESTREL_API KSEvent : public KSMutex {
public:
    /// Lowered.
    KSEvent();
    ~KSEvent();

    /// Makes the descriptor readable unless it is already raised, then releases the lock.
    void raise();
    /// Makes the descriptor unreadable unless it is already lowered, then releases the lock.
    void lower();

    /// Waits, without a time-out, until the event is raised; it stays raised. Returns 1, or -1 with errno:
    /// EINTR at once when a signal handler has run (the wait is deliberately not taken up again), EBADF
    /// without descriptors.
    int wait();

    /// Stands for the event in KSWaitable::wait; borrows the descriptor.
    KSWaitable getWaitable() const;

private:
    int m_raised = 0;
    int m_readEnd;
    int m_writeEnd;
};
