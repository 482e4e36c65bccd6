// kestrel/foundation/KSInfo.h - questions about the machine and the process.
#pragma once

#include <kestrel/platform/Export.h>

class KSString;

/// Answers about the machine that the process runs on; class functions only.
///
/// Threads    all functions may be called from any thread.
/// Errors     reported by a false result.
/// Example
///     unsigned long long total = 0, free = 0;
///     if (KSInfo::getMemoryInfo(&total, &free)) KSPrint("%llu of %llu bytes free\n", free, total);
class KESTREL_API KSInfo {
public:
    KSInfo() = delete;

    /// The number of processors that are online, at least 1.
    static int getProcessors();

    /// Memory figures in bytes. Each pointer may be null; when the kernel's tables cannot be read, the result
    /// is false and every figure is 0. Sources: /proc/meminfo, /proc/self/statm and /proc/self/maps, see
    /// proc(5).
    /// @param total        all memory that the kernel manages (MemTotal)
    /// @param free         memory that nothing uses, not even as a cache (MemFree)
    /// @param sharedWindow what the process has mapped in the addresses 0x70000000 to 0x8FFFFFFF, where some
    ///                     systems keep their shared libraries
    /// @param rest         total without sharedWindow, 0 if that is the larger one
    /// @param resident     memory of the process that is resident now
    /// @param regions      the sum of the sizes of all mappings of the process
    /// @param largestGap   the largest run of free addresses between two mappings
    static bool getMemoryInfo(unsigned long long* total, unsigned long long* free = nullptr,
                              unsigned long long* sharedWindow = nullptr, unsigned long long* rest = nullptr,
                              unsigned long long* resident = nullptr, unsigned long long* regions = nullptr,
                              unsigned long long* largestGap = nullptr);

    /// Whether the processor stores the low byte of a word first.
    static bool isLittleEndian();

    /// Sets out to the host name. On failure out is cleared and the result is false.
    static bool getSystemName(KSString* out);

    /// Unfinished on purpose: sets out to the name of the operating system and then stops the process, since
    /// it calls KSString::push_back. On failure out is cleared and the result is false.
    static bool getSystemType(KSString* out);
};
