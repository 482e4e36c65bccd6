// KSBitmap's conversions between 4:2:2 and ARGB.
#include <kestrel/imaging/KSBitmap.h>
#include <kestrel/imaging/KSPixel.h>
#include <kestrel/imaging/detail/BitmapRows.h>
#include <kestrel/imaging/detail/YUVKernels.h>

#include <algorithm>

using namespace kestrel::detail;

void KSBitmap::convertYUVtoRGBA(KSBitmap* destination, const KSBitmap* source) {
    if (destination->m_pixelFormat != KSPixelInfoARGB8::format ||
        source->m_pixelFormat != KSPixelInfoYUV8::format)
        return;
    const std::size_t pairs = (std::size_t{source->getSize()} + 3) / 4;
    convert422ToARGB(destination->m_data, source->m_data,
                     2 * std::min(itemsInside(*source, 0, pairs, 4), itemsInside(*destination, 0, pairs, 8)),
                     storesFor(destination->getSize()));
}

void KSBitmap::convertRGBAtoYUV(KSBitmap* destination, const KSBitmap* source) {
    if (destination->m_pixelFormat != KSPixelInfoYUV8::format ||
        source->m_pixelFormat != KSPixelInfoARGB8::format)
        return;
    // Pairs that start before the last pixel.
    const std::size_t size = source->getSize();
    const std::size_t pairs = size < 4 ? 0 : (size - 4 + 7) / 8;
    convertARGBTo422(destination->m_data, source->m_data,
                     std::min(itemsInside(*source, 0, pairs, 8), itemsInside(*destination, 0, pairs, 4)));
}
