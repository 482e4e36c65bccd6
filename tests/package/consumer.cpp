// Reaches what the library itself links and sets up: texts, vector kernels, symbols, the table of timecode modes.
#include <kestrel/Kestrel.h>

#include <cstring>
#include <memory>

int main() {
    const std::unique_ptr<KSBitmap> frame(KSCreateBitmap(33, 3, 1));
    std::memset(frame->getData(), 0x80, 4 * 33 * 3);
    frame->preMult();
    const bool works = !KSBlend::modeName(KSBlendModeNormal, false).empty() &&
                       KSTimecodeMode::refTimecodeMode("30 FPS DF")->getFps() == 30 &&
                       frame->getData()[4 * 33 * 3 - 1] == 0x40;  // 0x80 * 0x80 / 255
    KSPrintStack(0, 0, nullptr);
    KSPrint("Kestrel %s found and linked\n", KESTREL_VERSION_STRING);
    return works ? 0 : 1;
}
