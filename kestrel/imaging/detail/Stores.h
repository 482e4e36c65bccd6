// kestrel/imaging/detail/Stores.h - whether a kernel writes through the caches or around them.
#pragma once

#include <cstddef>

namespace kestrel::detail {

/// Streamed stores go around the caches: memory that is overwritten whole need not be read first. Kernels
/// stream where they store whole aligned vectors, and nothing is pending when they return.
enum class Stores { cached, streamed };

/// For a destination of so many bytes in all. Beside its source a smaller one is still in the caches when the
/// next operation comes.
constexpr Stores storesFor(std::size_t destinationBytes) {
    constexpr std::size_t streamedFrom = std::size_t{12} * 1024 * 1024;
    return destinationBytes < streamedFrom ? Stores::cached : Stores::streamed;
}

}  // namespace kestrel::detail
