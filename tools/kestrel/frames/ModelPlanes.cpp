// tools/kestrel/frames/ModelPlanes.cpp - pictures of the colour models, for `kestrel color --planes`.
#include <kestrel/color/KSColor.h>

#include <cmath>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>

#include "../ColorText.h"
#include "../Commands.h"
#include "../Terminal.h"
#include "ImageFile.h"

namespace kestrel::tools {

namespace {

struct Options {
    std::string folder;
    unsigned int size = 160;
};

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
    std::filesystem::create_directories(options.folder);
    catchInterrupts();
    for (unsigned int type = KSColor::HSL; type <= KSColor::CLU && !isInterrupted(); ++type) {
        const std::string path = options.folder + "/" + std::string(modelNames[type]) + ".png";
        drawPlanes(static_cast<KSColor::Type>(type), options.size, path);
        std::printf("%s\n", path.c_str());
    }
}

}  // namespace

void addPlanes(CLI::App& app) {
    CLI::App* planes = app.add_subcommand("planes", "Picture the colour models");
    auto options = std::make_shared<Options>();
    planes->add_option("FOLDER", options->folder)->required();
    planes->add_option("SIZE", options->size);
    planes->callback([options] {
        try {
            drawAllPlanes(*options);
        } catch (const std::exception& error) {
            std::fprintf(stderr, "kestrel color: %s\n", error.what());
            throw Exit{1};
        }
        if (isInterrupted()) throw Exit{interruptStatus()};
    });
}

}  // namespace kestrel::tools
