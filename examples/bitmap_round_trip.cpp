// Bitmaps: draws one, takes it through other layouts and back, says what that cost, and writes it as a picture.
//
//   bitmap_round_trip FILE.ppm
//
// It prints
//     320 x 180, 4 channels of 8 bits
//     upside down twice                   differs by 0
//     premultiplied and back              differs by 2
//     to RGBA of 16 bits and back         differs by 0
//     to RGBA of float and back           differs by 0
//     to 4:2:2 YUV and back               differs by 4
//     half the size and back              differs by 2
#include "Picture.h"

#include <kestrel/Kestrel.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace {

using Bitmap = std::unique_ptr<KSBitmap>;

constexpr unsigned int argb8 = 1, yuv8 = 2, rgba16 = 4, rgbaFloat = 9;  // see KSPixelFormat
constexpr unsigned int width = 320, height = 180;

/// Red grows to the right and green downwards; the right half is half transparent.
Bitmap draw() {
    Bitmap bitmap(KSCreateBitmap(width, height, argb8));
    unsigned char* pixel = bitmap->getData();
    for (unsigned int y = 0; y < height; ++y) {
        for (unsigned int x = 0; x < width; ++x, pixel += 4) {
            pixel[0] = x < width / 2 ? 255 : 128;
            pixel[1] = static_cast<unsigned char>(255 * x / width);
            pixel[2] = static_cast<unsigned char>(255 * y / height);
            pixel[3] = 96;
        }
    }
    return bitmap;
}

/// Through another size and format, and back.
Bitmap through(const KSBitmap& bitmap, unsigned int w, unsigned int h, unsigned int format) {
    const Bitmap other(KSCreateBitmap(w, h, format));
    other->copyWithScalingAndDepthConversion(bitmap);
    Bitmap back(KSCreateBitmap(width, height, argb8));
    back->copyWithScalingAndDepthConversion(*other);
    return back;
}

void show(const char* what, const KSBitmap& before, const KSBitmap& after) {
    int largest = 0;
    for (unsigned int i = 0; i < before.getSize(); ++i)
        largest = std::max(largest, std::abs(before.getData()[i] - after.getData()[i]));
    KSPrint("%-35s differs by %d\n", what, largest);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return KSPrint("usage: bitmap_round_trip FILE.ppm\n"), 2;

    const Bitmap picture = draw();
    KSPrint("%u x %u, %u channels of %u bits\n", picture->getWidth(), picture->getHeight(),
            picture->getChannels(), picture->getBitsPerChannel());

    KSBitmap copy(*picture);  // memory of its own
    copy.flip();
    copy.flip();
    show("upside down twice", *picture, copy);
    copy.preMult();
    copy.unPreMult();
    show("premultiplied and back", *picture, copy);

    show("to RGBA of 16 bits and back", *picture, *through(*picture, width, height, rgba16));
    show("to RGBA of float and back", *picture, *through(*picture, width, height, rgbaFloat));

    const Bitmap video(KSCreateBitmap(width, height, yuv8)), opaque(KSCreateBitmap(width, height, argb8));
    opaque->clone(*picture);
    opaque->setConstantAlpha(1);  // 4:2:2 has no alpha
    KSBitmap::convertRGBAtoYUV(video.get(), opaque.get());
    KSBitmap::convertYUVtoRGBA(&copy, video.get());
    show("to 4:2:2 YUV and back", *opaque, copy);

    show("half the size and back", *picture, *through(*picture, width / 2, height / 2, argb8));
    return writePicture(*picture, argv[1]) ? 0 : 1;
}
