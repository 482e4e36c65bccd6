// kestrel/platform/detail/SpinPause.h - one breath inside a short busy wait.
#pragma once

namespace kestrel::detail {

inline void spinPause() {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    asm volatile("isb");  // tens of nanoseconds; yield is none at all on most cores
#endif
}

}  // namespace kestrel::detail
