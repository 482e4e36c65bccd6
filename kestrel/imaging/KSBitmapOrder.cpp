// KSBitmap's operations on the order of channels and rows.
#include <kestrel/foundation/KSUnreachable.h>
#include <kestrel/imaging/KSBitmap.h>
#include <kestrel/imaging/KSPixel.h>
#include <kestrel/imaging/detail/BitmapRows.h>
#include <kestrel/imaging/detail/ByteKernels.h>
#include <kestrel/imaging/detail/YUVKernels.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

namespace {

using namespace kestrel::detail;

constexpr std::array<unsigned, 4> alphaToFront = {3, 0, 1, 2}, alphaToBack = {1, 2, 3, 0};

/// Rotates the components of all pixels of a format; false for formats that have no rotation.
bool rotate(KSBitmap& bitmap, unsigned int eightBitFormat, const std::array<unsigned, 4>& source) {
    const auto shuffle = [&](std::size_t pixelBytes, const BytePattern& order) {
        shuffleBytes(bitmap.getData(), bitmap.getData(), flatPixels(bitmap, pixelBytes) * pixelBytes, order);
    };
    const unsigned int format = bitmap.getPixelFormat();
    if (format == eightBitFormat)
        shuffle(4, componentOrder<std::uint8_t>(source));
    else if (format == KSPixelInfoRGBA16::format)
        shuffle(8, componentOrder<std::uint16_t>(source));
    else if (format == KSPixelInfoRGBAFloat::format)
        shuffle(16, componentOrder<float>(source));
    return format == eightBitFormat;
}

void copyRotated(KSBitmap& destination, const KSBitmap& source, std::size_t width, std::size_t height,
                 bool flipped, const std::array<unsigned, 4>& components) {
    const BytePattern order = componentOrder<std::uint8_t>(components);
    const Stores stores = storesFor(destination.getSize());
    forEachRowPair(destination, source, width, height, flipped, 4, 4,
                   [&](std::uint8_t* to, const std::uint8_t* from, std::size_t count) {
                       shuffleBytes(to, from, count * 4, order, stores);
                   });
}

/// Columns left to right of one row of a 4:2:2 window that starts at the odd source column x: luma as it is;
/// chroma the rounded mean of the samples on both sides, as far as the source's row of sourceWidth has them.
void copyOddRow422(std::uint8_t* to, const std::uint8_t* from, std::int64_t x, std::int64_t left,
                   std::int64_t right, std::int64_t sourceWidth) {
    for (std::int64_t column = left; column < right; ++column) {
        to[2 * column + 1] = from[2 * (x + column) + 1];
        // U stands in even columns, V in odd ones; in the source these are the columns before and after.
        const std::int64_t before = x + column - 1, after = x + column + 1;
        const bool hasBefore = before >= 0, hasAfter = after < sourceWidth;
        if (hasBefore && hasAfter)
            to[2 * column] = static_cast<std::uint8_t>((from[2 * before] + from[2 * after] + 1) / 2);
        else if (hasBefore || hasAfter)
            to[2 * column] = from[2 * (hasBefore ? before : after)];
    }
}

}  // namespace

void KSBitmap::convertToARGB() {
    if (rotate(*this, KSPixelInfoRGBA8::format, alphaToFront)) m_pixelFormat = KSPixelInfoARGB8::format;
}

void KSBitmap::convertToRGBA() {
    if (rotate(*this, KSPixelInfoARGB8::format, alphaToBack)) m_pixelFormat = KSPixelInfoRGBA8::format;
}

void KSBitmap::copyWithSwizzleARGBToRGBA(const KSBitmap& source) {
    copyRotated(*this, source, source.m_width, source.m_height, false, alphaToBack);
}

void KSBitmap::copyWithSwizzleRGBToARGB(const KSBitmap& source) {
    copyRotated(*this, source, source.m_width, source.m_height, false, alphaToFront);
}

void KSBitmap::copyWithFlipAndSwizzleARGBtoRGBA(const KSBitmap& source) {
    if (strideOf(*this) != strideOf(source))
        KS_UNREACHABLE("KSBitmap", 704, "Cannot copyWithFlipAndSwizzle between bitdephs");
    copyRotated(*this, source, m_width, m_height, true, alphaToBack);
}

