// kestrel/imaging/detail/BitmapRows.h - how operations find the pixels of a bitmap without leaving its
// region.
#pragma once

#include <kestrel/imaging/KSBitmap.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace kestrel::detail {

/// Bytes from the start of one row to the start of the next, row padding read as bytes.
inline std::size_t strideOf(const KSBitmap& bitmap) {
    return std::size_t{bitmap.getWidth()} * bitmap.getChannels() * (bitmap.getBitsPerChannel() / 8) +
           bitmap.getRowPadding();
}

/// Bytes of the mapped region, 0 without memory.
inline std::size_t regionBytes(const KSBitmap& bitmap) {
    return bitmap.getData() ? bitmap.getAllocatedSize() : 0;
}

/// How many of count items of itemBytes, from the byte at start, lie inside the region.
inline std::size_t itemsInside(const KSBitmap& bitmap, std::size_t start, std::size_t count,
                               std::size_t itemBytes) {
    const std::size_t size = regionBytes(bitmap);
    return start >= size ? 0 : std::min(count, (size - start) / itemBytes);
}

/// Pixels of a flat walk.
inline std::size_t flatPixels(const KSBitmap& bitmap, std::size_t pixelBytes) {
    return itemsInside(bitmap, 0, std::size_t{bitmap.getWidth()} * bitmap.getHeight(), pixelBytes);
}

/// Calls row(pixels, count) for height rows of width pixels, as far as the region reaches.
template <typename Row>
void forEachRow(KSBitmap& bitmap, std::size_t pixelBytes, Row row) {
    const std::size_t stride = strideOf(bitmap);
    if (stride == 0) return;  // rows without bytes
    for (std::size_t y = 0; y < bitmap.getHeight(); ++y) {
        const std::size_t count = itemsInside(bitmap, y * stride, bitmap.getWidth(), pixelBytes);
        if (count == 0) return;
        row(bitmap.getData() + y * stride, count);
    }
}

/// Calls row(to, from, count) for the rows of a copy: row y of the destination from row y of the source,
/// or, when flipped, from row height - 1 - y. Each bitmap advances by its own stride; pixels that lie
/// outside either region are left out.
template <typename Row>
void forEachRowPair(KSBitmap& destination, const KSBitmap& source, std::size_t width, std::size_t height,
                    bool flipped, std::size_t toBytes, std::size_t fromBytes, Row row) {
    const std::size_t toStride = strideOf(destination), fromStride = strideOf(source);
    if (toStride == 0) return;  // rows without bytes
    for (std::size_t y = 0; y < height; ++y) {
        const std::size_t to = y * toStride, from = (flipped ? height - 1 - y : y) * fromStride;
        const std::size_t room = itemsInside(destination, to, width, toBytes);
        if (room == 0) return;
        const std::size_t count = std::min(room, itemsInside(source, from, width, fromBytes));
        if (count) row(destination.getData() + to, source.getData() + from, count);
    }
}

}  // namespace kestrel::detail
