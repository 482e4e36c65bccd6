// kestrel/foundation/detail/NumberFormat.h - numbers as text, whatever the process locale says.
//
// Each function gives the bytes that the C library's formatter gives in the C locale, writes no
// terminator, and returns the position after the last byte. The caller has numberRoom bytes ready.
#pragma once

#include <charconv>
#include <concepts>
#include <cstddef>

namespace kestrel::detail {

/// Enough for any of the texts below.
inline constexpr std::size_t numberRoom = 24;

/// "%d", "%u", "%lld", "%llu" by the type of value.
template <std::integral Integer>
char* formatInteger(char* out, Integer value) noexcept {
    return std::to_chars(out, out + numberRoom, value).ptr;
}

/// "%.10g".
char* formatDouble(char* out, double value) noexcept;

}  // namespace kestrel::detail
