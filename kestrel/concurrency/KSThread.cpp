#include <kestrel/concurrency/KSThread.h>

#include <memory>
#include <new>

namespace {

struct StartRecord {
    void (*function)(void*);
    void* argument;
};

}  // namespace

KSThread::KSThread(void (*fn)(void*), void* arg) : m_handle() {
    std::unique_ptr<StartRecord> record(new (std::nothrow) StartRecord{fn, arg});
    pthread_t handle;
    if (!record || pthread_create(&handle, nullptr, startup, record.get()) != 0) return;
    static_cast<void>(record.release());  // the thread's now
    m_handle = handle;
}

KSThread::KSThread() : m_handle(pthread_self()) {}

void* KSThread::startup(void* record) {
    const std::unique_ptr<StartRecord> owned(static_cast<StartRecord*>(record));
    if (owned->function) owned->function(owned->argument);
    return nullptr;
}

bool KSThread::isSet() const { return m_handle != pthread_t(); }

void KSThread::cancel() {
    if (isSet()) pthread_cancel(m_handle);
}

void KSThread::wait() {
    if (isSet()) pthread_join(m_handle, nullptr);
}

pthread_t KSThread::self() {
    m_handle = pthread_self();
    return m_handle;
}

bool KSThread::operator==(const KSThread& other) const {
    return pthread_equal(m_handle, other.m_handle) != 0;
}

bool KSThread::isSelf() const { return pthread_equal(m_handle, pthread_self()) != 0; }
