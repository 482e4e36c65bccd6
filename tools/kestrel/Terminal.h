// tools/kestrel/Terminal.h - what a terminal can show, progress, and Ctrl-C.
#pragma once

#include <chrono>
#include <cstddef>
#include <mutex>
#include <string>

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

/// Progress of a known number of steps: a bar with the rate on a terminal, a line a step otherwise.
///
/// Threads    any thread may report.
class Progress {
public:
    /// @param unit  what a step is called in plural, such as "frames"
    Progress(std::size_t total, std::string unit);
    ~Progress();
    /// One step is done; line says which, and is printed where there is no bar.
    void step(const std::string& line);
    /// Prints a message of its own above the bar, to standard error.
    void say(const std::string& message);
    double getSeconds() const;

private:
    void draw();
    void erase();

    const std::size_t m_total;
    const std::string m_unit;
    const bool m_hasBar;
    const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point m_drawn{};
    std::mutex m_mutex;
    std::size_t m_done = 0;
};

}  // namespace kestrel::tools
