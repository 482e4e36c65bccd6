// tools/kestrel/InputLines.h - commands that turn values or lines of standard input into lines of output.
#pragma once

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "Commands.h"

namespace kestrel::tools {

/// What is wrong with the input, thrown to end the command through runOnInput.
struct BadInput {
    std::string message;
};

/// Ends the command over a line of standard input, or over the command line for line 0.
[[noreturn]] inline void failInput(std::size_t line, const std::string& message) {
    throw BadInput{line ? "standard input:" + std::to_string(line) + ": " + message : message};
}

/// Calls use(line, number) for each line of standard input, counting from 1. Lines may have any length;
/// their ends, \n or \r\n, are taken off. Returns false, with errno set, when reading fails.
template <class Use>
bool forEachInputLine(Use use) {
    std::string buffer(1 << 16, '\0');
    std::size_t filled = 0;
    std::size_t number = 0;
    const auto useLine = [&](std::string_view line) {
        if (line.ends_with('\r')) line.remove_suffix(1);
        use(line, ++number);
    };
    while (const std::size_t read = std::fread(buffer.data() + filled, 1, buffer.size() - filled, stdin)) {
        filled += read;
        std::string_view rest(buffer.data(), filled);
        for (std::size_t end; (end = rest.find('\n')) != std::string_view::npos; rest.remove_prefix(end + 1))
            useLine(rest.substr(0, end));
        filled = rest.size();
        std::memmove(buffer.data(), rest.data(), filled);
        if (filled == buffer.size()) buffer.resize(buffer.size() * 2);
    }
    if (std::ferror(stdin)) return false;
    if (filled > 0) useLine({buffer.data(), filled});
    return true;
}

/// Collects lines for standard output.
class OutputLines {
public:
    /// @param command  the name that a failure to write is reported under, such as "kestrel date"
    explicit OutputLines(const char* command) : m_command(command) {}

    void add(std::string_view line) {
        m_text += line;
        m_text += '\n';
        if (m_text.size() > (1 << 16)) flush();
    }

    /// Writes what was collected. Ends the command when that fails.
    void flush() {
        const bool isWritten = std::fwrite(m_text.data(), 1, m_text.size(), stdout) == m_text.size();
        m_text.clear();
        if (!isWritten || std::fflush(stdout) != 0)
            end(std::string("standard output: ") + std::strerror(errno));
    }

    /// Prints a message to standard error and ends the command.
    [[noreturn]] void end(const std::string& message) {
        std::fprintf(stderr, "%s: %s\n", m_command, message.c_str());
        throw Exit{2};
    }

private:
    const char* m_command;
    std::string m_text;
};

/// Calls use(text, 0) for each of values, or use(line, number) for the lines of standard input when there
/// are none, and writes output. Bad input ends the command behind what was printed before it.
template <class Use>
void runOnInput(const std::vector<std::string>& values, OutputLines& output, Use use) {
    try {
        for (const auto& value : values) use(std::string_view(value), std::size_t{0});
        if (values.empty() && !forEachInputLine(use))
            throw BadInput{std::string("standard input: ") + std::strerror(errno)};
    } catch (const BadInput& bad) {
        output.flush();
        output.end(bad.message);
    }
    output.flush();
}

}  // namespace kestrel::tools
