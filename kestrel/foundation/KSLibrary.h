// kestrel/foundation/KSLibrary.h - what this build of the library is and what it stands on.
#pragma once

#include <kestrel/platform/Export.h>

class KSString;

/// Facts about the library itself, for support and bug reports; class functions only.
///
/// Threads    all functions may be called from any thread.
/// Example
///     KSString sets;
///     KSLibrary::getVectorTargets(&sets);  // "AVX2 SSE4 SSSE3"
class KESTREL_API KSLibrary {
public:
    KSLibrary() = delete;

    /// The version, such as "0.1.0".
    static const char* getVersion();

    /// Sets out to the vector instruction sets that this processor offers and the kernels are compiled for,
    /// best first, with blanks between. The kernels use the first.
    static void getVectorTargets(KSString* out);

    /// Sets out to the names and versions of the libraries that this build uses, such as "ICU 72.1,
    /// Imath 3.1.6".
    static void getDependencies(KSString* out);
};
