#include "Terminal.h"

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace kestrel::tools {

namespace {

volatile std::sig_atomic_t interrupted = 0;  // the signal

std::string_view environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

}  // namespace

int terminalColors() {
    if (!::isatty(STDOUT_FILENO) || !environment("NO_COLOR").empty() || environment("TERM") == "dumb")
        return 0;
    if (environment("COLORTERM") == "truecolor" || environment("COLORTERM") == "24bit") return 1 << 24;
    return environment("TERM").find("256") != std::string_view::npos ? 256 : 16;
}

bool isInterrupted() { return interrupted != 0; }

int interruptStatus() { return isInterrupted() ? 128 + static_cast<int>(interrupted) : 0; }

void catchInterrupts() {
    struct sigaction action {};
    action.sa_handler = [](int signal) { interrupted = signal; };
    action.sa_flags = static_cast<int>(SA_RESETHAND);  // the next one ends the process
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

Progress::Progress(std::size_t total, std::string unit)
    : m_total(total), m_unit(std::move(unit)), m_hasBar(::isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() { erase(); }

void Progress::step(const std::string& line) {
    const std::lock_guard lock(m_mutex);
    ++m_done;
    if (m_hasBar)
        draw();
    else
        std::printf("%s\n", line.c_str());
}

void Progress::say(const std::string& message) {
    const std::lock_guard lock(m_mutex);
    erase();
    std::fprintf(stderr, "%s\n", message.c_str());
    m_drawn = {};
}

double Progress::getSeconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
}

void Progress::draw() {
    const auto now = std::chrono::steady_clock::now();
    if (now - m_drawn < std::chrono::milliseconds(50) && m_done < m_total) return;
    m_drawn = now;
    constexpr std::size_t width = 40;
    const std::size_t filled = m_total ? width * m_done / m_total : width;
    const std::string bar = std::string(filled, '#') + std::string(width - filled, '.');
    std::fprintf(stderr, "\r[%s] %zu/%zu %s, %.1f a second ", bar.c_str(), m_done, m_total, m_unit.c_str(),
                 static_cast<double>(m_done) / std::max(getSeconds(), 1e-6));
}

void Progress::erase() {
    if (m_hasBar && m_done > 0) std::fputs("\r\033[K", stderr);
}

}  // namespace kestrel::tools
