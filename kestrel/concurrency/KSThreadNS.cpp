#include <kestrel/concurrency/KSThreadNS.h>

#include <kestrel/platform/detail/DetachedThread.h>

KSThreadNS::KSThreadNS(void (*fn)(void*), void* arg) { kestrel::detail::startDetachedThread(fn, arg); }
