// Operations on pixels by babl, which finds the fastest way between two formats.
#include "../imaging/PixelOperations.h"

#include <babl/babl.h>

namespace {

const Babl* format(const std::string& model, const KSBitmap& bitmap) {
    const unsigned format = bitmap.getPixelFormat();
    return babl_format((model + (format == 9 ? " float" : format == 4 ? " u16" : " u8")).c_str());
}

void add(const char* operation, bool inPlace, const char* toModel, const char* fromModel) {
    addPixelPeer(operation, "babl", [=](KSBitmap& to, KSBitmap& from) {
        babl_init();
        KSBitmap& source = inPlace ? to : from;
        const Babl* fish = babl_fish(format(fromModel, source), format(toModel, to));
        return [=, &to, &source] {
            babl_process(fish, source.getData(), to.getData(), long{to.getWidth()} * to.getHeight());
        };
    });
}

[[maybe_unused]] const bool registered = [] {
    add("unpremultiplyFloat", true, "RGBA", "RaGaBaA");
    // Halves, and division in 16 bits, take it tenfold the time of others.
    for (const char* operation : {"from8To16", "from16To8", "from8ToFloat", "from16ToFloat", "fromFloatTo8"})
        add(operation, false, "R'G'B'A", "R'G'B'A");
    return true;
}();

}  // namespace
