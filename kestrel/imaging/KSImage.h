// kestrel/imaging/KSImage.h - the description of an image, from which bitmaps derive.
#pragma once

#include <kestrel/platform/Export.h>

#include <cstdint>

struct KSImageAttributes;

/// Size, depth, channel count and row padding of an image, whatever holds its pixels.
///
/// Row padding has two readings, and both are kept: getSize() counts it in pixels, whatever walks rows
/// (KSBitmap::setData and the row operations) counts it in bytes. Bitmap memory holds either.
/// Threads    one thread at a time.
/// Example
///     KSImage image(10, 2, 8, 4, 4);
///     image.getSize();  // (10 + 4) * 2 * 1 * 4 = 112
class KESTREL_API KSImage {
public:
    /// Stores the numbers unchanged, without any check; kind 0.
    KSImage(std::uint32_t width, std::uint32_t height, std::uint32_t bitsPerChannel, std::uint32_t channels,
            std::uint32_t rowPadding);
    KSImage(const KSImage&) = default;
    KSImage& operator=(const KSImage&) = delete;  // a bitmap's sizes belong to its memory

    virtual ~KSImage();
    /// Sets the first six fields of attributes and leaves the others as they were.
    virtual void getAttributes(KSImageAttributes& attributes);
    /// (width + rowPadding) * height * (bitsPerChannel / 8) * channels in unsigned 32-bit arithmetic.
    virtual std::uint32_t getSize() const;
    /// Does nothing here.
    virtual void draw();

    std::uint32_t getKind() const { return m_kind; }      ///< 0 for a plain image, 9 for a bitmap
    std::uint32_t getWidth() const { return m_width; }    ///< pixels a row
    std::uint32_t getHeight() const { return m_height; }  ///< rows
    std::uint32_t getBitsPerChannel() const { return m_bitsPerChannel; }  ///< 8, 16 or 32
    std::uint32_t getChannels() const { return m_channels; }              ///< components a pixel
    std::uint32_t getRowPadding() const { return m_rowPadding; }          ///< pixels or bytes: see the class

protected:
    std::uint32_t m_kind = 0;
    std::uint32_t m_width;
    std::uint32_t m_height;
    std::uint32_t m_bitsPerChannel;
    std::uint32_t m_channels;
    std::uint32_t m_rowPadding;
    std::uint32_t m_reserved1 = 0;  // copied, never read
    std::uint32_t m_reserved2 = 0;
};
