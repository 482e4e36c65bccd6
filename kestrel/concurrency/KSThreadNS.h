// kestrel/concurrency/KSThreadNS.h - a detached thread with its own pool of delayed releases.
#pragma once

#include <kestrel/platform/Export.h>

/// Starts a thread of the platform's thread service, on systems without one a detached POSIX thread, inside
/// a pool that releases at the thread's end what the thread's functions handed out for a while (such as
/// KSString::ns_str()).
///
/// Ownership  the object holds nothing: the thread goes on after it and cannot be joined or cancelled. Keep
///            the argument alive until fn has let you know that it is done.
/// Errors     none are reported; a thread that could not be started never calls fn.
/// Example
///     static KSSemaphore done(0);  // static: signal() may still run when wait() returns
///     KSThreadNS([](void*) { loadFonts(); done.signal(); }, nullptr);
///     done.wait();
class KESTREL_API KSThreadNS {
public:
    /// Runs fn(arg) on the new thread; a null fn runs nothing.
    KSThreadNS(void (*fn)(void*), void* arg);
};
