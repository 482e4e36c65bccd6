// kestrel/platform/CFDictionary.h - constant tables of platform objects by text.
#pragma once

#include <kestrel/platform/CFBase.h>
#include <kestrel/platform/CFString.h>

/// A constant table from texts to objects, in the order in which they were given; the attributes of an
/// XML element are one. A null dictionary reads as an empty one.
///
/// Ownership  keeps a reference to each key and value; Get functions hand out none.
/// Threads    constant, so any number of readers.
using CFDictionaryRef = const struct __CFDictionary*;

/// How keys and values are kept. There is one way: as references to platform objects, keys being texts
/// that are equal when their units are.
struct CFDictionaryKeyCallBacks {};
struct CFDictionaryValueCallBacks {};
inline constexpr CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks;
inline constexpr CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks;

/// A dictionary of count pairs; of several with the same key the first counts.
KESTREL_API CFDictionaryRef CFDictionaryCreate(CFAllocatorRef, const void** keys, const void** values,
                                               CFIndex count, const CFDictionaryKeyCallBacks*,
                                               const CFDictionaryValueCallBacks*);
KESTREL_API CFIndex CFDictionaryGetCount(CFDictionaryRef);
/// The value of key, which is a CFStringRef; null when there is none. Takes time with the number of pairs.
KESTREL_API const void* CFDictionaryGetValue(CFDictionaryRef, const void* key);
/// Copies all pairs, in order, into arrays of at least the dictionary's count; either may be null.
KESTREL_API void CFDictionaryGetKeysAndValues(CFDictionaryRef, const void** keys, const void** values);
