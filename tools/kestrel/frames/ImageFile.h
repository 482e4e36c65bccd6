// tools/kestrel/frames/ImageFile.h - image files in and out of bitmaps, through OpenImageIO.
#pragma once

#include <kestrel/imaging/KSBitDepth.h>
#include <kestrel/imaging/KSBitmap.h>

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace kestrel::tools {

/// What is wrong with a file: "path: reason".
class ImageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

using BitmapPointer = std::unique_ptr<KSBitmap>;

/// A bitmap with memory; throws ImageError naming what it is for when there is none.
BitmapPointer makeBitmap(unsigned int width, unsigned int height, unsigned int pixelFormat,
                         const std::string& what);

/// What a file's header says.
struct ImageInfo {
    unsigned int width = 0, height = 0, channels = 0;
    KSBitDepth::Type depth = KSBitDepth::INTEGER_8;
    std::string format;  ///< of the file, such as "openexr"

    bool operator==(const ImageInfo&) const = default;
    std::string describe() const;  ///< "1920x1080, 4 channels, half, openexr"
};

ImageInfo readImageInfo(const std::string& path);

/// Reads a picture as RGBA in the depth of the file (formats 0, 4, 8 and 9 of KSPixelFormat): grey is copied
/// to all colours, missing alpha is opaque. Values are those that stand in the file: alpha is neither
/// multiplied in nor divided out. A file with several pictures gives the first.
BitmapPointer readImage(const std::string& path);

/// Writes an RGBA bitmap (formats 0, 4, 8, 9) in its depth; alpha is dropped for formats that have none. The
/// file appears under its name only when it is complete and on the disk; until then it is a hidden file
/// beside it. Equal bitmaps give equal files.
void writeImage(const std::string& path, const KSBitmap& bitmap);

/// The depth of a picture in a file of this name: the wanted one, or the one nearest to usual that the format
/// has. Throws ImageError for a name without an extension that can be written, and for a format that cannot
/// hold what is wanted.
KSBitDepth::Type depthFor(const std::string& path, std::optional<KSBitDepth::Type> wanted,
                          KSBitDepth::Type usual);

const char* depthName(KSBitDepth::Type depth);  ///< "8 bits", "16 bits", "half", "float"
/// The RGBA pixel format of a depth: 0, 4, 8 or 9.
unsigned int formatOfDepth(KSBitDepth::Type depth);
KSBitDepth::Type depthOfFormat(unsigned int pixelFormat);

}  // namespace kestrel::tools
