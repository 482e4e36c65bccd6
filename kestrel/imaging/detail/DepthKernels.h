// kestrel/imaging/detail/DepthKernels.h - rows of components from one depth to another.
//
// Each component is read as a float number, multiplied by the largest value of the destination in float and
// rounded in double (see PixelNumbers.h). From 8 and 16 bits there is one right answer for each value.
#pragma once

#include <Imath/half.h>
#include <kestrel/imaging/detail/Stores.h>

#include <cstddef>
#include <cstdint>

namespace kestrel::detail {

#define KESTREL_DEPTH_KERNELS(Stored)                                                               \
    void convertDepth(std::uint16_t* to, const std::uint8_t* from, std::size_t components Stored);  \
    void convertDepth(std::uint16_t* to, const std::uint16_t* from, std::size_t components Stored); \
    void convertDepth(std::uint16_t* to, const half* from, std::size_t components Stored);          \
    void convertDepth(std::uint16_t* to, const float* from, std::size_t components Stored);         \
    void convertDepth(float* to, const std::uint8_t* from, std::size_t components Stored);          \
    void convertDepth(float* to, const std::uint16_t* from, std::size_t components Stored);         \
    void convertDepth(float* to, const half* from, std::size_t components Stored);                  \
    void convertDepth(float* to, const float* from, std::size_t components Stored);                 \
    /* pixels of RGBA to bytes of ARGB */                                                           \
    void convertToARGB(std::uint8_t* to, const std::uint16_t* from, std::size_t pixels Stored);     \
    void convertToARGB(std::uint8_t* to, const half* from, std::size_t pixels Stored);              \
    void convertToARGB(std::uint8_t* to, const float* from, std::size_t pixels Stored);
#define KESTREL_STORED , Stores stores = Stores::cached

KESTREL_DEPTH_KERNELS(KESTREL_STORED)
namespace reference {
KESTREL_DEPTH_KERNELS()
}
#undef KESTREL_STORED
#undef KESTREL_DEPTH_KERNELS

}  // namespace kestrel::detail
