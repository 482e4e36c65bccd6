// Timecode: texts in, frames in between, and a text painted into the picture of a frame.
//
//   timecode_burn_in FILE.ppm
//
// It prints
//     29.97 frames a second count as 30
//     00:00:59;20 is frame 1790
//     00:01:10;00 is frame 2098, 308 frames later
//     frame 1800 is 00:01:00;02
//     60 frames a second drop four: frame 3600 is 00:01:00;04
#include "Picture.h"

#include <kestrel/Kestrel.h>

#include <cstring>
#include <memory>

namespace {

// Digits of three by five dots, then the two that separate; the top row in the highest bits.
constexpr char characters[] = "0123456789:;";
constexpr unsigned short glyphs[] = {075557, 026227, 071747, 071717, 055711, 074717,
                                     074757, 071111, 075757, 075717, 002020, 002024};
constexpr unsigned int dot = 6;  // pixels

/// Paints text in white, its corner at (left, top), into a bitmap of format 1 (ARGB, 8 bits) that has room for it.
void burnIn(KSBitmap& bitmap, const char* text, unsigned int left, unsigned int top) {
    for (; *text; ++text, left += 4 * dot) {
        const char* const found = std::strchr(characters, *text);
        const unsigned int glyph = found ? glyphs[found - characters] : 0;
        for (unsigned int y = 0; y < 5 * dot; ++y)
            for (unsigned int x = 0; x < 3 * dot; ++x)
                if (glyph >> (14 - y / dot * 3 - x / dot) & 1)
                    std::memset(bitmap.getData() + 4 * ((top + y) * bitmap.getWidth() + left + x), 0xFF, 4);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return KSPrint("usage: timecode_burn_in FILE.ppm\n"), 2;

    // Two numbers a minute are left out, so that 30 a second keep up with a clock of 29.97.
    const KSTimeValue rate(29.97);
    const KSTimecodeMode& mode = *KSTimecodeMode::refTimecodeMode(KSTimecodeMode::Nm30DF);
    KSPrint("%g frames a second count as %g\n", rate.getDisplayRate(), rate.rate);
    const int in = KSTimecode::getTimeIndex("00:00:59;20", mode);
    const int out = KSTimecode::getTimeIndex("00:01:10;00", mode);
    KSPrint("00:00:59;20 is frame %d\n00:01:10;00 is frame %d, %d frames later\n", in, out, out - in);

    char text[KSTimecode::maxTextSize];  // room for any frame of any mode: no allocation
    KSTimecode::getTimecode(1800, mode, text, sizeof text);
    KSPrint("frame 1800 is %s\n", text);

    const std::unique_ptr<KSBitmap> frame(KSCreateBitmap(480, 270, 1));
    KSMakeCheckerImage(frame->getData(), 480, 270);
    for (unsigned int i = 0; i < frame->getSize(); i += 4)  // darker, for the white text to show
        for (unsigned int c = 1; c < 4; ++c) frame->getData()[i + c] /= 3;
    burnIn(*frame, text, 480 - static_cast<unsigned int>(std::strlen(text)) * 4 * dot - dot, 270 - 7 * dot);

    // A mode of one's own takes part in everything.
    KSTimecodeMode::defTimecodeMode("60 FPS DF", 60, 4, 60, 600);
    KSTimecode::getTimecode(3600, *KSTimecodeMode::refTimecodeMode("60 FPS DF"), text, sizeof text);
    KSPrint("60 frames a second drop four: frame 3600 is %s\n", text);
    return writePicture(*frame, argv[1]) ? 0 : 1;
}
