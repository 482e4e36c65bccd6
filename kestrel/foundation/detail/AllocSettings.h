// kestrel/foundation/detail/AllocSettings.h - what the environment asks of the checking allocator.
#pragma once

namespace kestrel::detail {

/// All 0 while tracking is off.
struct AllocSettings {
    unsigned long blocksLimit = 0;  ///< 0: none
    unsigned long bytesLimit = 0;   ///< 0: none
    float failureFraction = 0;      ///< of allocations that succeed; 0: all
    bool isValidPtrCheck = false;
    bool isFill = false;
    unsigned long pointerBreak = 0;  ///< for a debugger
    unsigned long sizePrint = 0;     ///< 0: announces nothing

    /// What the environment says now, with the fill switch on. No number depends on the locale.
    static AllocSettings fromEnvironment();
};

/// The level of the final report: the variable ksAlloc if it is set, otherwise level.
int reportLevel(int level);

}  // namespace kestrel::detail
