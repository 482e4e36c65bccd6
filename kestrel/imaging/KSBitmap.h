// kestrel/imaging/KSBitmap.h - an image that owns its pixels, and everything that is done to them.
#pragma once

#include <kestrel/imaging/KSImage.h>
#include <kestrel/platform/Export.h>

#include <cstddef>
#include <cstdint>

class KSColor;

/// Pixels in one of the layouts of KSPixelFormat, top row first.
///
/// Ownership  owns a region of page-wise memory and a named entry that keeps the pixels while they are
///            unmapped (see KSBitmapMemory). Every region starts zeroed.
/// Threads    one thread at a time for each bitmap.
/// Errors     nothing throws. Refused memory is reported on standard error and leaves getData() null; all
///            operations accept such bitmaps and do nothing with them. Operations on formats that they do
///            not handle do nothing, silently, unless they say otherwise. Three copies abort (KSPrint line
///            "File KSBitmap, line ... should not have been reached") where they say so.
/// Bounds     no operation reads or writes outside a region, whatever the sizes: what lies outside is
///            neither read nor written, the rest happens.
/// Walks      operations marked rows step by width * channels * (bitsPerChannel / 8) + rowPadding bytes.
///            Operations marked flat take width * height consecutive pixels and ignore rowPadding.
/// Numbers    v8 stands for v * (1 / 255) in double, stored as float, v16 for v * (1 / 65535) alike; half
///            and float read as they are. All further arithmetic on pixels is float, each operation rounded.
///            "Rounded" stores f as floor(f * S + 0.5 + 1e-7) clamped to 0..S (S 255 or 65535): the
///            product is float, the rest double. "Truncated" stores f * 255.0 in double, cut toward zero and
///            clamped. NaN becomes 0 in integers.
/// Speed      the kernels run on the widest vectors of the processor; their bytes do not depend on which.
/// Example
///     std::unique_ptr<KSBitmap> frame(KSCreateBitmap(1920, 1080, 1));  // ARGB, 8 bits
///     if (!frame->getData()) return false;                             // out of memory
///     frame->unpremultiply(KSColor::BLACK);
class KESTREL_API KSBitmap : public KSImage {
public:
    /// Called with the bytes that are needed before an allocation is tried once more.
    using GuaranteeMemoryCallback = bool (*)(unsigned int bytes);

    // ---- Storage

    /// No pixels, no memory; kind 9.
    KSBitmap();
    /// Allocates. Note the order: pixelFormat before rowPadding.
    KSBitmap(unsigned int width, unsigned int height, unsigned int bitsPerChannel, unsigned int channels,
             unsigned int pixelFormat, unsigned int rowPadding);
    /// Memory of its own, with the other's pixels.
    KSBitmap(const KSBitmap& other);
    KSBitmap& operator=(const KSBitmap&) = delete;  // clone() says what is copied
    ~KSBitmap() override;

    /// Takes size and format (not row padding, not kind) and copies the pixels into fresh memory. The
    /// clone of itself stays as it is.
    void clone(const KSBitmap& other);
    /// Copies getSize() bytes where the channel counts are equal, without a look at format, size or depth;
    /// converts between ARGB and 4:2:2; does nothing for any other pair.
    void copy(const KSBitmap& source);
    /// copy() between equal depths; nothing into 8 or 32 bits (use copyWithScalingAndDepthConversion);
    /// aborts for any other depth.
    void copyWithDepthConversion(const KSBitmap& source);
    /// Copies getSize() bytes from source, or, with row padding, height rows of one stride each.
    void setData(const void* source);
    /// Sizes and format become 0 and the memory goes; row padding stays.
    void clear();

    /// Fresh memory for the present size, instead of any that there is.
    void allocateMemory();
    /// Gives region and entry back, mapped or not; sizes and format stay. Nothing without memory.
    void deallocateMemory();
    /// Maps the pixels again, anywhere. Nothing when they are mapped.
    void mapIntoMemory();
    /// Takes the pixels out of the address space; the entry keeps them. Nothing when they are not mapped.
    void unmapFromMemory();

    /// Process-wide; set once at the start. Null removes it. Its result is ignored.
    static void setGuaranteeMemoryCallback(GuaranteeMemoryCallback callback);

    std::uint8_t* getData() { return m_data; }  ///< null without memory, or while unmapped
    const std::uint8_t* getData() const { return m_data; }
    unsigned int getPixelFormat() const { return m_pixelFormat; }
    /// Bytes of the region, a whole number of pages; after a refused allocation what was asked for.
    unsigned int getAllocatedSize() const { return m_allocatedSize; }
    /// The name of the region's entry, 0 for none.
    std::uint32_t getMemoryPort() const { return m_memoryPort; }

    // ---- Alpha

