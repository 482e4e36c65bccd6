// kestrel/imaging/detail/YUVKernels.h - between 4:2:2 (U Y0 V Y1) and ARGB, both of 8 bits.
#pragma once

#include <kestrel/imaging/detail/Stores.h>

#include <cstddef>
#include <cstdint>

namespace kestrel::detail {

/// Writes exactly the given number of pixels; of an odd number the last one reads a whole pair.
void convert422ToARGB(std::uint8_t* to, const std::uint8_t* from, std::size_t pixels,
                      Stores stores = Stores::cached);
void convertARGBTo422(std::uint8_t* to, const std::uint8_t* from, std::size_t pairs);

namespace reference {
void convert422ToARGB(std::uint8_t* to, const std::uint8_t* from, std::size_t pixels);
void convertARGBTo422(std::uint8_t* to, const std::uint8_t* from, std::size_t pairs);
}  // namespace reference

}  // namespace kestrel::detail
