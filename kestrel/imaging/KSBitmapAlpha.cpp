// KSBitmap's operations on alpha, and the output conversions that chain them.
#include <kestrel/color/KSColor.h>
#include <kestrel/imaging/KSBitmap.h>
#include <kestrel/imaging/KSPixel.h>
#include <kestrel/imaging/detail/AlphaKernels.h>
#include <kestrel/imaging/detail/BitmapRows.h>
#include <kestrel/imaging/detail/ByteKernels.h>
#include <kestrel/imaging/detail/PixelNumbers.h>

#include <bit>

namespace {

using namespace kestrel::detail;

Matte matteOf(const KSColor& color) { return {color.getRed(), color.getGreen(), color.getBlue()}; }

/// Calls visit with the layout of a format that has four components and alpha, or with the first one: all
/// operations here treat other formats as 4-byte pixels with alpha last.
template <typename Visit>
void visitRGBA(unsigned int format, Visit visit) {
    switch (format) {
        case KSPixelInfoARGB8::format:
            return visit(KSPixelInfoARGB8());
        case KSPixelInfoRGBA16::format:
            return visit(KSPixelInfoRGBA16());
        case KSPixelInfoRGBAHalfFloat::format:
            return visit(KSPixelInfoRGBAHalfFloat());
        case KSPixelInfoRGBAFloat::format:
            return visit(KSPixelInfoRGBAFloat());
        default:
            return visit(KSPixelInfoRGBA8());
    }
}

/// As visitRGBA, with luminance alpha as a layout of its own.
template <typename Visit>
void visitAlpha(unsigned int format, Visit visit) {
    if (format == KSPixelInfoLuminanceAlpha16::format) return visit(KSPixelInfoLuminanceAlpha16());
    visitRGBA(format, visit);
}

template <typename Info>
constexpr std::size_t pixelBytes = Info::channels * sizeof(typename Info::Component);

template <typename Info>
typename Info::Component* flatComponents(KSBitmap& bitmap, Info) {
    return reinterpret_cast<typename Info::Component*>(bitmap.getData());
}

void unpremultiplyPixels(std::uint8_t* p, std::size_t n, const Matte& matte, KSPixelInfoRGBA8) {
    unpremultiplyRGBA8(p, n, matte);
}
void unpremultiplyPixels(std::uint8_t* p, std::size_t n, const Matte& matte, KSPixelInfoARGB8) {
    unpremultiplyARGB8(p, n, matte);
}
void unpremultiplyPixels(std::uint16_t* p, std::size_t n, const Matte& matte, KSPixelInfoRGBA16) {
    unpremultiplyRGBA16(p, n, matte);
}
void unpremultiplyPixels(half* p, std::size_t n, const Matte& matte, KSPixelInfoRGBAHalfFloat) {
    unpremultiplyRGBAHalf(p, n, matte);
}
void unpremultiplyPixels(float* p, std::size_t n, const Matte& matte, KSPixelInfoRGBAFloat) {
    unpremultiplyRGBAFloat(p, n, matte);
}

/// The bits of a component that stands for value.
template <typename Component>
std::uint64_t componentBits(double value) {
    if constexpr (std::is_integral_v<Component>) {
        constexpr double full = static_cast<Component>(~Component{});
        return roundedProduct(value * full, full);
    } else if constexpr (std::is_same_v<Component, half>) {
        const half number(static_cast<float>(value));
        return number == half(0.0f) ? 0 : number.bits();  // zero is written as +0
    } else {
        return std::bit_cast<std::uint32_t>(static_cast<float>(value));
    }
}

}  // namespace

void KSBitmap::preMult() {
    if (m_pixelFormat > KSPixelInfoARGB8::format) return;
    const bool alphaFirst = m_pixelFormat == KSPixelInfoARGB8::format;
    forEachRow(*this, 4, [=](std::uint8_t* row, std::size_t count) { preMultiply8(row, count, alphaFirst); });
}

void KSBitmap::unPreMult() { forEachRow(*this, 4, unPreMultiplyTruncated8); }

void KSBitmap::unpremultiply(const KSColor& color) {
    const Matte matte = matteOf(color);
    visitRGBA(m_pixelFormat, [&](auto info) {
        unpremultiplyPixels(flatComponents(*this, info), flatPixels(*this, pixelBytes<decltype(info)>), matte,
                            info);
    });
}

void KSBitmap::copyWithUnPreMult(const KSBitmap& source, const KSColor& color) {
    const Matte matte = matteOf(color);
    forEachRowPair(*this, source, source.m_width, source.m_height, false, 4, 4,
                   [&](std::uint8_t* to, const std::uint8_t* from, std::size_t count) {
                       unPreMultiplyCopy8(to, from, count, matte);
                   });
}

void KSBitmap::setConstantAlpha(double alpha) {
    visitAlpha(m_pixelFormat, [&](auto info) {
        using Info = decltype(info);
        using Component = typename Info::Component;
        const BytePattern place = componentBytes<Component>(Info::channels, Info::alpha, ~std::uint64_t{});
        maskBytes(m_data, flatPixels(*this, pixelBytes<Info>) * pixelBytes<Info>, complement(place),
                  componentBytes<Component>(Info::channels, Info::alpha, componentBits<Component>(alpha)));
    });
}

void KSBitmap::invertAlpha() {
    visitAlpha(m_pixelFormat, [&](auto info) {
        using Info = decltype(info);
        using Component = typename Info::Component;
        const std::size_t count = flatPixels(*this, pixelBytes<Info>);
        if constexpr (std::is_same_v<Component, half>)
            invertAlphaHalf(flatComponents(*this, info), count);
        else if constexpr (std::is_same_v<Component, float>)
            invertAlphaFloat(flatComponents(*this, info), count);
        else
            maskBytes(m_data, count * pixelBytes<Info>, complement(BytePattern{}),
                      componentBytes<Component>(Info::channels, Info::alpha, ~std::uint64_t{}));
    });
}

void KSBitmap::duplicateAlphaToRGB() {
    visitRGBA(m_pixelFormat, [&](auto info) {
        using Info = decltype(info);
        constexpr auto a = static_cast<unsigned>(Info::alpha);
        shuffleBytes(m_data, m_data, flatPixels(*this, pixelBytes<Info>) * pixelBytes<Info>,
                     componentOrder<typename Info::Component, 4>({a, a, a, a}));
    });
}

void KSBitmap::doOutputConversion(bool unpremultiplied, bool opaque, bool alphaToRGB, const KSColor& matte) {
    if (unpremultiplied) unpremultiply(matte);
    if (alphaToRGB)
        duplicateAlphaToRGB();
    else if (opaque)
        setConstantAlpha(1.0);
}

void KSBitmap::copyWithOutputConversion(const KSBitmap& source, bool unpremultiplied, bool opaque,
                                        bool alphaToRGB, const KSColor& matte) {
    if (unpremultiplied)
        copyWithUnPreMult(source, matte);
    else
        clone(source);
    doOutputConversion(false, opaque, alphaToRGB, matte);
}
