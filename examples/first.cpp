// The program of the README.
//
// It prints
//     00:01:00;02
#include <kestrel/Kestrel.h>

#include <memory>

int main() {
    KSString name("shot_");
    name.append("010").append(".exr");

    std::unique_ptr<KSBitmap> frame(KSCreateBitmap(1920, 1080, 9));  // RGBA in float
    frame->setConstantAlpha(0.5);
    frame->unpremultiply(KSColor(KSColor::HSV, 210, 1, 1, 1));  // against a blue matte

    char text[KSTimecode::maxTextSize];
    KSTimecode::getTimecode(1800, *KSTimecodeMode::refTimecodeMode("30 FPS DF"), text, sizeof text);
    KSPrint("%s\n", text);  // 00:01:00;02

    KSHashWriteStream fingerprint;  // the same calls write an XML document
    fingerprint.writeValue(name);
    fingerprint.writeValue(0.5);
    return fingerprint.getHash() == KSHash128() ? 1 : 0;
}
