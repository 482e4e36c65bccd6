#include <kestrel/imaging/KSImageAttributes.h>

#include <kestrel/serialization/KSHashWriteStream.h>

bool KSImageAttributes::operator==(const KSImageAttributes& other) const {
    return kind == other.kind && width == other.width && height == other.height &&
           bitsPerChannel == other.bitsPerChannel && channels == other.channels &&
           rowPadding == other.rowPadding && extra == other.extra && textureTarget == other.textureTarget;
}

KSHash128 KSImageAttributes::getCacheHashKey() const {
    KSHashWriteStream stream;
    stream.writeValue(static_cast<int>(kind));
    for (const unsigned int value : {width, height, bitsPerChannel, channels}) stream.writeValue(value);
    for (const auto value : {std::uint32_t{flagB}, textureTarget, extra})
        stream.writeValue(static_cast<int>(value));
    return stream.getHash();
}
