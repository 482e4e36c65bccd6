// kestrel/platform/detail/Utf8.h - UTF-16 to UTF-8 and back.
#pragma once

#include <kestrel/platform/CFBase.h>

#include <cstddef>
#include <span>
#include <string>

namespace kestrel::detail {

/// The most bytes of UTF-8 that one unit of UTF-16 becomes.
inline constexpr std::size_t maximumUtf8PerUnit = 3;
/// The result of a conversion from malformed bytes.
inline constexpr std::size_t invalidText = static_cast<std::size_t>(-1);

/// Writes units as UTF-8 into bytes, which must hold maximumUtf8PerUnit bytes a unit, and returns how many
/// were written. A lone surrogate becomes U+FFFD. No NUL is added.
std::size_t utf8FromUtf16(std::span<const UniChar> units, char* bytes) noexcept;

/// Writes UTF-8 as UTF-16 into units, which must hold one unit a byte, and returns how many were written, or
/// invalidText when the bytes are not well-formed.
std::size_t utf16FromUtf8(std::span<const char> bytes, UniChar* units) noexcept;

/// The plain loops that define the results of the two above.
std::size_t utf8FromUtf16Reference(std::span<const UniChar> units, char* bytes) noexcept;
std::size_t utf16FromUtf8Reference(std::span<const char> bytes, UniChar* units) noexcept;

/// The units as UTF-8.
std::string utf8Of(std::span<const UniChar> units);

}  // namespace kestrel::detail
