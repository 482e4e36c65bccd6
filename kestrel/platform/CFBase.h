// kestrel/platform/CFBase.h - reference counting and the small types that all platform objects share.
//
// Objects are created with a count of one. Functions whose names hold Create or Copy hand their result
// to the caller, who releases it; functions whose names hold Get do not. Counts are atomic: references
// may be retained and released on any thread.
#pragma once

#include <kestrel/platform/Export.h>

#include <cstdint>

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

/// Adds a reference and returns object; null is a no-op.
KESTREL_API CFTypeRef CFRetain(CFTypeRef object);
/// Drops a reference; the last one destroys the object. Null is a no-op.
KESTREL_API void CFRelease(CFTypeRef object);
/// The current count, for tests; 0 for null.
KESTREL_API CFIndex CFGetRetainCount(CFTypeRef object);
/// Writes a debug description of object and a newline to standard error.
KESTREL_API void CFShow(CFTypeRef object);
