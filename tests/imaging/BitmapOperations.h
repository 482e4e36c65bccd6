// tests/imaging/BitmapOperations.h - every operation of KSBitmap that changes pixels, as a table, for the
// tests and the fuzzer that run them on bitmaps of all shapes.
#pragma once

#include <kestrel/color/KSColor.h>
#include <kestrel/imaging/KSBitmap.h>

#include <array>

struct BitmapOperation {
    const char* name;
    void (*run)(KSBitmap& bitmap, const KSBitmap& source, const KSColor& color, int number);
};

/// Whether the operations that must abort for some pairs of bitmaps may run on this one.
inline bool mayFlipFrom(const KSBitmap& bitmap, const KSBitmap& source) {
    const auto stride = [](const KSBitmap& b) {
        return std::size_t{b.getWidth()} * b.getChannels() * (b.getBitsPerChannel() / 8) + b.getRowPadding();
    };
    if (bitmap.getChannels() != source.getChannels())
        return bitmap.getPixelFormat() == 1 && source.getPixelFormat() == 2;
    return stride(bitmap) == stride(source);
}

#define KS_OPERATION(call)                                                                             \
    BitmapOperation {                                                                                  \
#call, []([[maybe_unused]] KSBitmap & bitmap, [[maybe_unused]] const KSBitmap& source,         \
                  [[maybe_unused]] const KSColor& color, [[maybe_unused]] int number) { bitmap.call; } \
    }

inline const auto bitmapOperations = std::to_array<BitmapOperation>({
    KS_OPERATION(clone(source)),
    KS_OPERATION(copy(source)),
    KS_OPERATION(preMult()),
    KS_OPERATION(unPreMult()),
    KS_OPERATION(unpremultiply(color)),
    KS_OPERATION(unpremultiply(KSColor::BLACK)),
    KS_OPERATION(copyWithUnPreMult(source, color)),
    KS_OPERATION(setConstantAlpha(number / 255.0)),
    KS_OPERATION(invertAlpha()),
    KS_OPERATION(duplicateAlphaToRGB()),
    KS_OPERATION(convertToARGB()),
    KS_OPERATION(convertToRGBA()),
    KS_OPERATION(copyWithSwizzleARGBToRGBA(source)),
    KS_OPERATION(copyWithSwizzleRGBToARGB(source)),
    KS_OPERATION(flip()),
    KS_OPERATION(copyWithCropping(source, number, number / 3, false)),
    KS_OPERATION(copyWithCropping(source, -number, number / 3, true)),
    KS_OPERATION(doOutputConversion(true, true, false, color)),
    KS_OPERATION(copyWithOutputConversion(source, true, false, true, color)),
    KS_OPERATION(copyWithOutputConversion(source, false, true, false, color)),
    KS_OPERATION(copyWithScaling(source)),
    KS_OPERATION(copyWithScalingAndDepthConversion(source)),
    BitmapOperation{"copyWithFlip",
                    [](KSBitmap& bitmap, const KSBitmap& source, const KSColor&, int) {
                        if (mayFlipFrom(bitmap, source)) bitmap.copyWithFlip(source);
                    }},
    BitmapOperation{"copyWithFlipAndSwizzleARGBtoRGBA",
                    [](KSBitmap& bitmap, const KSBitmap& source, const KSColor&, int) {
                        if (mayFlipFrom(bitmap, source) && bitmap.getChannels() == source.getChannels())
                            bitmap.copyWithFlipAndSwizzleARGBtoRGBA(source);
                    }},
});
#undef KS_OPERATION
