// kestrel/foundation/KSPrint.h - the library's diagnostic output.
//
// Every diagnostic line goes to standard output, or, when the environment variable ksPrintUseLogFile
// exists (with any value) at the first print of the process, to the file "/tmp/output.<process id>.log",
// which the first print truncates and every print flushes. A forked child goes on writing to the file
// that its parent opened.
//
// Threads    no lock: lines of several threads may interleave, and two threads that print for the first
//            time at once may both open the log file.
// Errors     a log file that cannot be opened drops the message; the next message tries again. Its name
//            is never followed when it is a symbolic link: messages are dropped as long as it is one.
// Example
//     KSPrint("%d frames\n", count);
//     KSPrintIndent(2, "layer %s\n", name);  // four blanks first
#pragma once

#include <kestrel/platform/Export.h>

#include <cstdarg>
#include <cstdint>

/// The single output path. Returns what the formatter returns: the number of bytes, negative on error,
/// 0 for a message that was dropped.
KESTREL_API int KSPrintVA(const char* format, va_list args) __attribute__((format(printf, 1, 0)));
/// Prints a message through KSPrintVA.
KESTREL_API int KSPrint(const char* format, ...) __attribute__((format(printf, 1, 2)));
/// Prints 2 * level blanks (nothing for level 0), then the message.
KESTREL_API int KSPrintIndent(unsigned int level, const char* format, ...)
    __attribute__((format(printf, 2, 3)));

/// Names the program in stack prints. The pointer is kept, not copied; null leaves the name out.
KESTREL_API void KSPrintStackStart(const char* progName);
/// Does nothing; the counterpart of KSPrintStackStart.
KESTREL_API void KSPrintStackStop();
/// Prints the calling thread's stack, innermost frame first.
/// @param skip     frames of the caller's stack to leave out, 0 for none (negative counts as 0)
/// @param ignored  not used
/// @param verbose  when not null, adds frame addresses and offsets; what it points to is not read
KESTREL_API void KSPrintStack(int skip, int ignored, bool* verbose);

/// One frame of a collected call stack. The numbers are whole addresses of this machine.
struct CrawlFrame {
    std::uintptr_t programCounter;
    std::uintptr_t frameAddress;
    char* symbolName;       ///< from malloc; null if unknown. A mangled C++ name has one more underscore
                            ///< in front ("__Z..."), a C name stands as it is
    std::uintptr_t offset;  ///< of the program counter from the symbol's start, bytes
};
