// kestrel/platform/CFURL.h - locations of files and other resources.
//
// A URL keeps its percent-escaped text, so that a file name that is no valid UTF-8 still opens. File-system
// paths are bytes; where a path becomes a text they are read as UTF-8, U+FFFD standing in for what is none. A
// relative path stays relative, to the folder that is current when the file is opened, and has no base URL. A
// colon in the first segment of a relative path is escaped, since it would read as a scheme.
//
// Ownership  functions named Create or Copy hand their result to the caller, who releases it.
// Threads    URLs are immutable and may be read on any thread.
// Errors     null for a null argument, an empty path, and a text that is no URL.
// Example
//     CFURLRef url = CFURLCreateWithFileSystemPath(nullptr, CFSTR("/shots/a.exr"), kCFURLPOSIXPathStyle,
//     false); CFStringRef name = CFURLCopyLastPathComponent(url);
#pragma once

#include <kestrel/platform/CFBase.h>
#include <kestrel/platform/CFData.h>
#include <kestrel/platform/CFString.h>
#include <kestrel/platform/Export.h>

struct __CFURL;
using CFURLRef = const __CFURL*;

enum CFURLPathStyle : CFIndex {
    kCFURLPOSIXPathStyle = 0,
    kCFURLHFSPathStyle = 1,  ///< the old colon-separated form, see CFURLCopyFileSystemPath
};

/// A file of the bytes of path; with isDirectory, a slash ends it.
KESTREL_API CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef, const UInt8* path,
                                                             CFIndex length, Boolean isDirectory);
/// A file of a path as text (its UTF-8 form). Only the POSIX style can be read.
KESTREL_API CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef, CFStringRef path, CFURLPathStyle,
                                                   Boolean isDirectory);
/// A URL of its text; base must be null. Placeholders of frame sequences ("[####]") may stand in its path as
/// they are, and are escaped. Null for characters that no URL holds unescaped and broken escapes.
KESTREL_API CFURLRef CFURLCreateWithString(CFAllocatorRef, CFStringRef text, CFURLRef base);

/// The escaped text, not retained.
KESTREL_API CFStringRef CFURLGetString(CFURLRef);
/// The path, without the slash at the end of a folder's. In the old style "/a/b/c" is "a:b:c" (the first
/// segment stands for the volume), "b/c" is ":b:c", ".." is an empty segment, and a colon in a name becomes a
/// slash.
KESTREL_API CFStringRef CFURLCopyFileSystemPath(CFURLRef, CFURLPathStyle);
/// Writes the path's bytes and a NUL, a folder's with its slash. False when the buffer is too small or the
/// path holds a NUL.
KESTREL_API Boolean CFURLGetFileSystemRepresentation(CFURLRef, Boolean resolveAgainstBase, UInt8* buffer,
                                                     CFIndex size);
/// True when the text ends in a slash.
KESTREL_API Boolean CFURLHasDirectoryPath(CFURLRef);

/// The last segment of the path, unescaped; "/" for the root.
KESTREL_API CFStringRef CFURLCopyLastPathComponent(CFURLRef);
/// What follows the last dot of the last segment; null when nothing does, and for a name that begins with its
/// only dot.
KESTREL_API CFStringRef CFURLCopyPathExtension(CFURLRef);
/// The folder that contains it; "./" for a relative URL of one segment, the root for the root.
KESTREL_API CFURLRef CFURLCreateCopyDeletingLastPathComponent(CFAllocatorRef, CFURLRef);
KESTREL_API CFURLRef CFURLCreateCopyDeletingPathExtension(CFAllocatorRef, CFURLRef);

/// Reads the whole file that a URL names into *data, which the caller releases. Properties are not supported:
/// the pointers for them must be null. On failure false, *data null, and the system's error number in *error.
KESTREL_API Boolean CFURLCreateDataAndPropertiesFromResource(CFAllocatorRef, CFURLRef, CFDataRef* data,
                                                             const void** properties,
                                                             const void* desiredProperties, SInt32* error);
