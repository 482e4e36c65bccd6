#include "Output.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <system_error>

#include "../Commands.h"

namespace kestrel::tools::scene {

Output::Output() { std::signal(SIGPIPE, SIG_IGN); }

void Output::write(std::string_view text) {
    if (!isGood() || std::fwrite(text.data(), 1, text.size(), stdout) == text.size()) return;
    m_reason = std::error_code(errno, std::generic_category()).message();
}

void Output::finish() {
    if (isGood() && std::fflush(stdout) != 0) {
        m_reason = std::error_code(errno, std::generic_category()).message();
    }
    if (isGood()) return;
    std::fprintf(stderr, "kestrel: standard output: %s\n", m_reason.c_str());
    throw Exit{2};
}

bool Output::isTerminal() const { return isatty(STDOUT_FILENO); }

}  // namespace kestrel::tools::scene
