// kestrel/imaging/detail/OpenGLValues.h - the OpenGL enumerations that describe pixels; no OpenGL is called.
// Source: the Khronos registry, gl.xml.
#pragma once

namespace kestrel::detail::gl {

inline constexpr unsigned int RGB = 0x1907, RGBA = 0x1908, LUMINANCE = 0x1909, LUMINANCE_ALPHA = 0x190A,
                              BGRA = 0x80E1, RGBA8 = 0x8058, RGBA16 = 0x805B, RGBA32F = 0x8814,
                              RGBA16F = 0x881A,
                              YCBCR_422 = 0x85B9,  // packed 4:2:2 data
    UNSIGNED_SHORT_8_8 = 0x85BA,                   // and its type
    STORAGE_CACHED = 0x85BD,                       // a storage hint
    TEXTURE_RECTANGLE = 0x84F5, UNSIGNED_SHORT = 0x1403, FLOAT = 0x1406, HALF_FLOAT = 0x140B,
                              UNSIGNED_INT_8_8_8_8 = 0x8035, UNSIGNED_INT_8_8_8_8_REV = 0x8367;

}  // namespace kestrel::detail::gl
