// kestrel frames: image files and numbered sequences of them.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <vector>

#include "../ColorText.h"
#include "../Commands.h"
#include "../ImageCommands.h"
#include "../Text.h"
#include "Convert.h"
#include "FrameList.h"
#include "Options.h"
#include "Sheet.h"
#include "TestPatterns.h"
#include "TestPicture.h"

namespace kestrel::tools {

namespace {

/// Runs a command and turns what it throws into a message.
void run(const std::function<int()>& command) {
    int status = 1;
    try {
        status = command();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kestrel frames: %s\n", error.what());
    }
    if (status != 0) throw Exit{status};
}

int printInfo(const std::vector<std::string>& inputs) {
    int status = 0;
    for (const std::string& text : inputs) {
        try {
            const FrameList list = FrameList::read(text);
            std::map<std::string, std::vector<int>> layouts;  // what frames are like, and which are
            std::vector<int> missing;
            for (const Frame& frame : list.getFrames()) {
                std::error_code error;
                if (list.isSequence() && !std::filesystem::exists(frame.path, error)) {
                    missing.push_back(frame.number);
                    continue;
                }
                try {
                    layouts[readImageInfo(frame.path).describe()].push_back(frame.number);
                } catch (const ImageError& error) {
                    std::fprintf(stderr, "kestrel frames: %s\n", error.what());
                    status = 1;
                }
            }
            std::printf("%s\n", text.c_str());
            if (list.isSequence())
                std::printf("  frames %d to %d, %zu of %zu there\n", list.getFrames().front().number,
                            list.getFrames().back().number, list.getFrames().size() - missing.size(),
                            list.getFrames().size());
            for (const auto& [layout, numbers] : layouts)
                std::printf("  %s%s\n", layout.c_str(),
                            layouts.size() > 1 ? (": frames " + formatRanges(numbers)).c_str() : "");
            if (!missing.empty()) {
                std::printf("  missing: %s\n", formatRanges(missing).c_str());
                status = 1;
            }
        } catch (const std::exception& error) {
            std::fprintf(stderr, "kestrel frames: %s\n", error.what());
            status = 1;
        }
    }
    return status;
}

void addInfoCommand(CLI::App* frames) {
    CLI::App* info = frames->add_subcommand("info", "Print size, layout, range and missing frames");
    auto inputs = std::make_shared<std::vector<std::string>>();
    info->add_option("IN", *inputs, "Image files and sequences")->required();
    info->footer("Example:\n  kestrel frames info 'shot.[####].exr' plate.dpx");
    info->callback([inputs] { run([&] { return printInfo(*inputs); }); });
}

void addConvertCommand(CLI::App* frames) {
    CLI::App* convert = frames->add_subcommand("convert", "Convert a file or a sequence");
    auto options = std::make_shared<ConvertOptions>();
    Conversion& steps = options->conversion;
    convert->add_option("IN", options->input, "The file or sequence to read")->required();
    convert
        ->add_option("OUT", options->output, "The file or sequence to write; the extension says the format")
        ->required();
    addParsed(convert, "--crop", steps.crop, parseWindow, "Keep this window only, X,Y,WxH", "X,Y,WxH");
    convert->add_flag("--premultiply", steps.premultiply, "Multiply alpha into the colours");
    convert
        ->add_option_function<std::string>(
            "--unpremultiply",
            [&steps](const std::string& text) {
                steps.unpremultiply = parseColor(text.empty() ? "black" : text);
                if (!steps.unpremultiply)
                    throw CLI::ValidationError("--unpremultiply", "'" + text + "' is no colour");
            },
            std::string("Divide alpha out of the colours, against this matte (black): ") + colorForms)
        ->expected(0, 1)
        ->trigger_on_parse(false);
    convert->add_flag("--alpha-as-rgb", steps.alphaToRGB, "Show alpha as grey");
    convert->add_flag("--opaque", steps.opaque, "Make every pixel opaque");
    convert->add_flag("--flip", steps.flip, "Turn upside down");
    addParsed(convert, "--size", steps.size, parseSize, "Scale to WxH, nearest pixels", "WxH");
    addDepth(convert, steps.depth, "that of the input, or the nearest that the file format has");
    addParsed(convert, "--frames", options->frames, parseFrames, "Only the frames A-B", "A-B");
    convert->add_option("--jobs", options->jobs, "Frames converted at the same time")
        ->check(CLI::Range(1, 256));
    convert->add_flag("--strict", options->strict,
                      "Stop at the first frame that fails, instead of going on without it");
    convert->add_flag("--resume", options->resume, "Leave out frames whose output is there already");
    convert->footer(
        "The steps are done in the order of the options above. Values are converted as they stand in the "
        "files: no\n"
        "colour management, and alpha is multiplied in or divided out only on request.\n"
        "Examples:\n"
        "  kestrel frames convert plate.exr plate.png --depth 8\n"
        "  kestrel frames convert 'shot.[####].exr:1:250' 'proxy.[####].jpg' --size 960x540 --jobs 8\n"
        "  kestrel frames convert in.png out.png --unpremultiply='#102030'");
    convert->callback([options] { run([&] { return convertFrames(*options); }); });
}

void addSheetCommand(CLI::App* frames) {
    CLI::App* sheet = frames->add_subcommand("sheet", "Write a contact sheet with frame numbers");
    auto options = std::make_shared<SheetOptions>();
    auto input = std::make_shared<std::string>();
    sheet->add_option("IN", *input, "The sequence")->required();
    sheet->add_option("OUT", options->output, "The picture to write")->required();
    sheet->add_option("--columns", options->columns, "Pictures in a row")->check(CLI::Range(1, 100));
    sheet->add_option("--width", options->width, "Width of a picture in pixels")->check(CLI::Range(16, 2048));
    sheet->add_option("--most", options->most, "At most so many pictures, evenly chosen")
        ->check(CLI::Range(1, 2000));
    sheet->footer("Example:\n  kestrel frames sheet 'shot.[####].exr' sheet.png --columns 8");
    sheet->callback([=] { run([&] { return makeSheet(FrameList::read(*input).getFrames(), *options); }); });
}

void addTestCommand(CLI::App* frames) {
    CLI::App* test = frames->add_subcommand("test", "Write a moving test sequence");
    auto options = std::make_shared<TestOptions>();
    auto size = std::make_shared<std::optional<Window>>();
    auto range = std::make_shared<std::optional<Window>>();
    test->add_option("OUT", options->output, "The sequence to write")->required();
    addParsed(test, "--size", *size, parseSize, "WxH (480x270)", "WxH");
    addParsed(test, "--frames", *range, parseFrames, "A-B (1-24)", "A-B");
    std::vector<std::string> patterns = testPatternNames();
    patterns.insert(patterns.begin(), options->pattern);
    test->add_option("--pattern", options->pattern, "What the pictures show")
        ->check(CLI::IsMember(patterns))
        ->capture_default_str();
    auto color = std::make_shared<std::optional<KSColor>>(),
         color2 = std::make_shared<std::optional<KSColor>>();
    addParsed(test, "--color", *color, parseColor, "Of patterns other than disc and ring", "a colour");
    addParsed(test, "--color2", *color2, parseColor, "At the gradient's bottom, and the glow's edge",
              "a colour");
    addDepth(test, options->depth, "half, or the nearest that the file format has");
    test->footer(
        "Examples:\n"
        "  kestrel frames test 'test.[####].exr' --frames 1-48\n"
        "  kestrel frames test sky.exr --frames 1-1 --pattern gradient --color '#204060' --color2 orange");
    test->callback([=] {
        if (*size) options->width = (*size)->width, options->height = (*size)->height;
        if (*range) options->first = (*range)->x, options->last = (*range)->y;
        options->color = color->value_or(options->color);
        options->color2 = color2->value_or(options->color);
        run([&] { return makeTestSequence(*options); });
    });
}

}  // namespace

void addFrames(CLI::App& app) {
    CLI::App* frames = app.add_subcommand(framesCommand.name, framesCommand.description);
    frames->require_subcommand(1);
    frames->footer(
        "A sequence is named by a placeholder for the frame number, quoted for the shell: 'shot.[####].exr' "
        "(four digits)\n"
        "or 'shot.[@].exr' (no padding), with the range of the files that are there, or "
        "'shot.[####].exr:1:250'.");
    addInfoCommand(frames);
    addConvertCommand(frames);
    addSheetCommand(frames);
    addTestCommand(frames);
}

}  // namespace kestrel::tools
