// tools/kestrel/Commands.h - the subcommands; each adds itself to the command line from a file of its own.
#pragma once

#include <CLI/CLI.hpp>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace kestrel::tools {

/// What a subcommand's callback throws to end the command with an exit status, after it has said why.
struct Exit {
    int status;
};

/// Does what the command line asks for; the exit status. A command that did all, but whose standard output
/// could not be written, ends with 2.
inline int parseCommandLine(CLI::App& app, int argc, char** argv) {
    app.require_subcommand(1);
    int status = 0;
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        status = app.exit(error);
    } catch (const Exit& exit) {
        status = exit.status;
    }
    if (status != 0) return status;
    const int error = std::fflush(stdout) != 0 ? errno : std::ferror(stdout) ? EIO : 0;
    if (error == 0) return 0;
    std::fprintf(stderr, "kestrel: standard output: %s\n", std::strerror(error));
    return 2;
}

void addArmor(CLI::App& app);
void addColor(CLI::App& app);
void addDate(CLI::App& app);
void addInfo(CLI::App& app);
void addScene(CLI::App& app);
void addTimecode(CLI::App& app);
void addTransform(CLI::App& app);

// Those of kestrel-images (see ImageCommands.h).
void addFrames(CLI::App& app);
void addPlanes(CLI::App& app);  // kestrel color --planes
void addRender(CLI::App& app);

}  // namespace kestrel::tools
