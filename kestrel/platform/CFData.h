// kestrel/platform/CFData.h - an immutable block of bytes.
#pragma once

#include <kestrel/platform/CFBase.h>
#include <kestrel/platform/Export.h>

struct __CFData;
using CFDataRef = const __CFData*;

/// A copy of length bytes; null for a negative length or without memory.
KESTREL_API CFDataRef CFDataCreate(CFAllocatorRef, const UInt8* bytes, CFIndex length);
KESTREL_API CFIndex CFDataGetLength(CFDataRef);  ///< 0 for null
/// The bytes, valid while the data lives; null for null.
KESTREL_API const UInt8* CFDataGetBytePtr(CFDataRef);
