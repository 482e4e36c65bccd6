#include <kestrel/platform/detail/AutoreleasePool.h>

namespace kestrel::detail {

namespace {
thread_local AutoreleasePool* innermost = nullptr;
}

AutoreleasePool::AutoreleasePool() : m_outer(innermost) { innermost = this; }

AutoreleasePool::~AutoreleasePool() {
    innermost = m_outer;
    for (CFTypeRef object : m_objects) CFRelease(object);
}

CFTypeRef autorelease(CFTypeRef object) {
    if (!object) return nullptr;
    if (!innermost) {
        static thread_local AutoreleasePool ofThread;
    }
    innermost->m_objects.push_back(object);
    return object;
}

}  // namespace kestrel::detail
