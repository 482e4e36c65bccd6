// kestrel color: a colour in all seven models, and pictures of the models.
#include <kestrel/color/KSColor.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "ColorText.h"
#include "Commands.h"
#include "Terminal.h"
#ifdef KESTREL_HAVE_IMAGES
#include "frames/ImageFile.h"
#endif

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

#ifdef KESTREL_HAVE_IMAGES

struct Range {
    float from, to;
};
/// What each component of a model spans in a picture, and the value at which it is held in the other two
/// planes.
struct Model {
    Range ranges[3];
    float held[3];
};
// In the order of KSColor::Type.
constexpr Model models[] = {
    {{{0, 359.99f}, {0, 1}, {0, 1}}, {210, 1, 0.5f}},
    {{{0, 359.99f}, {0, 1}, {0, 1}}, {210, 1, 1}},
    {{{0, 359.99f}, {0, 1}, {0, 1}}, {210, 0, 0}},
    {{{0, 1}, {0, 1}, {0, 1}}, {0.5f, 0.5f, 0.5f}},
    {{{0, 1}, {-0.596f, 0.596f}, {-0.274f, 0.274f}}, {0.5f, 0, 0}},
    {{{0, 1}, {-0.436f, 0.436f}, {-0.615f, 0.615f}}, {0.5f, 0, 0}},
    {{{0, 1}, {-0.5f, 0.5f}, {-0.5f, 0.5f}}, {0.5f, 0, 0}},
};

/// Three squares side by side; in each, one component is held while the others run to the right and upwards.
void drawPlanes(KSColor::Type type, unsigned int size, const std::string& path) {
    const unsigned int gap = size / 16 + 1;
    const BitmapPointer picture = makeBitmap(3 * size + 2 * gap, size, 0, path);
    const Model& model = models[type];
    std::uint8_t* pixel = picture->getData();
    for (unsigned int y = 0; y < size; ++y)
        for (unsigned int x = 0; x < picture->getWidth(); ++x, pixel += 4) {
            const unsigned int plane = x / (size + gap);
            const unsigned int column = x % (size + gap);
            if (column >= size) continue;  // the gap stays clear
            float components[3];
            const float along[2] = {static_cast<float>(column) / static_cast<float>(size - 1),
                                    static_cast<float>(size - 1 - y) / static_cast<float>(size - 1)};
            int axis = 0;
            for (unsigned int i = 0; i < 3; ++i)
                components[i] = i == plane
                                    ? model.held[i]
                                    : std::lerp(model.ranges[i].from, model.ranges[i].to, along[axis++]);
            KSColor color(type, components[0], components[1], components[2], 1);
            color.convertToRGB();
            color.clamp();
            const float rgb[] = {color.c0, color.c1, color.c2, 1};
            for (int i = 0; i < 4; ++i) pixel[i] = static_cast<std::uint8_t>(std::lround(rgb[i] * 255));
        }
    writeImage(path, *picture);
}

void drawAllPlanes(const Options& options) {
    std::filesystem::create_directories(options.planes);
    for (unsigned int type = KSColor::HSL; type <= KSColor::CLU; ++type) {
        const std::string path = options.planes + "/" + std::string(modelNames[type]) + ".png";
        drawPlanes(static_cast<KSColor::Type>(type), options.size, path);
        std::printf("%s\n", path.c_str());
    }
}

#endif

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
    color->add_option("--size", options->size, "Side of a plane in pixels")->check(CLI::Range(2, 4096));
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
        if (!options->planes.empty()) {
            try {
                drawAllPlanes(*options);
            } catch (const std::exception& error) {
                std::fprintf(stderr, "kestrel color: %s\n", error.what());
                throw Exit{1};
            }
        }
#endif
    });
}

}  // namespace kestrel::tools
