// kestrel/platform/CFBase.h - reference counting and the small types that all platform objects share.
//
// Objects are created with a count of one. Functions whose names hold Create or Copy hand their result
// to the caller, who releases it; functions whose names hold Get do not. Counts are atomic: references
// may be retained and released on any thread.
#pragma once

#include <kestrel/platform/Export.h>

#include <atomic>
#include <cstdint>
#include <string>

using CFTypeRef = const void*;
using CFAllocatorRef = const struct __CFAllocator*;
using CFIndex = long;
using CFOptionFlags = unsigned long;
using CFHashCode = unsigned long;
using Boolean = unsigned char;
using UniChar = unsigned short;
using UInt8 = std::uint8_t;
using UInt32 = std::uint32_t;
using SInt32 = std::int32_t;
using OSStatus = std::int32_t;

/// A run of units: start and count.
struct CFRange {
    CFIndex location;
    CFIndex length;
};
constexpr CFRange CFRangeMake(CFIndex location, CFIndex length) { return {location, length}; }

/// The only allocator, malloc; every function takes it and ignores it.
inline constexpr CFAllocatorRef kCFAllocatorDefault = nullptr;
inline constexpr CFAllocatorRef kCFAllocatorMalloc = nullptr;

namespace kestrel::detail {

/// One reference-counted object. A CFTypeRef points at this base, which must be the first and only base
/// of the concrete class, so that the conversion through void* is the identity. It stands here so that
/// retaining and releasing cost their callers the count alone.
class KESTREL_API PlatformObject {
public:
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
    /// True for an object whose holders want to see it change, so that a copy must be an object of its own.
    bool isMutable() const noexcept { return m_mutable; }

protected:
    explicit PlatformObject(bool isMutable = false) noexcept : m_mutable(isMutable) {}

private:
    mutable std::atomic<std::uint32_t> m_references{1};
    const bool m_mutable;
};

}  // namespace kestrel::detail

/// Adds a reference and returns object; null is a no-op.
inline CFTypeRef CFRetain(CFTypeRef object) {
    if (object) static_cast<const kestrel::detail::PlatformObject*>(object)->retain();
    return object;
}
/// Drops a reference; the last one destroys the object. Null is a no-op.
inline void CFRelease(CFTypeRef object) {
    if (object) static_cast<const kestrel::detail::PlatformObject*>(object)->release();
}
/// The current count, for tests; 0 for null.
KESTREL_API CFIndex CFGetRetainCount(CFTypeRef object);
/// Writes a debug description of object and a newline to standard error.
KESTREL_API void CFShow(CFTypeRef object);
