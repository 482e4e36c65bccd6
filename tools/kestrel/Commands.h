// tools/kestrel/Commands.h - the subcommands; each adds itself to the command line from a file of its own.
#pragma once

#include <CLI/CLI.hpp>

namespace kestrel::tools {

/// What a subcommand's callback throws to end the command with an exit status, after it has said why.
struct Exit {
    int status;
};

void addArmor(CLI::App& app);
void addColor(CLI::App& app);
void addFrames(CLI::App& app);  // only where OpenImageIO was found
void addDate(CLI::App& app);
void addInfo(CLI::App& app);
void addScene(CLI::App& app);
void addTimecode(CLI::App& app);
void addTransform(CLI::App& app);

}  // namespace kestrel::tools
