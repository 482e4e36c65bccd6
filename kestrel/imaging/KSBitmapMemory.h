// kestrel/imaging/KSBitmapMemory.h - the memory that bitmaps live in, for the whole process.
#pragma once

#include <kestrel/platform/Export.h>

#include <cstddef>

/// Control over bitmap memory.
///
/// Fresh memory costs more than most pixel work. So the memory of freed bitmaps of 64 KiB and more is kept
/// and given, zeroed, to the next bitmap of the same size: up to 256 MiB unless set otherwise. The
/// system may take kept pages whenever it runs short; what has been kept for five seconds goes back at
/// the next allocation or release of any bitmap, and everything when an allocation is refused.
/// After a fork the child's bitmaps are copies. Those that were unmapped (KSBitmap::unmapFromMemory) before
/// the fork are shared with the parent once mapped.
/// Threads    any.
/// Example
///     KSBitmapMemory::setKeptLimit(0);  // give everything back at once, now and from now on
class KESTREL_API KSBitmapMemory {
public:
    /// The most bytes that are kept; 0 keeps none. A lower limit takes effect at once.
    static void setKeptLimit(std::size_t bytes);
    static std::size_t getKeptLimit();
    /// Bytes that are kept now.
    static std::size_t getKeptBytes();
    /// Gives everything kept back to the system, as an application does when it becomes idle.
    static void releaseKept();
    /// Regions that bitmaps own now, unmapped ones included.
    static std::size_t getRegionCount();
};
