#include <kestrel/imaging/KSImageAttributes.h>

bool KSImageAttributes::operator==(const KSImageAttributes& other) const {
    return kind == other.kind && width == other.width && height == other.height &&
           bitsPerChannel == other.bitsPerChannel && channels == other.channels &&
           rowPadding == other.rowPadding && extra == other.extra && textureTarget == other.textureTarget;
}
