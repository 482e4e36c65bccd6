// kestrel/concurrency/KSWaitable.h - waiting for any one of several things.
#pragma once

#include <kestrel/platform/Export.h>
#include <kestrel/time/KSTime.h>

#include <vector>

/// One entry of a list to wait on: a descriptor that becomes readable, a deadline, or a function that does
/// the waiting for the whole list.
///
/// A default entry is a deadline long past: it ends every wait at once. Only a deadline with 0x7FFFFFFF in
/// both fields is never.
///
/// Ownership  a plain value; borrows the descriptor.
/// Threads    any thread may wait on any list, several on one descriptor. The waits hold no lock and are
///            cancellation points.
/// Errors     none are reported: an error other than an interruption ends the wait. A closed descriptor, a
///            hang-up and an error on a descriptor end it too. A list may hold no more descriptors than
///            the process may have open; the numbers of the descriptors do not matter.
/// Example
///     KSTime deadline = KSTime::now();
///     deadline.add(2.5f);
///     KSWaitable::wait({event.getWaitable(), socket.getWaitable(), deadline});
class KESTREL_API KSWaitable {
public:
    /// Does the waiting for a list that holds it.
    using Function = void (*)(const std::vector<KSWaitable>&);

    KSWaitable() = default;
    KSWaitable(Function function) : m_function(function) {}
    KSWaitable(int descriptor) : m_descriptor(descriptor) {}
    KSWaitable(const KSTime& deadline) : m_descriptor(-1), m_deadline(deadline) {}

    /// 0 or more: watched for readability. -1: a deadline. -2: neither. Whatever is negative takes part in
    /// a wait with its deadline.
    int getDescriptor() const { return m_descriptor; }
    /// Null unless the entry was made from a function.
    Function getFunction() const { return m_function; }
    const KSTime& getDeadline() const { return m_deadline; }

    /// Blocks until a descriptor of the list is readable or the earliest deadline has been reached.
    ///
    /// It does not say what ended it: try the descriptors without blocking, ask the deadlines isPast(). A
    /// deadline that has already been reached ends the wait before any descriptor is looked at. Without
    /// descriptors and without a deadline other than never (so for an empty list) it returns at once. If
    /// entries carry functions, the last of them is called with the list, and that is all.
    static void wait(const std::vector<KSWaitable>& list);
    /// Sleeps until deadline.
    static void wait(const KSTime& deadline);

private:
    int m_descriptor = -2;
    Function m_function = nullptr;
    KSTime m_deadline{0, 0};
};
