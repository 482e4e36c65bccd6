#include <kestrel/imaging/KSBitDepth.h>

#include <kestrel/imaging/detail/OpenGLValues.h>

namespace gl = kestrel::detail::gl;

const unsigned int KSBitDepth::_bitsPerPixel[4] = {32, 64, 64, 128};
const unsigned int KSBitDepth::_bitsPerChannel[4] = {8, 16, 16, 32};
const unsigned int KSBitDepth::_pixelFormat[4] = {gl::RGBA, gl::RGBA, gl::RGBA16F, gl::RGBA32F};

unsigned int KSBitDepth::getBitsPerPixel(Type type) { return _bitsPerPixel[type]; }

unsigned int KSBitDepth::getBitsPerChannel(Type type) { return _bitsPerChannel[type]; }

unsigned int KSBitDepth::getPixelFormat(Type type) { return _pixelFormat[type]; }

KSBitDepth::Type KSBitDepth::getFromBitsPerPixel(int bitsPerPixel, bool integer) {
    switch (bitsPerPixel) {
        case 48:
            return INTEGER_16;
        case 64:
            return integer ? INTEGER_16 : HALF;
        case 128:
            return FLOAT;
        default:
            return INTEGER_8;
    }
}

KSBitDepth::Type KSBitDepth::getFromBitsPerChannel(int bitsPerChannel, bool integer) {
    if (bitsPerChannel > 32 || bitsPerChannel < 0) return INTEGER_8;  // four times as much fits an int
    return getFromBitsPerPixel(4 * bitsPerChannel, integer);
}
