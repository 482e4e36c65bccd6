#include <kestrel/imaging/KSPixelFormat.h>

#include <kestrel/imaging/detail/OpenGLValues.h>

#include <array>
#include <cstddef>

namespace {

namespace gl = kestrel::detail::gl;

struct Format {
    bool hasAlpha;
    unsigned int bitsPerPixel, bitsPerChannel;
    unsigned int internalFormat, dataFormat, dataType;
};

constexpr Format unknown = {false, 32, 8, gl::RGBA, gl::BGRA, gl::UNSIGNED_INT_8_8_8_8};

// clang-format off
constexpr auto formats = std::to_array<Format>({
    {true,  32,  8,  gl::RGBA8,   gl::RGBA,            gl::UNSIGNED_INT_8_8_8_8_REV},  // 0 RGBA 8
    {true,  32,  8,  gl::RGBA,    gl::BGRA,            gl::UNSIGNED_INT_8_8_8_8},      // 1 ARGB 8
    {false, 32,  8,  gl::RGBA,    gl::YCBCR_422,       gl::UNSIGNED_SHORT_8_8},        // 2 4:2:2
    unknown,                                                                           // 3 reserved
    {true,  64,  16, gl::RGBA16,  gl::RGBA,            gl::UNSIGNED_SHORT},            // 4 RGBA 16
    {false, 48,  16, gl::RGBA,    gl::RGB,             gl::UNSIGNED_SHORT},            // 5 RGB 16
    {true,  32,  16, gl::RGBA,    gl::LUMINANCE_ALPHA, gl::UNSIGNED_SHORT},            // 6 LA 16
    {false, 16,  16, gl::RGBA,    gl::LUMINANCE,       gl::UNSIGNED_SHORT},            // 7 L 16
    {true,  64,  16, gl::RGBA16F, gl::RGBA,            gl::HALF_FLOAT},                // 8 RGBA half
    {true,  128, 32, gl::RGBA32F, gl::RGBA,            gl::FLOAT},                     // 9 RGBA float
});
// clang-format on

constexpr const Format& lookUp(unsigned int format) {
    return format < formats.size() ? formats[format] : unknown;
}

}  // namespace

bool KSPixelFormat::hasAlpha(unsigned int format) { return lookUp(format).hasAlpha; }

unsigned int KSPixelFormat::getBitsPerPixel(unsigned int format) { return lookUp(format).bitsPerPixel; }

unsigned int KSPixelFormat::getBitsPerChannel(unsigned int format) { return lookUp(format).bitsPerChannel; }

unsigned int KSPixelFormat::getGLInternalFormat(unsigned int format) { return lookUp(format).internalFormat; }

unsigned int KSPixelFormat::getGLDataFormat(unsigned int format) { return lookUp(format).dataFormat; }

unsigned int KSPixelFormat::getGLDataType(unsigned int format) { return lookUp(format).dataType; }

unsigned int KSPixelFormat::getPixelFormat(unsigned long dataFormat, unsigned long dataType) {
    switch (dataType) {
        case gl::UNSIGNED_INT_8_8_8_8_REV:
            return 0;
        case gl::UNSIGNED_SHORT_8_8:
            return 2;
        case gl::HALF_FLOAT:
            return 8;
        case gl::FLOAT:
            return 9;
        case gl::UNSIGNED_SHORT:
            break;
        default:
            return 1;
    }
    switch (dataFormat) {
        case gl::RGB:
            return 5;
        case gl::LUMINANCE_ALPHA:
            return 6;
        case gl::LUMINANCE:
            return 7;
        default:
            return 4;
    }
}
