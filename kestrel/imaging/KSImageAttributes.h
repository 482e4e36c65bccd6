// kestrel/imaging/KSImageAttributes.h - what an image is, without its pixels.
#pragma once

#include <kestrel/platform/Export.h>
#include <kestrel/serialization/KSHash128.h>

#include <cstdint>

/// A plain value: size, depth, texture target and storage hint of an image, which can be hashed.
///
/// Equality and the cache key look at different fields, deliberately: neither looks at storageHint, flagA
/// and the reserved words; == ignores flagB, which is hashed; the key ignores rowPadding, which is compared.
/// Example
///     KSImageAttributes attributes;
///     bitmap.getAttributes(attributes);
///     KSHash128 key = attributes.getCacheHashKey();
struct KESTREL_API KSImageAttributes {
    std::uint32_t kind = 0;                ///< copied from the image: 0 for a plain KSImage, 9 for a bitmap
    std::uint32_t width = 0;               ///< pixels
    std::uint32_t height = 0;              ///< rows
    std::uint32_t bitsPerChannel = 8;      ///< 8, 16 or 32
    std::uint32_t channels = 4;            ///< components a pixel
    std::uint32_t rowPadding = 0;          ///< see KSImage
    std::uint32_t extra = 0;               ///< the caller's own; part of the cache key
    std::uint32_t textureTarget = 0x84F5;  ///< OpenGL: a rectangle texture
    std::uint32_t storageHint = 0x85BD;    ///< OpenGL: keep the texture in video memory
    bool flagA = false;                    ///< the caller's own; neither compared nor hashed
    bool flagB = true;                     ///< the caller's own; hashed but not compared
    std::uint32_t reserved1 = 0;           ///< copied only
    std::uint32_t reserved2 = 0;           ///< copied only

    /// Compares the first seven fields (kind to extra) and textureTarget.
    bool operator==(const KSImageAttributes& other) const;
    /// A digest of kind, width, height, bitsPerChannel, channels, flagB, textureTarget and extra.
    KSHash128 getCacheHashKey() const;
};
