// The progress bar, as a terminal gets it.
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <regex>
#include <string>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

/// "kestrel scene check -" on a terminal of its own, fed through a pipe.
class CheckOnTerminal {
public:
    CheckOnTerminal() {
        int input[2];
        if (pipe(input) != 0) return;
        m_child = forkpty(&m_terminal, nullptr, nullptr, nullptr);
        if (m_child == 0) {
            dup2(input[0], STDIN_FILENO);
            close(input[0]);
            close(input[1]);
            execl(KESTREL_BIN_DIR "/kestrel", "kestrel", "scene", "check", "-", nullptr);
            _exit(127);
        }
        close(input[0]);
        m_input = input[1];
    }
    ~CheckOnTerminal() {
        if (m_child > 0) kill(m_child, SIGKILL);
        close(m_terminal);
    }

    void feed(const std::string& text) {
        EXPECT_EQ(write(m_input, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    /// Adds what the terminal shows to shown; false when nothing came for a while.
    bool look(int milliseconds) {
        pollfd ready{m_terminal, POLLIN, 0};
        char bytes[4096];
        if (poll(&ready, 1, milliseconds) <= 0) return false;
        const ssize_t count = read(m_terminal, bytes, sizeof bytes);
        if (count > 0) shown.append(bytes, static_cast<std::size_t>(count));
        return count > 0;
    }
    /// The exit status after the end of the input.
    int finish() {
        close(m_input);
        while (look(10'000)) {
        }
        int status = -1;
        waitpid(std::exchange(m_child, -1), &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    std::string shown;

private:
    pid_t m_child = -1;
    int m_terminal = -1, m_input = -1;
};

TEST(ProgressBar, ShowsTheBytesOfASlowInputAfterASecondAndGoesAtTheEnd) {
    CheckOnTerminal check;
    const auto start = Clock::now();
    const std::string document = "<zuml version=\"2.1\"><project version=\"1\" name=\"\" identifier=\"" +
                                 std::string(32, '1') + "\"/></zuml>";
    check.feed(document);
    while (check.shown.empty() && Clock::now() - start < std::chrono::milliseconds(2400)) {
        check.feed(std::string(4096, '\n'));
        check.look(100);
    }
    EXPECT_GE(Clock::now() - start, std::chrono::seconds(1));
    EXPECT_EQ(check.finish(), 0);
    EXPECT_TRUE(std::regex_match(
        check.shown, std::regex("(\r\033\\[K[0-9]\\.[0-9] MB, [0-9]\\.[0-9] a second )+\r\033\\[K")))
        << check.shown;
}

}  // namespace
