// Operations on pixels by libyuv. Its ARGB is blue, green, red, alpha in memory: where ours is alpha first, in
// copyWithUnPreMult and from and to 4:2:2, values cannot be compared.
#include "../imaging/PixelOperations.h"

#include <libyuv.h>

#include <cstdint>

namespace {

using Byte = std::uint8_t;
using Word = std::uint16_t;

struct Frame {
    explicit Frame(KSBitmap& bitmap)
        : bytes(bitmap.getData()),
          words(reinterpret_cast<Word*>(bytes)),
          width(static_cast<int>(bitmap.getWidth())),
          height(static_cast<int>(bitmap.getHeight())),
          components(4 * width),
          stride(static_cast<int>(bitmap.getSize()) / height) {}
    Byte* bytes;
    Word* words;
    int width, height, components, stride;
};

void add(const char* operation, int (*run)(const Frame& to, const Frame& from)) {
    addPixelPeer(operation, "libyuv", [run](KSBitmap& to, KSBitmap& from) {
        return [run, to = Frame(to), from = Frame(from)] { run(to, from); };
    });
}

int shuffle(const Frame& to, const Frame& from, const Byte (&order)[16]) {
    return libyuv::ARGBShuffle(from.bytes, from.stride, to.bytes, to.stride, order, to.width, to.height);
}

int scale(const Frame& to, const Frame& from) {
    return libyuv::ARGBScale(from.bytes, from.stride, from.width, from.height, to.bytes, to.stride, to.width,
                             to.height, libyuv::kFilterNone);
}

constexpr Byte rotateRight[16] = {3, 0, 1, 2, 7, 4, 5, 6, 11, 8, 9, 10, 15, 12, 13, 14};
constexpr Byte rotateLeft[16] = {1, 2, 3, 0, 5, 6, 7, 4, 9, 10, 11, 8, 13, 14, 15, 12};
constexpr Byte alphas[16] = {3, 3, 3, 3, 7, 7, 7, 7, 11, 11, 11, 11, 15, 15, 15, 15};

#define PEER(operation, call) \
    add(#operation, [](const Frame& to, [[maybe_unused]] const Frame& from) { return call; })

[[maybe_unused]] const bool registered = [] {
    using namespace libyuv;
    PEER(premultiply8, ARGBAttenuate(to.bytes, to.stride, to.bytes, to.stride, to.width, to.height));
    PEER(unpremultiply8, ARGBUnattenuate(to.bytes, to.stride, to.bytes, to.stride, to.width, to.height));
    PEER(copyWithUnPreMult,
         ARGBUnattenuate(from.bytes, from.stride, to.bytes, to.stride, to.width, to.height));
    PEER(swizzleInPlace, shuffle(to, to, rotateRight));
    PEER(swizzleCopying, shuffle(to, from, rotateLeft));
    PEER(alphaToRGB8, shuffle(to, to, alphas));
    PEER(flipCopying, ARGBCopy(from.bytes, from.stride, to.bytes, to.stride, to.width, -to.height));
    PEER(yuvToArgb, UYVYToARGB(from.bytes, from.stride, to.bytes, to.stride, to.width, to.height));
    PEER(argbToYuv, ARGBToUYVY(from.bytes, from.stride, to.bytes, to.stride, to.width, to.height));
    PEER(scaleDown8, scale(to, from));
    PEER(scaleUp8, scale(to, from));
    PEER(scaleOddly8, scale(to, from));
    PEER(from8To16, ARGBToAR64(from.bytes, from.stride, to.words, to.components, to.width, to.height));
    PEER(from16To8, AR64ToARGB(from.words, from.components, to.bytes, to.stride, to.width, to.height));
    return true;
}();

}  // namespace
