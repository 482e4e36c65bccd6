// kestrel/imaging/KSBitDepth.h - the precision of an image, for callers that care about nothing else.
#pragma once

#include <kestrel/platform/Export.h>

#include <cstdint>

/// Four depths and their sizes. Lookups by Type do not check their argument, which must be 0 to 3.
/// Example
///     auto depth = KSBitDepth::getFromBitsPerChannel(16, true);  // INTEGER_16, not HALF
///     unsigned int bits = KSBitDepth::getBitsPerPixel(depth);    // 64
class KESTREL_API KSBitDepth {
public:
    enum Type : std::uint32_t { INTEGER_8 = 0, INTEGER_16 = 1, HALF = 2, FLOAT = 3 };

    /// Of four channels.
    static unsigned int getBitsPerPixel(Type type);
    /// Of one channel: 8, 16, 16 or 32.
    static unsigned int getBitsPerChannel(Type type);
    /// The OpenGL internal format.
    static unsigned int getPixelFormat(Type type);

    /// 64 bits are 16-bit integers or, with integer false, half; 48 bits are 16-bit integers; 128 bits
    /// are float; anything else is 8-bit.
    static Type getFromBitsPerPixel(int bitsPerPixel, bool integer);
    /// The same for four times the bits of a channel, so that 12 reads as 48.
    static Type getFromBitsPerChannel(int bitsPerChannel, bool integer);

private:
    static const unsigned int _bitsPerPixel[4];
    static const unsigned int _bitsPerChannel[4];
    static const unsigned int _pixelFormat[4];
};
