// tests/tools/CommandFolder.h - a temporary folder in which the kestrel command is run as a user runs it.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

class CommandFolder : public testing::Test {
protected:
    CommandFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "kestrel-command-XXXXXX").string();
        folder = mkdtemp(name.data());
    }
    ~CommandFolder() override { std::filesystem::remove_all(folder); }

    /// Runs a line of the shell in the folder, $K being the command; what it said on both streams stands in
    /// output.
    int shell(const std::string& line) {
        const std::string command =
            "cd " + folder + " && K='" KESTREL_BIN_DIR "/kestrel' && { " + line + "; } 2>&1 </dev/null";
        FILE* pipe = popen(command.c_str(), "r");
        output.clear();
        for (int c; (c = std::fgetc(pipe)) != EOF;) output += static_cast<char>(c);
        const int status = pclose(pipe);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    int run(const std::string& arguments) { return shell("$K " + arguments); }
    std::string file(const std::string& name) const {
        std::ifstream in(folder + '/' + name, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    /// How many entries a folder in it has.
    std::size_t countIn(const std::string& name) const {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(folder + '/' + name), {}));
    }

    std::string folder, output;
};