    /// Formats 0 and 1, rows: each colour becomes floor(colour * alpha / 255), exactly.
    void preMult();
    /// Any format, read as 4-byte pixels with alpha first, rows: each colour becomes c8 * (1 / a8), clamped
    /// to 0..1 and truncated. 1 / a8 is formed in double and rounded to float. Pixels of alpha 0 stay.
    void unPreMult();
    /// Formats 0, 1, 4, 8 and 9, and any other as if it were 0, flat. Each colour becomes
    /// (c - matte * (1 - a)) * (1 / a); integers are rounded, half and float not clamped. Where alpha is
    /// not above 0 the colour becomes the matte.
    void unpremultiply(const KSColor& matte);
    /// Alpha-first 8-bit pixels of the source, rows: each colour is (c8 - matte * (1 - a8)) / a8, clamped to
    /// 0..1 and truncated, or the matte where alpha is 0.
    void copyWithUnPreMult(const KSBitmap& source, const KSColor& matte);
    /// Flat. Formats 0, 1, 4, 6, 8, 9; any other is read as 4-byte pixels with alpha last, deliberately.
    void setConstantAlpha(double alpha);
    /// Alpha becomes its complement. Formats as in setConstantAlpha.
    void invertAlpha();
    /// Alpha is copied into the colours. Formats 0, 1, 4, 8, 9, flat; any other as if it were 0.
    void duplicateAlphaToRGB();

    // ---- Channel order, flips, windows

    /// (R, G, B, A) to (A, R, G, B), flat. Format 0 becomes 1; 4 and 9 keep their format, deliberately.
    void convertToARGB();
    /// The inverse. Format 1 becomes 0.
    void convertToRGBA();
    /// 8-bit pixels, rows of the source: bytes 0..3 become the source's 1, 2, 3, 0.
    void copyWithSwizzleARGBToRGBA(const KSBitmap& source);
    /// 8-bit pixels, rows of the source: bytes 0..3 become the source's 3, 0, 1, 2.
    void copyWithSwizzleRGBToARGB(const KSBitmap& source);
    /// As copyWithSwizzleARGBToRGBA for this bitmap's size, upside down. Aborts unless the strides are equal.
    void copyWithFlipAndSwizzleARGBtoRGBA(const KSBitmap& source);
    /// Turns the rows upside down, in place, through one temporary row.
    void flip();
    /// The source upside down: rows as they are where channel counts are equal (aborts unless the strides
    /// are), 4:2:2 into ARGB converted. Aborts for any other pair.
    void copyWithFlip(const KSBitmap& source);
    /// Fills this bitmap with the source's window whose top-left corner is (x, y), upside down with flip.
    /// Pixels outside the source are left as they were; so is everything when the pixel sizes differ.
    /// Between 4:2:2 bitmaps an odd x keeps each pixel's luma and takes, for the new pairs, the rounded mean
    /// of the two chroma samples around them.
    void copyWithCropping(const KSBitmap& source, int x, int y, bool flip);

    // ---- Colour space

    /// 4:2:2 (format 2) to ARGB (format 1; the name is historical), flat; nothing for any other pair.
    /// With D = U - 128, E = V - 128, C = Y - 16: R = (298 C + 409 E) >> 8, G = (298 C - 100 D - 208 E) >> 8,
    /// B = (298 C + 516 D) >> 8, clamped to 0..255; alpha is 255.
    static void convertYUVtoRGBA(KSBitmap* destination, const KSBitmap* source);
    /// ARGB (format 1) to 4:2:2 (format 2), flat; nothing for any other pair. Chroma of the mean of two
    /// pixels; alpha is dropped; the last pixel of an odd number is not converted.
    static void convertRGBAtoYUV(KSBitmap* destination, const KSBitmap* source);

    // ---- Output

    /// In place: unpremultiply(matte) first; then alpha into the colours, or else opaque alpha.
    void doOutputConversion(bool unpremultiply, bool opaque, bool alphaToRGB, const KSColor& matte);
    /// copyWithUnPreMult or clone first, then as doOutputConversion.
    void copyWithOutputConversion(const KSBitmap& source, bool unpremultiply, bool opaque, bool alphaToRGB,
                                  const KSColor& matte);

    // ---- Size and depth (see KSBitmapScaling.h)

    /// The source, scaled to this size by nearest neighbours, read as if it had this bitmap's layout;
    /// a 4:2:2 source is converted to ARGB first.
    void copyWithScaling(const KSBitmap& source);
    /// The same with conversion into this bitmap's depth: format 1, 4 or 9 from 0, 1, 4, 8 or 9 (any other
    /// source is read as 0). Nothing into other formats.
    void copyWithScalingAndDepthConversion(const KSBitmap& source);

private:
    static GuaranteeMemoryCallback _guaranteeMemory;

    std::uint8_t* m_data = nullptr;
    std::uint32_t m_pixelFormat = 0;
    std::uint32_t m_allocatedSize = 0;
    std::uint32_t m_memoryPort = 0;
    std::uint8_t m_flag = 0;  // cleared, never read
};

/// A new bitmap of the class for pixelFormat, without row padding; the caller deletes it. Null for format 3
/// and those above 9. Where memory was refused, getData() is null.
KESTREL_API KSBitmap* KSCreateBitmap(unsigned int width, unsigned int height, unsigned int pixelFormat);

/// Fills width * height 4-byte pixels, without padding, with squares of 8 * 8 pixels in ARGB order: grey
/// (192) at the top left, white beside and below it, all opaque.
KESTREL_API void KSMakeCheckerImage(void* pixels, unsigned int width, unsigned int height);
