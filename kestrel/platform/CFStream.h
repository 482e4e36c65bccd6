// kestrel/platform/CFStream.h - byte streams on files.
//
// Ownership  Create hands over one reference; the last release closes the file.
// Threads    one thread at a time.
// Errors     a stream on a URL that names no file is null; a file that cannot be opened leaves the stream
//            with the status Error. Interrupted calls are tried again and short writes continued.
// Example
//     CFReadStreamRef stream = CFReadStreamCreateWithFile(nullptr, url);
//     if (CFReadStreamOpen(stream)) CFReadStreamRead(stream, buffer, sizeof buffer);
#pragma once

#include <kestrel/platform/CFBase.h>
#include <kestrel/platform/CFURL.h>
#include <kestrel/platform/Export.h>

struct __CFReadStream;
struct __CFWriteStream;
using CFReadStreamRef = __CFReadStream*;
using CFWriteStreamRef = __CFWriteStream*;

enum CFStreamStatus : CFIndex {
    kCFStreamStatusNotOpen = 0,
    kCFStreamStatusOpening = 1,
    kCFStreamStatusOpen = 2,
    kCFStreamStatusReading = 3,
    kCFStreamStatusWriting = 4,
    kCFStreamStatusAtEnd = 5,
    kCFStreamStatusClosed = 6,
    kCFStreamStatusError = 7,
};

inline constexpr CFIndex kCFStreamErrorDomainPOSIX = 1;
inline constexpr CFIndex kCFStreamErrorDomainMacOSStatus = 2;

/// Where an error comes from, and its number there; both 0 without an error.
struct CFStreamError {
    CFIndex domain;
    SInt32 error;
};

KESTREL_API CFReadStreamRef CFReadStreamCreateWithFile(CFAllocatorRef, CFURLRef);
KESTREL_API Boolean CFReadStreamOpen(CFReadStreamRef);
/// Reads at most length bytes: their number, 0 at the end, -1 on an error and on a stream that is not open.
KESTREL_API CFIndex CFReadStreamRead(CFReadStreamRef, UInt8* bytes, CFIndex length);
KESTREL_API void CFReadStreamClose(CFReadStreamRef);
KESTREL_API CFStreamStatus CFReadStreamGetStatus(CFReadStreamRef);
KESTREL_API CFStreamError CFReadStreamGetError(CFReadStreamRef);

KESTREL_API CFWriteStreamRef CFWriteStreamCreateWithFile(CFAllocatorRef, CFURLRef);
/// Creates the file or empties it.
KESTREL_API Boolean CFWriteStreamOpen(CFWriteStreamRef);
/// Writes length bytes: the number that went out, fewer than length only on an error, -1 when none did.
KESTREL_API CFIndex CFWriteStreamWrite(CFWriteStreamRef, const UInt8* bytes, CFIndex length);
KESTREL_API void CFWriteStreamClose(CFWriteStreamRef);
KESTREL_API CFStreamStatus CFWriteStreamGetStatus(CFWriteStreamRef);
KESTREL_API CFStreamError CFWriteStreamGetError(CFWriteStreamRef);
