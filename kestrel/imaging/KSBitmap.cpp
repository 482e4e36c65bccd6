// The storage of bitmaps; their operations stand in KSBitmapAlpha, KSBitmapOrder, KSBitmapYUV,
// KSBitmapScaling.
#include <kestrel/imaging/KSBitmap.h>

#include <kestrel/foundation/KSUnreachable.h>
#include <kestrel/imaging/KSBitmap_t.h>
#include <kestrel/imaging/detail/ByteKernels.h>
#include <kestrel/platform/detail/MappableMemory.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>

namespace {

using kestrel::detail::copyBytes;
using kestrel::detail::MemoryEntry;
using kestrel::detail::storesFor;

constexpr std::uint32_t bitmapKind = 9;

/// The region for a payload, in the arithmetic of Word: a kilobyte of slack; above 200 KiB whole 32 KiB; at
/// last whole pages and one page more. A 4:2:2 bitmap gets half of what four channels would get.
template <typename Word>
Word roundedSize(Word payload, bool is422) {
    Word size = payload + 1024;
    if (size > 204800) {
        size = ((is422 ? payload * 2 : payload) + 33791) & ~Word{0x7FFF};
        if (is422) size /= 2;
    }
    return (size & ~Word{0xFFF}) + 4096;
}

std::uint64_t saturatedProduct(std::uint64_t a, std::uint64_t b) {
    std::uint64_t product;
    return __builtin_mul_overflow(a, b, &product) ? std::numeric_limits<std::uint64_t>::max() : product;
}

/// Bytes of a region that holds every row under both readings of row padding. False when a step of the
/// 32-bit arithmetic does not fit; size is then what that arithmetic gives, for the message.
bool regionSize(std::uint64_t width, std::uint64_t height, std::uint64_t bits, std::uint64_t channels,
                std::uint64_t padding, bool is422, std::uint32_t& size) {
    constexpr std::uint64_t limit = std::numeric_limits<std::uint32_t>::max();
    const auto planeBits = static_cast<std::uint32_t>(width * height * bits);
    size = roundedSize<std::uint32_t>((planeBits >> 3) * static_cast<std::uint32_t>(channels), is422);

    const std::uint64_t wideBits = saturatedProduct(width * height, bits);
    const std::uint64_t payload = saturatedProduct(wideBits >> 3, channels);
    const std::uint64_t pixelBytes = saturatedProduct(bits / 8, channels);
    const std::uint64_t inPixels = saturatedProduct(saturatedProduct(width + padding, height), pixelBytes);
    const std::uint64_t row = std::min(saturatedProduct(width, pixelBytes), limit);
    const std::uint64_t needed = std::max(inPixels, saturatedProduct(row + padding, height));
    // The largest number on the way is the payload (twice that for 4:2:2) plus 33791; rounded down to 32 KiB
    // it leaves room for the last page.
    const std::uint64_t largestPayload = (limit - 33791) / (is422 ? 2 : 1);
    if (wideBits > limit || std::max(payload, needed) > largestPayload) return false;
    std::uint64_t rounded = roundedSize<std::uint64_t>(payload, is422);
    if (rounded < needed) rounded = roundedSize<std::uint64_t>(needed, is422);
    size = static_cast<std::uint32_t>(rounded);
    return true;
}

/// One attempt: a zeroed region, or an errno value. What does not fit in 32 bits is refused.
int tryToAllocate(std::uint32_t size, bool fits, std::uint8_t** data) {
    if (!fits) return ENOMEM;
    void* address = nullptr;
    const int error = kestrel::detail::allocateRegion(size, &address);
    if (!error) *data = static_cast<std::uint8_t*>(address);
    return error;
}

}  // namespace

KSBitmap::GuaranteeMemoryCallback KSBitmap::_guaranteeMemory = nullptr;

KSBitmap::KSBitmap() : KSImage(0, 0, 0, 0, 0) { m_kind = bitmapKind; }

KSBitmap::KSBitmap(unsigned int width, unsigned int height, unsigned int bitsPerChannel,
                   unsigned int channels, unsigned int pixelFormat, unsigned int rowPadding)
    : KSImage(width, height, bitsPerChannel, channels, rowPadding), m_pixelFormat(pixelFormat) {
    m_kind = bitmapKind;
    allocateMemory();
}

KSBitmap::KSBitmap(const KSBitmap& other) : KSImage(other) {
    m_kind = bitmapKind;
    clone(other);
}

KSBitmap::~KSBitmap() { deallocateMemory(); }

void KSBitmap::clone(const KSBitmap& other) {
    if (this == &other) return;
    m_width = other.m_width;
    m_height = other.m_height;
    m_bitsPerChannel = other.m_bitsPerChannel;
    m_channels = other.m_channels;
    m_pixelFormat = other.m_pixelFormat;
    allocateMemory();
    if (m_data && other.m_data)
        copyBytes(m_data, other.m_data, std::min({getSize(), m_allocatedSize, other.m_allocatedSize}),
                  storesFor(getSize()));
}

