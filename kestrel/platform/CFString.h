// kestrel/platform/CFString.h - Unicode text objects.
//
// A string is a reference-counted run of UTF-16 units in native byte order; lone surrogates and zero units
// are kept as they are. Positions and lengths count units; a range that reaches past the end is clamped.
//
// Ownership  functions named Create or Copy hand their result to the caller, who releases it.
// Threads    an immutable string may be read on any thread; a mutable one needs its user's care.
// Errors     a string that cannot be made (bad bytes, no memory, a null argument) is null; a null string
//            reads as an empty one; nothing throws.
// Example
//     CFStringRef text = CFStringCreateWithCString(kCFAllocatorDefault, "shot", kCFStringEncodingUTF8);
//     CFIndex units = CFStringGetLength(text);
//     CFRelease(text);
#pragma once

#include <kestrel/platform/CFBase.h>
#include <kestrel/platform/Export.h>

struct __CFString;
using CFStringRef = const __CFString*;
using CFMutableStringRef = __CFString*;

using CFStringEncoding = UInt32;
inline constexpr CFStringEncoding kCFStringEncodingMacRoman = 0;
inline constexpr CFStringEncoding kCFStringEncodingUnicode = 0x0100;  ///< UTF-16, native order, no mark
inline constexpr CFStringEncoding kCFStringEncodingISOLatin1 = 0x0201;
inline constexpr CFStringEncoding kCFStringEncodingWindowsLatin1 = 0x0500;
inline constexpr CFStringEncoding kCFStringEncodingASCII = 0x0600;
inline constexpr CFStringEncoding kCFStringEncodingUTF8 = 0x08000100;
inline constexpr CFStringEncoding kCFStringEncodingUTF16 = kCFStringEncodingUnicode;
inline constexpr CFStringEncoding kCFStringEncodingUTF16BE = 0x10000100;
inline constexpr CFStringEncoding kCFStringEncodingUTF16LE = 0x14000100;
inline constexpr CFStringEncoding kCFStringEncodingUTF32 = 0x0C000100;
inline constexpr CFStringEncoding kCFStringEncodingUTF32BE = 0x18000100;
inline constexpr CFStringEncoding kCFStringEncodingUTF32LE = 0x1C000100;
inline constexpr CFStringEncoding kCFStringEncodingInvalidId = 0xFFFFFFFF;

using CFStringCompareFlags = CFOptionFlags;
inline constexpr CFStringCompareFlags kCFCompareCaseInsensitive = 1;
inline constexpr CFStringCompareFlags kCFCompareBackwards = 4;   ///< find the last occurrence
inline constexpr CFStringCompareFlags kCFCompareAnchored = 8;    ///< find only at the start (or the end)
inline constexpr CFStringCompareFlags kCFCompareLocalized = 32;  ///< the process locale's collation

enum CFComparisonResult : CFIndex {
    kCFCompareLessThan = -1,
    kCFCompareEqualTo = 0,
    kCFCompareGreaterThan = 1
};
inline constexpr CFIndex kCFNotFound = -1;

/// A constant string of a literal in ASCII; it lives as long as the process.
#define CFSTR(text) ::__CFStringMakeConstantString("" text "")
KESTREL_API CFStringRef __CFStringMakeConstantString(const char* text);

/// The encoding of file names, messages and the terminal: UTF-8.
KESTREL_API CFStringEncoding CFStringGetSystemEncoding();
/// The encoding of a registered name such as "ISO-8859-5" (either case, aliases allowed), or
/// kCFStringEncodingInvalidId.
KESTREL_API CFStringEncoding CFStringConvertIANACharSetNameToEncoding(CFStringRef name);
/// The registered name of an encoding, a constant string; null for one that is unknown.
KESTREL_API CFStringRef CFStringConvertEncodingToIANACharSetName(CFStringEncoding encoding);
KESTREL_API Boolean CFStringIsEncodingAvailable(CFStringEncoding encoding);

/// A string of 8-bit text up to its NUL. Null when the bytes are no text of that encoding.
KESTREL_API CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char* text, CFStringEncoding);
/// A string of exactly count bytes. With isExternal, a leading byte-order mark is obeyed and dropped.
KESTREL_API CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex count,
                                                CFStringEncoding, Boolean isExternal);
KESTREL_API CFStringRef CFStringCreateWithCharacters(CFAllocatorRef, const UniChar* units, CFIndex count);
/// An immutable string of the same text: the object itself, retained, when it is immutable already.
inline CFStringRef CFStringCreateCopy(CFAllocatorRef, CFStringRef);
KESTREL_API CFStringRef CFStringCreateWithSubstring(CFAllocatorRef, CFStringRef, CFRange);
/// maxLength is ignored: every mutable string grows as needed.
KESTREL_API CFMutableStringRef CFStringCreateMutable(CFAllocatorRef, CFIndex maxLength);
KESTREL_API CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef, CFIndex maxLength, CFStringRef);

