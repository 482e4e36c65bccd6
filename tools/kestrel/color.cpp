// kestrel color: a colour in all seven models, and pictures of the models.
#include <kestrel/color/KSColor.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "ColorText.h"
#include "Commands.h"
#include "ImageCommands.h"
#include "Terminal.h"

namespace kestrel::tools {

namespace {

struct Options {
    std::vector<std::string> colors;
    std::string model;
    std::string planes;
    unsigned int size = 160;
};

std::string swatch(const KSColor& color, int colors) {
    if (colors < 256) return "";
    KSColor rgb = color;
    rgb.convertToRGB();
    rgb.clamp();
    const float components[] = {rgb.c0, rgb.c1, rgb.c2};
    long levels[3];
    char escape[64];
    if (colors > 256) {
        for (int i = 0; i < 3; ++i) levels[i] = std::lround(components[i] * 255);
        std::snprintf(escape, sizeof escape, "\033[48;2;%ld;%ld;%ldm        \033[0m ", levels[0], levels[1],
                      levels[2]);
    } else {  // the cube of 6 levels a component
        for (int i = 0; i < 3; ++i) levels[i] = std::lround(components[i] * 5);
        std::snprintf(escape, sizeof escape, "\033[48;5;%ldm        \033[0m ",
                      16 + 36 * levels[0] + 6 * levels[1] + levels[2]);
    }
    return escape;
}

void print(const std::string& text, const Options& options) {
    const auto color = parseColor(text);
    if (!color) {
        std::fprintf(stderr, "kestrel color: '%s' is no colour; write %s\n", text.c_str(), colorForms);
        throw Exit{2};
    }
    const std::string sample = swatch(*color, terminalColors());
    if (!options.model.empty()) {
        KSColor converted = *color;
        converted.convert(*parseModel(options.model));
        std::printf("%s%s\n", sample.c_str(), formatColor(converted).c_str());
        return;
    }
    std::printf("%s%s  %s\n", sample.c_str(), text.c_str(), formatHex(*color).c_str());
    for (unsigned int type = KSColor::HSL; type <= KSColor::CLU; ++type) {
        KSColor converted = *color;
        converted.convert(static_cast<KSColor::Type>(type));
        std::printf("  %s\n", formatColor(converted).c_str());
    }
}

}  // namespace

void addColor(CLI::App& app) {
    CLI::App* color =
        app.add_subcommand("color", "Convert colours between the seven models, and picture the models");
    auto options = std::make_shared<Options>();
    color->add_option("COLOUR", options->colors, std::string("Colours to convert: ") + colorForms);
    color->add_option("--to", options->model, "Print this model only")
        ->check(CLI::IsMember(std::vector<std::string>(modelNames.begin(), modelNames.end())));
#ifdef KESTREL_HAVE_IMAGES
    color->add_option("--planes", options->planes, "Write a picture of each model's planes into this folder");
    color->add_option("--size", options->size, "Side of a plane in pixels")
        ->check(CLI::Range(2, 4096))
        ->needs("--planes");
#endif
    color->footer(
        "Examples:\n"
        "  kestrel color '#ff8000'\n"
        "  kestrel color 'hsv(210, 1, 0.5)' --to rgb\n"
        "  kestrel color --planes pictures");
    color->callback([options] {
        if (options->colors.empty() && options->planes.empty())
            throw CLI::RequiredError("a colour, or --planes");
        for (const std::string& text : options->colors) print(text, *options);
#ifdef KESTREL_HAVE_IMAGES
        if (!options->planes.empty())
            throw Exit{runImageCommand({"planes", options->planes, std::to_string(options->size)})};
#endif
    });
}

}  // namespace kestrel::tools
