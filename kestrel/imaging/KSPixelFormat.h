// kestrel/imaging/KSPixelFormat.h - the ten pixel formats and their translation for texture upload.
#pragma once

#include <kestrel/platform/Export.h>

/// Lookups by format index.
///
///     0 RGBA 8       1 ARGB 8      2 4:2:2 YUV 8 (U Y0 V Y1)      3 reserved, BGRA 8
///     4 RGBA 16      5 RGB 16      6 luminance alpha 16           7 luminance 16
///     8 RGBA half    9 RGBA float
///
/// Every function answers for any number: those above 9 read as 32-bit pixels of 8-bit channels without
/// alpha. OpenGL values are the numbers of its enumerations, from its headers and extensions.
/// Threads    tables only: any thread.
/// Example
///     glTexImage2D(target, 0, KSPixelFormat::getGLInternalFormat(f), w, h, 0,
///                  KSPixelFormat::getGLDataFormat(f), KSPixelFormat::getGLDataType(f), pixels);
class KESTREL_API KSPixelFormat {
public:
    /// True for 0, 1, 4, 6, 8 and 9.
    static bool hasAlpha(unsigned int format);
    /// Bits a pixel; for 4:2:2, deliberately, 32: the bits of a group of two pixels.
    static unsigned int getBitsPerPixel(unsigned int format);
    /// 8, 16 or 32.
    static unsigned int getBitsPerChannel(unsigned int format);

    /// How a texture stores the pixels: a sized format for 0, 4, 8 and 9, GL_RGBA for all others.
    static unsigned int getGLInternalFormat(unsigned int format);
    /// The channels of the pixels in memory; GL_BGRA for 1, 3 and numbers above 9.
    static unsigned int getGLDataFormat(unsigned int format);
    /// The type of the components in memory; GL_UNSIGNED_INT_8_8_8_8 for 1, 3 and numbers above 9.
    static unsigned int getGLDataType(unsigned int format);
    /// The format for a pair of OpenGL values; the type decides first. ARGB (1) for a type that is none.
    static unsigned int getPixelFormat(unsigned long dataFormat, unsigned long dataType);
};
