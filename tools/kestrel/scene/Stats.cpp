#include "Stats.h"

#include <sys/resource.h>

#include <cstdio>

namespace kestrel::tools::scene {

std::string Stats::report(const std::string& job, double bytes) const {
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    char text[160];
    std::snprintf(text, sizeof text, ": %.1f MB in %.2f s (%.0f MB/s), peak memory %.0f MB", bytes / 1e6,
                  seconds, seconds > 0 ? bytes / 1e6 / seconds : 0.0,
                  static_cast<double>(usage.ru_maxrss) * 1024 / 1e6);
    return job + text;
}

}  // namespace kestrel::tools::scene