void KSBitmap::flip() {
    const std::size_t stride = strideOf(*this);
    const std::size_t rows = stride ? itemsInside(*this, 0, m_height, stride) : 0;
    if (rows < 2 || rows < m_height) return;
    void* buffer = std::malloc(stride);
    if (!buffer) return;
    std::uint8_t *top = m_data, *bottom = m_data + (rows - 1) * stride;
    for (; top < bottom; top += stride, bottom -= stride) {
        std::memcpy(buffer, top, stride);
        std::memcpy(top, bottom, stride);
        std::memcpy(bottom, buffer, stride);
    }
    std::free(buffer);
}

void KSBitmap::copyWithFlip(const KSBitmap& source) {
    if (m_channels == source.m_channels) {
        const std::size_t stride = strideOf(*this);
        if (stride != strideOf(source))
            KS_UNREACHABLE("KSBitmap", 667, "Cannot copyWithFlip between bitdepths");
        const Stores stores = storesFor(getSize());
        forEachRowPair(*this, source, stride, m_height, true, 1, 1,
                       [=](std::uint8_t* to, const std::uint8_t* from, std::size_t bytes) {
                           copyBytes(to, from, bytes, stores);
                       });
        return;
    }
    if (m_pixelFormat != KSPixelInfoARGB8::format || source.m_pixelFormat != KSPixelInfoYUV8::format)
        KS_UNREACHABLE("KSBitmap", 645, "Cannot copyWithFlip between formats");
    const std::uint8_t* end = source.m_data + regionBytes(source);
    const Stores stores = storesFor(getSize());
    forEachRowPair(*this, source, m_width, m_height, true, 4, 2,
                   [=](std::uint8_t* to, const std::uint8_t* from, std::size_t count) {
                       // a row of an odd width ends in half a pair: the rest is what follows in memory
                       if (count % 2 != 0 && end - from < static_cast<std::ptrdiff_t>(2 * count + 2)) --count;
                       convert422ToARGB(to, from, count, stores);
                   });
}

void KSBitmap::copyWithCropping(const KSBitmap& source, int x, int y, bool flipped) {
    const std::size_t pixelBytes = std::size_t{m_channels} * (m_bitsPerChannel / 8);
    const bool is422 = source.m_pixelFormat == KSPixelInfoYUV8::format;
    if (pixelBytes == 0 || pixelBytes != std::size_t{source.m_channels} * (source.m_bitsPerChannel / 8))
        return;
    if (is422 != (m_pixelFormat == KSPixelInfoYUV8::format)) return;
    if (!m_data || !source.m_data) return;

    // The part of the window inside the source, in columns of this bitmap.
    const std::int64_t left = std::max<std::int64_t>(0, -std::int64_t{x});
    const std::int64_t right = std::min<std::int64_t>(m_width, std::int64_t{source.m_width} - x);
    if (left >= right) return;
    const auto width = static_cast<std::size_t>(right - left);
    const std::size_t toStride = strideOf(*this), fromStride = strideOf(source);
    for (std::int64_t row = 0; row < std::int64_t{m_height}; ++row) {
        const std::int64_t sourceRow = y + (flipped ? std::int64_t{m_height} - 1 - row : row);
        if (sourceRow < 0 || sourceRow >= std::int64_t{source.m_height}) continue;
        const std::size_t to = static_cast<std::size_t>(row) * toStride;
        const std::size_t from = static_cast<std::size_t>(sourceRow) * fromStride;
        const std::size_t toPixel = to + static_cast<std::size_t>(left) * pixelBytes;
        const std::size_t fromPixel = from + static_cast<std::size_t>(x + left) * pixelBytes;
        const std::size_t count = std::min(itemsInside(*this, toPixel, width, pixelBytes),
                                           itemsInside(source, fromPixel, width, pixelBytes));
        if (count == 0) continue;
        if (is422 && (x & 1))
            copyOddRow422(m_data + to, source.m_data + from, x, left, left + static_cast<std::int64_t>(count),
                          static_cast<std::int64_t>(itemsInside(source, from, source.m_width, pixelBytes)));
        else
            std::memmove(m_data + toPixel, source.m_data + fromPixel, count * pixelBytes);
    }
}
