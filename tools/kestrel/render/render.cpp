// kestrel render: a project document and its sources become frames.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <map>
#include <memory>
#include <thread>

#include "../Commands.h"
#include "../ImageCommands.h"
#include "../frames/Options.h"
#include "RenderJob.h"
#include "Thumbnail.h"

namespace kestrel::tools {

namespace {

const std::map<std::string, render::MissingPolicy> missingNames = {{"black", render::MissingPolicy::black},
                                                                   {"hold", render::MissingPolicy::hold},
                                                                   {"stop", render::MissingPolicy::stop}};

int run(const render::RenderOptions& options, const std::string& thumbnail) {
    int status = 1;
    try {
        status = options.output.empty() ? 0 : renderProject(options);
        if (status == 0 && !thumbnail.empty()) status = writeThumbnail(options, thumbnail);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kestrel render: %s\n", error.what());
        status = std::max(status, 1);
    }
    return status;
}

}  // namespace

void addRender(CLI::App& app) {
    CLI::App* command = app.add_subcommand(renderCommand.name, renderCommand.description);
    const auto options = std::make_shared<render::RenderOptions>();
    const auto thumbnail = std::make_shared<std::string>();
    render::SceneOptions& scene = options->scene;
    options->jobs = std::max(1u, std::thread::hardware_concurrency());

    command->add_option("PROJECT", scene.project, "The project document; - for standard input")->required();
    command->add_option("OUT", options->output,
                        "The sequence to write, such as 'out.[####].png', or a file for a single frame");
    command->add_option("--composition", scene.composition, "The one with this name, instead of the first");
    addParsed(command, "--frames", options->frames, parseFrames, "Only the frames A-B", "A-B");
    command->add_option("--jobs", options->jobs, "Threads; as many as there are processors otherwise")
        ->check(CLI::Range(1, 256));
    command->add_option("--proxy", scene.proxy, "Render at 1/N of the size")->check(CLI::Range(1, 64));
    command->add_option("--samples", scene.samples, "N by N samples for each pixel, for smooth edges")
        ->check(CLI::Range(1, 8));
    addDepth(command, options->depth, "8, or the nearest that the file format has");
    command->add_flag("--burn-in", scene.burnIn, "Write the timecode into each frame");
    command
        ->add_option_function<std::string>(
            "--missing", [&scene](const std::string& name) { scene.missing = missingNames.at(name); },
            "What takes the place of a sequence's missing member: hold (the one before), black, or stop "
            "(nothing is rendered)")
        ->check(CLI::IsMember(missingNames));
    command->add_option("--cache", options->cache,
                        "Keep finished frames in this folder, and look there first");
    command->add_option("--sheet", options->sheet, "In the end, write a contact sheet to this picture");
    command->add_option("--thumbnail", *thumbnail,
                        "Write the project to this document, with a small picture of the middle frame in it");
    command->add_flag("--resume", options->resume, "Leave out frames whose file is there already");
    command->add_flag("--strict", scene.strict,
                      "Warnings and unknown elements are faults; stop at the first frame that fails");
    command->footer(
        "What is wrong with the project is said before the first frame, with its line. A frame appears "
        "under\n"
        "its name only when it is complete.\n"
        "Examples:\n"
        "  kestrel render intro.xml 'out/intro.[####].png' --burn-in --sheet out/sheet.png\n"
        "  kestrel render intro.xml 'out/intro.[####].exr' --frames 1-50 --resume --cache ~/.cache/frames\n"
        "  kestrel render intro.xml still.png --frames 24 --proxy 2\n"
        "  kestrel render intro.xml --thumbnail intro.xml");
    command->callback([options, thumbnail] {
        if (options->output.empty() && thumbnail->empty()) throw CLI::RequiredError("OUT or --thumbnail");
        if (const int status = run(*options, *thumbnail)) throw Exit{status};
    });
}

}  // namespace kestrel::tools
