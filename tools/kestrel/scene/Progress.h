// tools/kestrel/scene/Progress.h - a progress bar for work that takes longer than a second.
#pragma once

#include <chrono>
#include <string>

namespace kestrel::tools::scene {

/// Shows nothing during the first second, and nothing at all unless standard error is a terminal. The bar
/// disappears when the work is done.
class Progress {
public:
    Progress(std::string label, double total);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Cheap enough for a call every few hundred elements.
    void update(double done);
    void finish();

private:
    using Clock = std::chrono::steady_clock;

    std::string m_label;
    double m_total;
    bool m_enabled;
    bool m_shown = false;
    Clock::time_point m_next;
};

}  // namespace kestrel::tools::scene
