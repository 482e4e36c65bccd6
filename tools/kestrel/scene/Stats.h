// tools/kestrel/scene/Stats.h - what a job took.
#pragma once

#include <chrono>
#include <string>

namespace kestrel::tools::scene {

/// Time from its construction on, and the process's peak memory.
class Stats {
public:
    /// For example "fingerprint: 100.0 MB in 0.41 s (244 MB/s), peak memory 118 MB"; a megabyte is 10^6
    /// bytes.
    std::string report(const std::string& job, double bytes) const;

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

}  // namespace kestrel::tools::scene
