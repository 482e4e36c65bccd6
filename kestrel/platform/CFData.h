// kestrel/platform/CFData.h - an immutable block of bytes.
#pragma once

#include <kestrel/platform/CFBase.h>
#include <kestrel/platform/Export.h>

struct __CFData;
using CFDataRef = const __CFData*;

/// A copy of length bytes; null for a negative length or without memory.
KESTREL_API CFDataRef CFDataCreate(CFAllocatorRef, const UInt8* bytes, CFIndex length);
/// Takes over a block from malloc, which is freed with the data; the caller keeps it when the result is null.
KESTREL_API CFDataRef CFDataCreateWithBytesNoCopy(CFAllocatorRef, UInt8* block, CFIndex length,
                                                  CFAllocatorRef deallocator);
KESTREL_API CFIndex CFDataGetLength(CFDataRef);  ///< 0 for null
/// The bytes, valid while the data lives; null for null.
KESTREL_API const UInt8* CFDataGetBytePtr(CFDataRef);
