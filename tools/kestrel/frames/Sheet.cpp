#include "Sheet.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <exception>
#include <vector>

#include "../Terminal.h"
#include "Convert.h"
#include "FrameList.h"

namespace kestrel::tools {

namespace {

constexpr unsigned int gap = 8;  // pixels around each picture

/// Five rows of three dots, the left one in the highest bit.
struct Glyph {
    char character;
    std::array<std::uint8_t, 5> rows;
};
constexpr Glyph glyphs[] = {
    {'0', {7, 5, 5, 5, 7}}, {'1', {2, 6, 2, 2, 7}}, {'2', {7, 1, 7, 4, 7}}, {'3', {7, 1, 7, 1, 7}},
    {'4', {5, 5, 7, 1, 1}}, {'5', {7, 4, 7, 1, 7}}, {'6', {7, 4, 7, 5, 7}}, {'7', {7, 1, 2, 2, 2}},
    {'8', {7, 5, 7, 5, 7}}, {'9', {7, 5, 7, 1, 7}}, {':', {0, 2, 0, 2, 0}}, {';', {0, 2, 0, 2, 4}},
    {'-', {0, 0, 7, 0, 0}},
};

void fill(KSBitmap& picture, unsigned int x, unsigned int y, unsigned int width, unsigned int height,
          std::uint8_t level) {
    for (unsigned int row = y; row < std::min(y + height, picture.getHeight()); ++row)
        for (unsigned int column = x; column < std::min(x + width, picture.getWidth()); ++column) {
            std::uint8_t* pixel = picture.getData() + (std::size_t{row} * picture.getWidth() + column) * 4;
            pixel[0] = pixel[1] = pixel[2] = level;
            pixel[3] = 255;
        }
}

/// Evenly chosen frames, the first and the last among them.
std::vector<Frame> thinOut(const std::vector<Frame>& frames, std::size_t most) {
    if (frames.size() <= most) return frames;
    std::vector<Frame> chosen;
    for (std::size_t i = 0; i < most; ++i)
        chosen.push_back(frames[most == 1 ? 0 : i * (frames.size() - 1) / (most - 1)]);
    return chosen;
}

void place(KSBitmap& sheet, const KSBitmap& picture, unsigned int x, unsigned int y) {
    for (unsigned int row = 0; row < picture.getHeight(); ++row)
        std::memcpy(sheet.getData() + (std::size_t{y + row} * sheet.getWidth() + x) * 4,
                    picture.getData() + std::size_t{row} * picture.getWidth() * 4,
                    std::size_t{picture.getWidth()} * 4);
}

}  // namespace

void drawText(KSBitmap& picture, unsigned int x, unsigned int y, std::string_view text, unsigned int scale) {
    fill(picture, x, y, static_cast<unsigned>(text.size()) * 4 * scale + scale, 7 * scale, 0);
    for (const char character : text) {
        x += scale;
        for (const Glyph& glyph : glyphs)
            if (glyph.character == character)
                for (unsigned int dot = 0; dot < 15; ++dot)
                    if (glyph.rows[dot / 3] >> (2 - dot % 3) & 1)
                        fill(picture, x + dot % 3 * scale, y + (1 + dot / 3) * scale, scale, scale, 255);
        x += 3 * scale;
    }
}

int makeSheet(const std::vector<Frame>& all, const SheetOptions& options) {
    const std::string output = identity(options.output);
    for (const Frame& frame : all)
        if (identity(frame.path) == output) throw ImageError(options.output + ": would overwrite an input");
    catchInterrupts();

    const std::vector<Frame> frames = thinOut(all, options.most);
    std::vector<BitmapPointer> pictures(frames.size());
    unsigned int height = 0;
    for (std::size_t i = 0; i < frames.size(); ++i) {
        if (isInterrupted()) return interruptStatus();
        try {
            BitmapPointer picture = readImage(frames[i].path);
            Conversion conversion;
            const std::size_t scaled =
                std::size_t{picture->getHeight()} * options.width / picture->getWidth();
            conversion.size =
                Window{0, 0, options.width, static_cast<unsigned>(std::clamp<std::size_t>(scaled, 1, 4096))};
            pictures[i] =
                convertBitmap(std::move(picture), conversion, KSBitDepth::INTEGER_8, frames[i].path);
            height = std::max(height, pictures[i]->getHeight());
        } catch (const std::exception& error) {
            std::fprintf(stderr, "kestrel frames: %s\n", error.what());
        }
    }
    if (height == 0) throw ImageError(options.output + ": no frame for it could be read");

    const auto columns = static_cast<unsigned>(std::min<std::size_t>(options.columns, frames.size()));
    const auto rows = static_cast<unsigned>((frames.size() + columns - 1) / columns);
    const BitmapPointer sheet =
        makeBitmap(columns * (options.width + gap) + gap, rows * (height + gap) + gap, 0, options.output);
    fill(*sheet, 0, 0, sheet->getWidth(), sheet->getHeight(), 32);
    int status = 0;
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const unsigned int x = gap + static_cast<unsigned>(i) % columns * (options.width + gap);
        const unsigned int y = gap + static_cast<unsigned>(i) / columns * (height + gap);
        if (pictures[i])
            place(*sheet, *pictures[i], x, y);
        else
            status = 1;
        drawText(*sheet, x, y, std::to_string(frames[i].number), 2);
    }
    writeImage(options.output, *sheet);
    return status;
}

}  // namespace kestrel::tools
