// kestrel/platform/detail/FindUnits.h - the first occurrence of one text in another, unit by unit.
#pragma once

#include <kestrel/platform/CFBase.h>

#include <cstddef>
#include <span>

namespace kestrel::detail {

inline constexpr std::size_t notFound = static_cast<std::size_t>(-1);

/// Where `what` first begins in text; notFound when it does not, and for an empty `what`.
std::size_t findUnits(std::span<const UniChar> text, std::span<const UniChar> what) noexcept;
/// The same in time that grows with text and `what`, never with their product.
std::size_t findUnitsLinear(std::span<const UniChar> text, std::span<const UniChar> what) noexcept;
/// The plain search that defines the result of the two above.
std::size_t findUnitsReference(std::span<const UniChar> text, std::span<const UniChar> what) noexcept;

}  // namespace kestrel::detail