KESTREL_API CFIndex CFStringGetLength(CFStringRef);
/// The unit at index; 0 when there is none.
KESTREL_API UniChar CFStringGetCharacterAtIndex(CFStringRef, CFIndex index);
/// Copies the units of range; units past the end leave the buffer as it was.
KESTREL_API void CFStringGetCharacters(CFStringRef, CFRange range, UniChar* buffer);
/// The units themselves, valid while the string lives and is not edited; no zero unit follows them.
KESTREL_API const UniChar* CFStringGetCharactersPtr(CFStringRef);
/// Writes the text and a NUL into buffer. False when the encoding cannot hold the text or the buffer is
/// too small; the buffer then holds an empty text. UTF-8 writes a lone surrogate as U+FFFD.
KESTREL_API Boolean CFStringGetCString(CFStringRef, char* buffer, CFIndex bufferSize, CFStringEncoding);
/// Converts units of range until one does not fit or cannot be held (lossByte, when not 0, stands in for
/// it); returns how many were converted. A null buffer measures. With isExternal, UTF-16 and UTF-32 without
/// a named order start with a byte-order mark. *usedBytes, where not null, gets the number of bytes.
KESTREL_API CFIndex CFStringGetBytes(CFStringRef, CFRange range, CFStringEncoding, UInt8 lossByte,
                                     Boolean isExternal, UInt8* buffer, CFIndex maxBytes, CFIndex* usedBytes);
/// A number of bytes that holds any text of length units; kCFNotFound for a length that no text has.
KESTREL_API CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding);

/// Orders two texts: by the process locale's collation with kCFCompareLocalized (by code unit in the C
/// locale), else by code unit.
KESTREL_API CFComparisonResult CFStringCompare(CFStringRef, CFStringRef, CFStringCompareFlags);
/// Compares a range of the first text with the whole of the second.
KESTREL_API CFComparisonResult CFStringCompareWithOptions(CFStringRef, CFStringRef, CFRange,
                                                          CFStringCompareFlags);
/// The first occurrence of what, unit by unit; {kCFNotFound, 0} when there is none and for an empty what.
KESTREL_API CFRange CFStringFind(CFStringRef, CFStringRef what, CFStringCompareFlags);
/// The same within a range; false when there is none. *result, where not null, gets the occurrence.
KESTREL_API Boolean CFStringFindWithOptions(CFStringRef, CFStringRef what, CFRange, CFStringCompareFlags,
                                            CFRange* result);
KESTREL_API Boolean CFStringHasPrefix(CFStringRef, CFStringRef prefix);
KESTREL_API Boolean CFStringHasSuffix(CFStringRef, CFStringRef suffix);

// Editing. The text handed in may be the edited string itself. A string that is immutable and that anyone
// else holds is left as it was.
KESTREL_API void CFStringAppend(CFMutableStringRef, CFStringRef);
KESTREL_API void CFStringAppendCharacters(CFMutableStringRef, const UniChar* units, CFIndex count);
/// Appends nothing when the bytes are no text of that encoding.
KESTREL_API void CFStringAppendCString(CFMutableStringRef, const char* text, CFStringEncoding);
KESTREL_API void CFStringInsert(CFMutableStringRef, CFIndex index, CFStringRef);
KESTREL_API void CFStringDelete(CFMutableStringRef, CFRange);
KESTREL_API void CFStringReplace(CFMutableStringRef, CFRange, CFStringRef);
KESTREL_API void CFStringReplaceAll(CFMutableStringRef, CFStringRef);
/// Replaces every occurrence within range, left to right, and returns their number. What a replacement
/// brings in is not searched again.
KESTREL_API CFIndex CFStringFindAndReplace(CFMutableStringRef, CFStringRef what, CFStringRef with, CFRange,
                                           CFStringCompareFlags);

namespace kestrel::detail {
/// An immutable string of its own with the same text; null without memory.
KESTREL_API CFStringRef duplicate(CFStringRef) noexcept;
}  // namespace kestrel::detail

inline CFStringRef CFStringCreateCopy(CFAllocatorRef, CFStringRef string) {
    const auto* object = static_cast<const kestrel::detail::PlatformObject*>(CFTypeRef{string});
    if (object && object->isMutable()) return kestrel::detail::duplicate(string);
    CFRetain(string);
    return string;
}
