// tests/tools/CommandRow.h - one run of the kestrel command and what must come of it.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <string>

struct CommandRow {
    const char* name;
    const char* input;      // what standard input holds
    const char* arguments;  // in the shell's syntax
    int status;
    const char* output;  // of both streams
};

/// Runs `kestrel SUBCOMMAND ARGUMENTS` through the shell and compares what it says and its exit status.
inline void expectAnswer(const std::string& subcommand, const CommandRow& row) {
    const std::string command = std::string("printf '%s' '") + row.input +
                                "' | '" KESTREL_BIN_DIR "/kestrel' 2>&1 " + subcommand + " " + row.arguments;
    FILE* pipe = popen(command.c_str(), "r");
    ASSERT_NE(pipe, nullptr);
    std::string output;
    for (int c; (c = std::fgetc(pipe)) != EOF;) output += static_cast<char>(c);
    const int status = pclose(pipe);
    EXPECT_EQ(output, row.output);
    EXPECT_EQ(WEXITSTATUS(status), row.status);
}
