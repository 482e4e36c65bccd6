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

const auto commandStart = std::chrono::steady_clock::now();

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

Progress::Progress(std::size_t total, std::string unit, double scale)
    : m_total(total), m_unit(std::move(unit)), m_scale(scale), m_hasBar(::isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() { erase(); }

void Progress::step(const std::string& line) {
    const std::lock_guard lock(m_mutex);
    ++m_done;
    if (m_hasBar)
        draw();
    else
        std::printf("%s\n", line.c_str());
}

void Progress::moveTo(std::size_t done) {
    const std::lock_guard lock(m_mutex);
    m_done = done;
    if (m_hasBar) draw();
}

void Progress::say(const std::string& message) {
    const std::lock_guard lock(m_mutex);
    erase();
    std::fprintf(stderr, "%s\n", message.c_str());
}

void Progress::hide() {
    const std::lock_guard lock(m_mutex);
    erase();
}

double Progress::getSeconds() const { return std::chrono::duration<double>(Clock::now() - m_start).count(); }

void Progress::draw() {
    const auto now = Clock::now();
    if (now - commandStart < std::chrono::seconds(1) || now - m_drawn < std::chrono::milliseconds(50)) return;
    m_drawn = now;
    m_isShown = true;
    const auto amount = [&](std::size_t count) {
        char digits[32];
        std::snprintf(digits, sizeof digits, "%.*f", m_scale > 1, static_cast<double>(count) / m_scale);
        return std::string(digits);
    };
    std::string bar;
    if (m_total > 0) {
        constexpr std::size_t width = 40;
        const double share = static_cast<double>(m_done) / static_cast<double>(m_total);
        const auto filled = static_cast<std::size_t>(width * std::min(share, 1.0));
        bar = '[' + std::string(filled, '#') + std::string(width - filled, '.') + "] ";
    }
    std::fprintf(stderr, "\r\033[K%s%s%s %s, %.1f a second ", bar.c_str(), amount(m_done).c_str(),
                 m_total > 0 ? ('/' + amount(m_total)).c_str() : "", m_unit.c_str(),
                 static_cast<double>(m_done) / m_scale / std::max(getSeconds(), 1e-6));
}

void Progress::erase() {
    if (m_isShown) std::fputs("\r\033[K", stderr);
    m_isShown = false;
    m_drawn = {};  // the next report is not held back
}

}  // namespace kestrel::tools
