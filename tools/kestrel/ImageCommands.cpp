#include "ImageCommands.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace kestrel::tools {

namespace {

std::string programPath;

/// The file behind the name by which the command was called: itself a path, or found in PATH as the shell did.
std::filesystem::path programFile() {
    std::error_code error;
    if (programPath.find('/') != std::string::npos) return std::filesystem::canonical(programPath, error);
    const char* folders = std::getenv("PATH");
    std::string_view rest = folders ? folders : "";
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(':'), rest.size());
        const std::filesystem::path file = std::filesystem::path(rest.substr(0, end)) / programPath;
        if (access(file.c_str(), X_OK) == 0) return std::filesystem::canonical(file, error);
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return {};
}

}  // namespace

void setProgramPath(const char* argv0) { programPath = argv0 ? argv0 : ""; }

int runImageCommand(const std::vector<std::string>& arguments) {
    const std::string images = programFile().parent_path() / "kestrel-images";
    std::vector<char*> argv;
    argv.push_back(programPath.data());
    std::vector<std::string> copies = arguments;
    for (std::string& argument : copies) argv.push_back(argument.data());
    argv.push_back(nullptr);
    std::fflush(stdout);
    execv(images.c_str(), argv.data());
    std::fprintf(stderr, "kestrel: %s: %s\n", images.c_str(), std::strerror(errno));
    return 1;
}

}  // namespace kestrel::tools
