// kestrel/platform/detail/Collation.h - the order of texts.
#pragma once

#include <kestrel/platform/CFBase.h>

#include <clocale>
#include <span>

namespace kestrel::detail {

enum class Case { Matters, Ignored };

/// Orders by code unit, or by the code units of the case-folded characters: -1, 0 or 1.
int compareUnits(std::span<const UniChar> left, std::span<const UniChar> right, Case letters) noexcept;
/// Orders by the collation of a locale, named as setlocale names it; in the C locale as compareUnits does.
/// Each thread keeps the collators of the locale that it met last.
int compareIn(const char* locale, std::span<const UniChar> left, std::span<const UniChar> right,
              Case letters) noexcept;
/// The process's locale for ordering. Ask first, and for the texts then: nothing need be kept meanwhile.
inline const char* localeOfOrder() noexcept {
    const char* locale = std::setlocale(LC_COLLATE, nullptr);
    return locale ? locale : "C";
}
/// Orders by the process's locale.
inline int compareLocalized(std::span<const UniChar> left, std::span<const UniChar> right,
                            Case letters) noexcept {
    return compareIn(localeOfOrder(), left, right, letters);
}

}  // namespace kestrel::detail
