// kestrel/platform/detail/Collation.h - the order of texts.
#pragma once

#include <kestrel/platform/CFBase.h>

#include <span>

namespace kestrel::detail {

enum class Case { Matters, Ignored };

/// Orders by code unit, or by the code units of the case-folded characters: -1, 0 or 1.
int compareUnits(std::span<const UniChar> left, std::span<const UniChar> right, Case letters) noexcept;
/// Orders by the collation of a locale, named as setlocale names it; in the C locale as compareUnits does.
/// Each thread keeps the collators of the locale that it met last.
int compareIn(const char* locale, std::span<const UniChar> left, std::span<const UniChar> right,
              Case letters) noexcept;
/// The same for the process's LC_COLLATE.
int compareLocalized(std::span<const UniChar> left, std::span<const UniChar> right, Case letters) noexcept;

}  // namespace kestrel::detail