void KSBitmap::copy(const KSBitmap& source) {
    if (m_channels == source.m_channels) {
        if (m_data && source.m_data && m_data != source.m_data)
            copyBytes(m_data, source.m_data, std::min({getSize(), m_allocatedSize, source.m_allocatedSize}),
                      storesFor(getSize()));
    } else if (m_pixelFormat == KSPixelInfoARGB8::format) {
        convertYUVtoRGBA(this, &source);
    } else {
        convertRGBAtoYUV(this, &source);
    }
}

void KSBitmap::copyWithDepthConversion(const KSBitmap& source) {
    if (m_bitsPerChannel == source.m_bitsPerChannel) return copy(source);
    if (m_bitsPerChannel == 8 || m_bitsPerChannel == 32) return;
    KS_UNREACHABLE("KSBitmap", 547, "Cannot copy with given depth");
}

void KSBitmap::setData(const void* source) {
    if (!m_data || !source) return;
    std::size_t size = getSize();
    if (m_rowPadding != 0) {  // rows of one stride, one after another, are one piece too
        const std::size_t stride = std::size_t{m_width} * m_channels * (m_bitsPerChannel / 8) + m_rowPadding;
        size = stride * m_height;
    }
    std::memmove(m_data, source, std::min<std::size_t>(size, m_allocatedSize));
}

void KSBitmap::clear() {
    m_kind = bitmapKind;
    m_width = m_height = m_bitsPerChannel = m_channels = m_pixelFormat = 0;
    deallocateMemory();
}

void KSBitmap::allocateMemory() {
    deallocateMemory();
    const bool is422 = m_channels == 2 && m_pixelFormat == KSPixelInfoYUV8::format;
    const bool fits =
        regionSize(m_width, m_height, m_bitsPerChannel, m_channels, m_rowPadding, is422, m_allocatedSize);
    int error = tryToAllocate(m_allocatedSize, fits, &m_data);
    if (error && _guaranteeMemory) {
        _guaranteeMemory(m_allocatedSize);
        error = tryToAllocate(m_allocatedSize, fits, &m_data);
    }
    if (error) {
        std::fprintf(stderr, "could not allocate vm of size %d because %d\n",
                     static_cast<int>(m_allocatedSize), error);
        return;
    }
    MemoryEntry entry = 0;
    if ((error = kestrel::detail::makeRegionEntry(m_data, m_allocatedSize, &entry)) != 0) {
        std::fprintf(stderr, "could not make port for %p because %d\n", static_cast<void*>(m_data), error);
        kestrel::detail::releaseRegion(m_data, m_allocatedSize, 0);
        m_data = nullptr;
    }
    m_memoryPort = entry;
}

void KSBitmap::deallocateMemory() {
    if (m_data) {
        if (const int error = kestrel::detail::releaseRegion(m_data, m_allocatedSize, m_memoryPort))
            std::fprintf(stderr, "could not deallocate vm %X because %d\n", m_memoryPort, error);
        m_data = nullptr;
    }
    if (m_memoryPort) {
        if (const int error = kestrel::detail::releaseRegionEntry(m_memoryPort))
            std::fprintf(stderr, "could not deallocate port %X because %d\n", m_memoryPort, error);
        m_memoryPort = 0;
    }
}

void KSBitmap::mapIntoMemory() {
    if (m_data) return;
    void* address = nullptr;
    if (const int error = kestrel::detail::mapRegion(m_memoryPort, m_allocatedSize, &address))
        std::fprintf(stderr, "Could not map %X because %d\n", m_memoryPort, error);
    m_data = static_cast<std::uint8_t*>(address);
}

void KSBitmap::unmapFromMemory() {
    if (!m_data) return;
    if (const int error = kestrel::detail::unmapRegion(m_data, m_allocatedSize, m_memoryPort)) {
        errno = error;
        std::perror("Could not unmap");
        return;
    }
    m_data = nullptr;
}

void KSBitmap::setGuaranteeMemoryCallback(GuaranteeMemoryCallback callback) { _guaranteeMemory = callback; }

KSBitmap* KSCreateBitmap(unsigned int width, unsigned int height, unsigned int pixelFormat) {
    switch (pixelFormat) {
        case 0:
            return new KSBitmapRGBA8(width, height);
        case 1:
            return new KSBitmapARGB8(width, height);
        case 2:
            return new KSBitmapYUV8(width, height);
        case 4:
            return new KSBitmapRGBA16(width, height);
        case 5:
            return new KSBitmapRGB16(width, height);
        case 6:
            return new KSBitmapLuminanceAlpha16(width, height);
        case 7:
            return new KSBitmapLuminance16(width, height);
        case 8:
            return new KSBitmapRGBAHalfFloat(width, height);
        case 9:
            return new KSBitmapRGBAFloat(width, height);
        default:
            return nullptr;
    }
}

void KSMakeCheckerImage(void* pixels, unsigned int width, unsigned int height) {
    auto* out = static_cast<std::uint8_t*>(pixels);
    for (unsigned int y = 0; y < height; ++y)
        for (unsigned int x = 0; x < width; ++x, out += 4) {
            const bool grey = ((x ^ y) & 8) == 0;
            out[0] = 255;
            out[1] = out[2] = out[3] = grey ? 192 : 255;
        }
}
