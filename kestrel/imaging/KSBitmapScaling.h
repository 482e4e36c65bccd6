// kestrel/imaging/KSBitmapScaling.h - nearest-neighbour scaling, with and without change of depth.
//
// The pixel (x, y) of the destination takes the source's pixel at column floor(x * xScale + 1e-7) and row
// floor(y * yScale + 1e-7), both scales being source size / destination size in double. Nothing is filtered.
// Rows lie one after another: row padding is not used. Where enlarging by more than ten million makes the
// biased column or row reach the source's size, it is the last one.
// Depth goes through a float number a component, as the comment of KSBitmap says. ARGB sources of RGBA
// destinations are reordered, and the other way round.
// KSBitmap::copyWithScaling and copyWithScalingAndDepthConversion choose among these by format.
// Memory     a list of columns and one row. Where there is no memory for them, nothing is copied.
// Example
//     scaleBitmap<KSBitmapARGB8, KSBitmapARGB8::Pixel>(&small, &large);
#pragma once

#include <kestrel/imaging/KSBitmap.h>
#include <kestrel/platform/Export.h>

/// Scales source, read as if it had the layout of Pixel, into destination. Instantiated for the bitmap class
/// and pixel of every format. Destination first.
template <typename Bitmap, typename Pixel>
KESTREL_API void scaleBitmap(Bitmap* destination, const KSBitmap* source);

/// Scales source, a bitmap of Pixels, into destination, which must be of format 9 (RGBA float). Floats are
/// taken as they are. Instantiated for sources of formats 0, 1, 4, 8 and 9. Source first.
template <typename Bitmap, typename Pixel>
KESTREL_API void scaleAndDepthConvertBitmaptoRGBAFloat(Bitmap* source, KSBitmap* destination);
/// The same into format 4 (RGBA 16): rounded, clamped to 0..65535.
template <typename Bitmap, typename Pixel>
KESTREL_API void scaleAndDepthConvertBitmaptoRGBA16(Bitmap* source, KSBitmap* destination);
/// The same into format 1 (ARGB 8): rounded, clamped to 0..255.
template <typename Bitmap, typename Pixel>
KESTREL_API void scaleAndDepthConvertBitmapToARGB8(Bitmap* source, KSBitmap* destination);
