#include <kestrel/platform/detail/DetachedThread.h>

#include <kestrel/platform/detail/AutoreleasePool.h>

#include <pthread.h>

#include <memory>
#include <new>

namespace kestrel::detail {

namespace {

/// Carries the start request to the new thread, which owns it.
struct ThreadInfoObj {
    void (*function)(void*);
    void* argument;
};

// A cancelled thread unwinds through here, so nothing may be noexcept.
void* doThreadedProcess(void* request) {
    const std::unique_ptr<ThreadInfoObj> info(static_cast<ThreadInfoObj*>(request));
    const AutoreleasePool pool;
    if (info->function) info->function(info->argument);
    return nullptr;
}

}  // namespace

bool startDetachedThread(void (*function)(void*), void* argument) {
    std::unique_ptr<ThreadInfoObj> info(new (std::nothrow) ThreadInfoObj{function, argument});
    pthread_attr_t attributes;
    if (!info || pthread_attr_init(&attributes) != 0) return false;
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    pthread_t thread;
    const bool isStarted = pthread_create(&thread, &attributes, doThreadedProcess, info.get()) == 0;
    pthread_attr_destroy(&attributes);
    if (isStarted) static_cast<void>(info.release());  // the thread's now
    return isStarted;
}

}  // namespace kestrel::detail
