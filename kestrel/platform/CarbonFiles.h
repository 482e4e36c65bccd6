// kestrel/platform/CarbonFiles.h - the old file manager's references, so that signatures that name them
// compile.
#pragma once

#if defined(__APPLE__)
#include <CoreServices/CoreServices.h>
#else

#include <kestrel/platform/CFBase.h>

/// An opaque reference to a file that exists.
struct FSRef {
    UInt8 hidden[80];
};

/// A volume, a folder on it, and a length-prefixed name.
struct FSSpec {
    std::int16_t vRefNum;
    SInt32 parID;
    UInt8 name[64];
};

#endif
