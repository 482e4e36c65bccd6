// kestrel/imaging/KSPixel.h - the pixel types of the bitmap classes, and the layouts that tag them.
//
// A layout class (KSPixelInfo...) names the component type, the number of channels, the place of alpha and
// the format index (see KSPixelFormat). A pixel type is that many components in memory order.
// Integer components are full range (255 or 65535 means 1.0); half and float ones are nominally 0..1 and
// are never clamped by storage.
// Example
//     using Pixel = KSPixel4<KSPixelInfoARGB8>;
//     auto* first = reinterpret_cast<Pixel*>(bitmap.getData());
//     first->components[Pixel::Info::alpha] = 255;
#pragma once

#include <Imath/half.h>

#include <cstdint>

/// What a layout class says; alphaIndex is -1 where there is no alpha.
template <typename ComponentType, unsigned int formatIndex, unsigned int channelCount, int alphaIndex>
struct KSPixelInfo {
    using Component = ComponentType;
    static constexpr unsigned int format = formatIndex;
    static constexpr unsigned int channels = channelCount;
    static constexpr int alpha = alphaIndex;
    static constexpr bool hasAlpha = alphaIndex >= 0;
    static constexpr unsigned int bitsPerChannel = 8 * sizeof(Component);
};

struct KSPixelInfoRGBA8 : KSPixelInfo<std::uint8_t, 0, 4, 3> {};
struct KSPixelInfoARGB8 : KSPixelInfo<std::uint8_t, 1, 4, 0> {};
/// 4:2:2, four bytes a pixel pair: U (Cb), Y0, V (Cr), Y1.
struct KSPixelInfoYUV8 : KSPixelInfo<std::uint8_t, 2, 2, -1> {};
struct KSPixelInfoRGBA16 : KSPixelInfo<std::uint16_t, 4, 4, 3> {};
struct KSPixelInfoRGB16 : KSPixelInfo<std::uint16_t, 5, 3, -1> {};
struct KSPixelInfoLuminanceAlpha16 : KSPixelInfo<std::uint16_t, 6, 2, 1> {};
struct KSPixelInfoLuminance16 : KSPixelInfo<std::uint16_t, 7, 1, -1> {};
struct KSPixelInfoRGBAHalfFloat : KSPixelInfo<half, 8, 4, 3> {};
struct KSPixelInfoRGBAFloat : KSPixelInfo<float, 9, 4, 3> {};

/// The components of one pixel, in memory order, without padding.
template <typename PixelInfo, unsigned int count>
struct KSPixelN {
    static_assert(PixelInfo::channels == count);
    using Info = PixelInfo;
    using Component = typename Info::Component;
    Component components[count];
};
/// One component: luminance.
template <typename PixelInfo>
struct KSPixel1 : KSPixelN<PixelInfo, 1> {};
/// Two components: luminance and alpha.
template <typename PixelInfo>
struct KSPixel2 : KSPixelN<PixelInfo, 2> {};
/// Three components: red, green, blue.
template <typename PixelInfo>
struct KSPixel3 : KSPixelN<PixelInfo, 3> {};
/// Four components: colour and alpha, in the order of the layout.
template <typename PixelInfo>
struct KSPixel4 : KSPixelN<PixelInfo, 4> {};
/// One pixel of a pair: a chroma byte (U of even pixels, V of odd ones) and its luma.
template <typename PixelInfo>
struct KSPixelYUV : KSPixelN<PixelInfo, 2> {};
