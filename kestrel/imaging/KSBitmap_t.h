// kestrel/imaging/KSBitmap_t.h - the bitmap class of each pixel format.
#pragma once

#include <kestrel/imaging/KSBitmap.h>
#include <kestrel/imaging/KSPixel.h>
#include <kestrel/platform/Export.h>

/// A bitmap whose format is part of its type. Adds no data: a KSBitmap_t may be used as its KSBitmap.
/// Example
///     KSBitmapARGB8 bitmap(1920, 1080);  // the same as *KSCreateBitmap(1920, 1080, 1)
template <typename PixelType, unsigned int bits, unsigned int channelCount, unsigned int formatIndex>
class KESTREL_API KSBitmap_t : public KSBitmap {
    static_assert(PixelType::Info::bitsPerChannel == bits && PixelType::Info::channels == channelCount &&
                  PixelType::Info::format == formatIndex);

public:
    using Pixel = PixelType;

    KSBitmap_t(unsigned int width, unsigned int height, unsigned int rowPadding = 0)
        : KSBitmap(width, height, bits, channelCount, formatIndex, rowPadding) {}
};

using KSBitmapRGBA8 = KSBitmap_t<KSPixel4<KSPixelInfoRGBA8>, 8, 4, 0>;
using KSBitmapARGB8 = KSBitmap_t<KSPixel4<KSPixelInfoARGB8>, 8, 4, 1>;
using KSBitmapYUV8 = KSBitmap_t<KSPixelYUV<KSPixelInfoYUV8>, 8, 2, 2>;
using KSBitmapRGBA16 = KSBitmap_t<KSPixel4<KSPixelInfoRGBA16>, 16, 4, 4>;
using KSBitmapRGB16 = KSBitmap_t<KSPixel3<KSPixelInfoRGB16>, 16, 3, 5>;
using KSBitmapLuminanceAlpha16 = KSBitmap_t<KSPixel2<KSPixelInfoLuminanceAlpha16>, 16, 2, 6>;
using KSBitmapLuminance16 = KSBitmap_t<KSPixel1<KSPixelInfoLuminance16>, 16, 1, 7>;
using KSBitmapRGBAHalfFloat = KSBitmap_t<KSPixel4<KSPixelInfoRGBAHalfFloat>, 16, 4, 8>;
using KSBitmapRGBAFloat = KSBitmap_t<KSPixel4<KSPixelInfoRGBAFloat>, 32, 4, 9>;
