// kestrel/foundation/KSUnreachable.h - the stop at places that must never run.
#pragma once

#include <kestrel/platform/Export.h>

/// Prints "File %s, line %d should not have been reached:\n\t" through KSPrint, flushes standard output
/// so that the line reaches a pipe or a file, and aborts the process. The reason is for a reader of the
/// source: the format deliberately has no conversion for it, so it is never printed.
[[noreturn]] KESTREL_API void KSShouldNotBeReached(const char* file, int line, const char* reason);

/// Stops at a place that must never run. File and line are fixed texts that name the place for support,
/// not the position in today's source.
#define KS_UNREACHABLE(file, line, reason) ::KSShouldNotBeReached(file, line, reason)
