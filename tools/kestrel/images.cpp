// kestrel-images: the part of the kestrel command that works on image files.
#include "Commands.h"

int main(int argc, char** argv) {
    using namespace kestrel::tools;
    CLI::App app{"The part of the kestrel command that works on image files"};
    addFrames(app);
    addPlanes(app);
    addRender(app);
    return parseCommandLine(app, argc, argv);
}
