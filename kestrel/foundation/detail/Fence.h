// kestrel/foundation/detail/Fence.h - the guard words around a block, and the fill patterns inside it.
//
//     offset             words
//     0                  3 of 0xABADCAFE, then the low 32 bits of the address of offset 0
//     16                 user data, the rounded size (or, after a reallocation, the size)
//     16 + that size     the low 32 bits of this word's own address, then 3 of 0xBEEF0BAD
#pragma once

#include <cstddef>

namespace kestrel::detail {

inline constexpr std::size_t frontFenceSize = 16;
inline constexpr std::size_t fencesSize = 32;
/// The largest size that rounding and fences do not carry past the end of numbers.
inline constexpr std::size_t largestFencedSize = ~std::size_t{0} - fencesSize - 3;
/// Larger blocks are not filled.
inline constexpr std::size_t largestFilledSize = 100000;

/// The size of the user data, a multiple of 4.
inline std::size_t roundedSize(std::size_t size) { return (size + 3) & ~std::size_t{3}; }

/// Writes both fences. start is offset 0, dataSize the size between the fences.
void writeFences(char* start, std::size_t dataSize);
bool isFrontFenceIntact(const char* start);
bool isBackFenceIntact(const char* start, std::size_t dataSize);

/// Fills new memory with the bytes FA CE BE EF, freed memory with DE AD BE EF.
void fillAsNew(char* data, std::size_t size);
void fillAsDead(char* data, std::size_t size);

}  // namespace kestrel::detail
