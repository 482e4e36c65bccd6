// tools/kestrel/ImageCommands.h - the subcommands that read and write image files. They stand in a program of
// their own, kestrel-images, because the libraries that it links take longer to load than the rest of the
// command takes to work; kestrel executes it from the folder where it stands itself.
#pragma once

#include <string>
#include <vector>

namespace kestrel::tools {

struct ImageCommand {
    const char* name;
    const char* description;
};
constexpr ImageCommand framesCommand = {"frames",
                                        "Look at, convert and lay out image files and numbered sequences"};
constexpr ImageCommand renderCommand = {"render", "Render a project document into frames"};
constexpr ImageCommand imageCommands[] = {framesCommand, renderCommand};

/// Remembers how the command was called; to be called first. Not for several threads.
void setProgramPath(const char* argv0);
/// Becomes `kestrel-images ARGUMENTS`. Returns only when it cannot be executed, after it has said why: the
/// exit status.
int runImageCommand(const std::vector<std::string>& arguments);

}  // namespace kestrel::tools
