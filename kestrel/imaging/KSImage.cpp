#include <kestrel/imaging/KSImage.h>

#include <kestrel/imaging/KSImageAttributes.h>

KSImage::KSImage(std::uint32_t width, std::uint32_t height, std::uint32_t bitsPerChannel,
                 std::uint32_t channels, std::uint32_t rowPadding)
    : m_width(width),
      m_height(height),
      m_bitsPerChannel(bitsPerChannel),
      m_channels(channels),
      m_rowPadding(rowPadding) {}

KSImage::~KSImage() = default;

void KSImage::getAttributes(KSImageAttributes& attributes) {
    attributes.kind = m_kind;
    attributes.width = m_width;
    attributes.height = m_height;
    attributes.bitsPerChannel = m_bitsPerChannel;
    attributes.channels = m_channels;
    attributes.rowPadding = m_rowPadding;
}

std::uint32_t KSImage::getSize() const {
    return (m_width + m_rowPadding) * m_height * (m_bitsPerChannel / 8) * m_channels;
}

void KSImage::draw() {}
