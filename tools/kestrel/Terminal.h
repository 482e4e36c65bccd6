// tools/kestrel/Terminal.h - what a terminal can show, progress, and Ctrl-C.
#pragma once

#include <chrono>
#include <cstddef>
#include <mutex>
#include <string>
#include <utility>

namespace kestrel::tools {

/// How many colours standard output shows: 0 when it is no terminal (or NO_COLOR is set), 16, 256 or
/// 16777216.
int terminalColors();

/// True once an end was asked for, by Ctrl-C or SIGTERM; the second such signal of a kind ends the process.
bool isInterrupted();
/// The exit status that says so: 128 and the number of the signal; 0 without one.
int interruptStatus();
/// From now on Ctrl-C and SIGTERM set isInterrupted instead of ending the process.
void catchInterrupts();

/// Progress on standard error, when that is a terminal and the command has run for a second: a bar with the
/// rate, or the amount and the rate alone while nobody knows the total. It goes when the object does.
///
/// Threads    any thread may report.
class Progress {
public:
    /// @param unit  what a step is called in plural, such as "frames"
    Progress(std::size_t total, std::string unit) : Progress(total, std::move(unit), 1) {}
    /// Of bytes; a total of 0 is unknown.
    static Progress ofBytes(std::size_t total) { return Progress(total, "MB", 1e6); }
    ~Progress();

    /// One step is done; line says which, and is printed where there is no bar.
    void step(const std::string& line);
    /// So many bytes are done.
    void moveTo(std::size_t done);
    /// Prints a message of its own above the bar, to standard error.
    void say(const std::string& message);
    /// Makes room for other output, until the next report.
    void hide();
    double getSeconds() const;

private:
    using Clock = std::chrono::steady_clock;

    Progress(std::size_t total, std::string unit, double scale);
    void draw();
    void erase();

    const std::size_t m_total;
    const std::string m_unit;
    const double m_scale;  // steps or bytes in a unit
    const bool m_hasBar;
    const Clock::time_point m_start = Clock::now();
    Clock::time_point m_drawn = m_start;
    std::mutex m_mutex;
    std::size_t m_done = 0;
    bool m_isShown = false;
};

}  // namespace kestrel::tools
