// kestrel/platform/detail/PlatformObject.h - the base of every reference-counted platform object.
#pragma once

#include <kestrel/platform/CFBase.h>

#include <atomic>
#include <cstdint>
#include <string>

namespace kestrel::detail {

/// One reference-counted object. A CFTypeRef points at this base, which must be the first and only base
/// of the concrete class, so that the conversion through void* is the identity.
class PlatformObject {
public:
    PlatformObject() = default;
    PlatformObject(const PlatformObject&) = delete;
    PlatformObject& operator=(const PlatformObject&) = delete;
    virtual ~PlatformObject() = default;

    /// UTF-8 text for CFShow, without a newline.
    virtual std::string describe() const = 0;

    void retain() const noexcept { m_references.fetch_add(1, std::memory_order_relaxed); }
    void release() const noexcept {
        // Nobody can take a reference from the only holder meanwhile, so that it need not count down.
        if (isUnshared() || m_references.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
    }
    /// True when the caller's reference is the only one, so that nobody else can see a change.
    bool isUnshared() const noexcept { return m_references.load(std::memory_order_acquire) == 1; }
    std::uint32_t getReferenceCount() const noexcept { return m_references.load(std::memory_order_relaxed); }

private:
    mutable std::atomic<std::uint32_t> m_references{1};
};

}  // namespace kestrel::detail
