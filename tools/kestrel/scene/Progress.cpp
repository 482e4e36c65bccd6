#include "Progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <utility>

namespace kestrel::tools::scene {

Progress::Progress(std::string label, double total)
    : m_label(std::move(label)),
      m_total(total),
      m_enabled(total > 0 && isatty(STDERR_FILENO)),
      m_next(Clock::now() + std::chrono::seconds(1)) {}

Progress::~Progress() { finish(); }

void Progress::update(double done) {
    if (!m_enabled) return;
    const auto now = Clock::now();
    if (now < m_next) return;
    m_next = now + std::chrono::milliseconds(100);
    constexpr int width = 30;
    const double share = std::clamp(done / m_total, 0.0, 1.0);
    const int full = static_cast<int>(share * width);
    std::fprintf(stderr, "\r%s [%.*s%*s] %3.0f%%", m_label.c_str(), full, "##############################",
                 width - full, "", share * 100);
    std::fflush(stderr);
    m_shown = true;
}

void Progress::finish() {
    if (m_shown) std::fputs("\r\033[K", stderr);
    m_shown = false;
    m_enabled = false;
}

}  // namespace kestrel::tools::scene
