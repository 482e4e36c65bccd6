// kestrel/platform/detail/CFOwner.h - releases a platform object at the end of a scope.
#pragma once

#include <kestrel/platform/CoreFoundation.h>

namespace kestrel::detail {

/// Takes over one reference to object, which may be null.
template <class Ref>
class CFOwner {
public:
    explicit CFOwner(Ref object) noexcept : m_object(object) {}
    CFOwner(const CFOwner&) = delete;
    CFOwner& operator=(const CFOwner&) = delete;
    ~CFOwner() { CFRelease(m_object); }

    const Ref& get() const noexcept { return m_object; }

private:
    Ref m_object;
};

}  // namespace kestrel::detail
