// The kestrel command: the library at work on files.
#include <kestrel/foundation/KSVersion.h>

#include "Commands.h"

int main(int argc, char** argv) {
    using namespace kestrel::tools;
    CLI::App app{"kestrel: scene documents, frames, colour and time from the command line"};
    app.set_version_flag("--version", "kestrel " KESTREL_VERSION_STRING);
    app.require_subcommand(1);
    addArmor(app);
    addColor(app);
#ifdef KESTREL_HAVE_IMAGES
    addFrames(app);
#endif
    addDate(app);
    addInfo(app);
    addScene(app);
    addTimecode(app);
    addTransform(app);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error);
    } catch (const Exit& exit) {
        return exit.status;
    }
    return 0;
}
