// kestrel/platform/detail/AutoreleasePool.h - delayed releases of the calling thread.
#pragma once

#include <kestrel/platform/CFBase.h>

#include <vector>

namespace kestrel::detail {

/// Releases at its end what autorelease() was given on the same thread while it was the innermost pool.
///
/// Threads    one pool belongs to one thread; pools on one thread nest like scopes.
class AutoreleasePool {
public:
    AutoreleasePool();
    AutoreleasePool(const AutoreleasePool&) = delete;
    AutoreleasePool& operator=(const AutoreleasePool&) = delete;
    ~AutoreleasePool();

private:
    friend CFTypeRef autorelease(CFTypeRef object);
    AutoreleasePool* m_outer;
    std::vector<CFTypeRef> m_objects;
};

/// Hands one reference of object to the thread's innermost pool and returns object. A thread that has no
/// pool of its own gets one that ends with the thread.
CFTypeRef autorelease(CFTypeRef object);

}  // namespace kestrel::detail
