// The kernels as their plain twins: the vector versions replace them one by one.
#include <kestrel/imaging/detail/AlphaKernels.h>
#include <kestrel/imaging/detail/ByteKernels.h>
#include <kestrel/imaging/detail/DepthKernels.h>
#include <kestrel/imaging/detail/YUVKernels.h>
namespace kestrel::detail {
using u8 = std::uint8_t;
using u16 = std::uint16_t;
using sz = std::size_t;
void shuffleBytes(u8* to, const u8* from, sz n, const BytePattern& o) {
    reference::shuffleBytes(to, from, n, o);
}
void maskBytes(u8* p, sz n, const BytePattern& k, const BytePattern& f) { reference::maskBytes(p, n, k, f); }
void convert422ToARGB(u8* to, const u8* from, sz n) { reference::convert422ToARGB(to, from, n); }
void convertARGBTo422(u8* to, const u8* from, sz n) { reference::convertARGBTo422(to, from, n); }
void preMultiply8(u8* p, sz n, bool a) { reference::preMultiply8(p, n, a); }
void unPreMultiplyTruncated8(u8* p, sz n) { reference::unPreMultiplyTruncated8(p, n); }
void unPreMultiplyCopy8(u8* t, const u8* f, sz n, Matte m) { reference::unPreMultiplyCopy8(t, f, n, m); }
void unpremultiplyRGBA8(u8* p, sz n, Matte m) { reference::unpremultiplyRGBA8(p, n, m); }
void unpremultiplyARGB8(u8* p, sz n, Matte m) { reference::unpremultiplyARGB8(p, n, m); }
void unpremultiplyRGBA16(u16* p, sz n, Matte m) { reference::unpremultiplyRGBA16(p, n, m); }
void unpremultiplyRGBAHalf(half* p, sz n, Matte m) { reference::unpremultiplyRGBAHalf(p, n, m); }
void unpremultiplyRGBAFloat(float* p, sz n, Matte m) { reference::unpremultiplyRGBAFloat(p, n, m); }
void invertAlphaHalf(half* p, sz n) { reference::invertAlphaHalf(p, n); }
void invertAlphaFloat(float* p, sz n) { reference::invertAlphaFloat(p, n); }
#define C(T, F) \
    void convertDepth(T* t, const F* f, sz n) { reference::convertDepth(t, f, n); }
C(u8, u8)
C(u8, u16) C(u8, half) C(u8, float) C(u16, u8) C(u16, u16) C(u16, half) C(u16, float) C(float, u8)
    C(float, u16) C(float, half) C(float, float)
}  // namespace kestrel::detail
