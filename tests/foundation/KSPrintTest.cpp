#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

namespace {

struct ProbeRun {
    pid_t process;
    int status;          // as from waitpid
    std::string output;  // what came through the pipe
    std::string log;     // what stands in the log file; "(none)" without one

    bool succeeded() const { return WIFEXITED(status) && WEXITSTATUS(status) == 0; }
};

std::string takeFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return "(none)";
    std::string text{std::istreambuf_iterator<char>(file), {}};
    unlink(path.c_str());
    return text;
}

/// Runs the probe with its output in a pipe. A null logSwitch leaves the environment variable unset.
ProbeRun runProbe(const char* mode, const char* logSwitch = nullptr) {
    int ends[2];
    if (pipe(ends) != 0) return {0, -1, "no pipe", ""};
    const pid_t process = fork();
    if (process == 0) {
        dup2(ends[1], 1);
        close(ends[0]);
        close(ends[1]);
        unsetenv("ksPrintUseLogFile");
        if (logSwitch) setenv("ksPrintUseLogFile", logSwitch, 1);
        execl(KESTREL_BIN_DIR "/print_probe", "print_probe", mode, static_cast<char*>(nullptr));
        _exit(127);
    }
    close(ends[1]);
    ProbeRun run{process, -1, "", ""};
    char bytes[4096];
    for (ssize_t count; (count = read(ends[0], bytes, sizeof bytes)) > 0;)
        run.output.append(bytes, static_cast<std::size_t>(count));
    close(ends[0]);
    waitpid(process, &run.status, 0);
    run.log = takeFile("/tmp/output." + std::to_string(process) + ".log");
    return run;
}

}  // namespace

TEST(KSPrint, GoesToStandardOutputAndReturnsTheFormattersResult) {
    const ProbeRun run = runProbe("print");
    EXPECT_TRUE(run.succeeded());
    EXPECT_EQ(run.output, "text 42\n");
    EXPECT_EQ(run.log, "(none)");
}

TEST(KSPrint, IndentsByTwoBlanksALevel) { EXPECT_EQ(runProbe("indent").output, "zero\n      three 3\n"); }

TEST(KSPrint, LogSwitchCountsWithAnyValueEvenAnEmptyOne) {
    for (const char* value : {"", "0", "yes"}) {
        const ProbeRun run = runProbe("print", value);
        EXPECT_TRUE(run.succeeded());
        EXPECT_EQ(run.output, "") << value;
        EXPECT_EQ(run.log, "text 42\n") << value;
    }
}

TEST(KSPrint, EnvironmentIsReadOnlyByTheFirstPrint) {
    const ProbeRun run = runProbe("late-environment");
    EXPECT_EQ(run.output, "first\nsecond\n");
    EXPECT_EQ(run.log, "(none)");
}

TEST(KSPrint, LogIsFlushedAfterEveryMessage) {
    EXPECT_EQ(runProbe("log-crash", "").log, "before the crash\n");
}

TEST(KSPrint, StaleLogIsEmptiedFirst) { EXPECT_EQ(runProbe("log-stale", "").log, "fresh\n"); }

TEST(KSPrint, ForkedChildGoesOnInItsParentsLog) {
    const ProbeRun run = runProbe("log-fork", "");
    EXPECT_TRUE(run.succeeded());
    EXPECT_EQ(run.log, "parent " + std::to_string(run.process) + "\nchild\n");
}

TEST(KSPrint, LogIsNeverOpenedThroughALinkAndTheNextMessageTriesAgain) {
    const ProbeRun run = runProbe("log-blocked", "");
    EXPECT_TRUE(run.succeeded());
    EXPECT_EQ(run.log, "kept\n");
}

TEST(KSUnreachable, LineReachesAPipeBeforeTheAbort) {
    const ProbeRun run = runProbe("stop");
    EXPECT_TRUE(WIFSIGNALED(run.status) && WTERMSIG(run.status) == SIGABRT) << run.status;
    EXPECT_EQ(run.output, "File KSProbe, line 648 should not have been reached:\n\t");
    EXPECT_EQ(runProbe("stop", "").log, run.output);
}

TEST(KSPrintStack, NamesTheProgramInItsHeader) {
    const ProbeRun run = runProbe("stack-named");
    const std::string process = std::to_string(run.process);
    EXPECT_THAT(run.output, StartsWith("Printing stack for process " + process + " (compositor):\n\t0x"));
    EXPECT_TRUE(run.output.ends_with("Printing stack for process " + process + ":\n")) << run.output;
    EXPECT_EQ(runProbe("stack-skip-all").output.find(" (UNKNOWN):\n"),
              std::string("Printing stack for process ").size() + process.size());
}

TEST(KSPrintStack, PrintsDemangledFramesInnermostFirst) {
    const ProbeRun brief = runProbe("stack");
    const auto firstFrame = brief.output.find('\n') + 1;
    const auto secondFrame = brief.output.find('\n', firstFrame) + 1;
    const auto line = [&](std::size_t start) {
        return brief.output.substr(start, brief.output.find('\n', start) - start);
    };
    EXPECT_THAT(line(firstFrame), MatchesRegex("\t0x[0-9A-F]{8,16}\tprobeFrame\\(int, bool\\*\\)"));
    EXPECT_THAT(line(secondFrame), MatchesRegex("\t0x[0-9A-F]{8,16}\tprobe_c_frame"));  // raw: not mangled

    const ProbeRun verbose = runProbe("stack-verbose");
    EXPECT_THAT(verbose.output, HasSubstr(":\n\tFrame\t\tPC\t\t\tCaller +offset\n\t0x"));
    EXPECT_THAT(verbose.output, HasSubstr("\tprobeFrame(int, bool*) +0x"));
}

TEST(KSPrintStack, CNamesAreNotTakenForTypes) {
    EXPECT_THAT(runProbe("stack-short-name").output, HasSubstr("\txi\n"));
}

TEST(KSPrintStack, FramesWithoutANameAreUnknown) {
    const auto firstFrame = [](const std::string& output, const char* header) {
        const std::size_t start = output.find(header) + std::string(header).size();
        return output.substr(start, output.find('\n', start) - start);
    };
    EXPECT_THAT(firstFrame(runProbe("stack-nameless").output, ":\n"),
                MatchesRegex("\t0x[0-9A-F]{8,16}\t<UNKNOWN>"));
    EXPECT_THAT(firstFrame(runProbe("stack-nameless-verbose").output, "+offset\n"),
                MatchesRegex("\t0x[0-9A-F]{8,16}\t0x[0-9A-F]{8,16}\t<UNKNOWN>"));
}

TEST(KSPrintStack, SkipsFramesOfTheCallerOnce) {
    const std::string output = runProbe("stack-skip").output;
    EXPECT_THAT(output, Not(HasSubstr("probeFrame")));
    EXPECT_THAT(output, HasSubstr("\tmain\n"));
}
