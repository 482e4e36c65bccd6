// The kestrel command: the library at work on files.
#include <kestrel/foundation/KSVersion.h>

#include <string_view>

#include "Commands.h"
#include "ImageCommands.h"

int main(int argc, char** argv) {
    using namespace kestrel::tools;
    setProgramPath(argv[0]);
    CLI::App app{"kestrel: scene documents, frames, colour and time from the command line"};
    app.set_version_flag("--version", "kestrel " KESTREL_VERSION_STRING);
    addArmor(app);
    addColor(app);
#ifdef KESTREL_HAVE_IMAGES
    for (const ImageCommand& command : imageCommands) {
        if (argc > 1 && argv[1] == std::string_view(command.name))
            return runImageCommand({argv + 1, argv + argc});
        app.add_subcommand(command.name, command.description);  // for the list in --help
    }
#endif
    addDate(app);
    addInfo(app);
    addScene(app);
    addTimecode(app);
    addTransform(app);
    return parseCommandLine(app, argc, argv);
}
