// tests/foundation/AllocHelpers.h - the environment and the output of the checking allocator.
#pragma once

#include <kestrel/foundation/KSAlloc.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

/// Sets one of the allocator's environment variables (none for null) until the end of the scope; the others
/// are unset.
class AllocEnvironment {
public:
    explicit AllocEnvironment(const char* variable = nullptr, const char* value = nullptr) {
        clear();
        if (variable && value) setenv(variable, value, 1);
    }
    AllocEnvironment(const AllocEnvironment&) = delete;
    AllocEnvironment& operator=(const AllocEnvironment&) = delete;
    ~AllocEnvironment() { clear(); }

private:
    static void clear() {
        for (const char* name :
             {"ksAllocatedBlocksLimit", "ksAllocatedBytesLimit", "ksFailurePercentage", "ksValidPtrCheck",
              "ksFillPtrOnAlloc", "ksPointerBreak", "ksSizePrint", "ksAlloc"})
            unsetenv(name);
    }
};

/// One run of tracking whose output is kept.
class AllocRun {
public:
    explicit AllocRun(const char* variable = nullptr, const char* value = nullptr)
        : m_environment(variable, value) {
        ksAllocStart();
    }
    AllocRun(const AllocRun&) = delete;
    AllocRun& operator=(const AllocRun&) = delete;
    ~AllocRun() { ksAllocEnd(-1); }

    /// Ends the run; the report.
    std::string end(int level) {
        testing::internal::CaptureStdout();
        ksAllocEnd(level);
        return testing::internal::GetCapturedStdout();
    }

private:
    AllocEnvironment m_environment;
};

/// What action prints.
template <class Action>
std::string printedBy(Action action) {
    testing::internal::CaptureStdout();
    action();
    return testing::internal::GetCapturedStdout();
}

inline constexpr const char* separator =
    "\n=====================================================================\n";

/// The end of every report.
inline std::string totalsText(unsigned bytes, unsigned blocks, unsigned most, unsigned used) {
    return std::string(separator) + "\n" + std::to_string(bytes) + " bytes NOT freed (" +
           std::to_string(blocks) + " blocks)\nMaximum blocks allocated at once: " + std::to_string(most) +
           "\nTotal blocks used: " + std::to_string(used) + "\n" + (separator + 1);
}

inline std::string hex(const void* pointer, std::size_t digits = 8) {
    char text[40];
    std::snprintf(text, sizeof text, "%lx", reinterpret_cast<unsigned long>(pointer));
    std::string result = text;
    return result.size() < digits ? std::string(digits - result.size(), '0') + result : result;
}
