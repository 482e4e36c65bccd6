// kestrel/serialization/detail/HexWords.h - four 32-bit words as 32 hexadecimal digits, for identifiers
// and digests. Word 0 stands first, the most significant digit of a word first.
#pragma once

#include <cstdint>

namespace kestrel::detail {

/// Reads 32 digits, either case, from NUL-terminated text. At any other character among them returns
/// false, with words and text as they were; otherwise moves text past the digits.
bool parseHexWords(const char*& text, std::uint32_t (&words)[4]) noexcept;

/// Writes 32 lower-case digits and no terminator; returns the position after the last.
char* formatHexWords(char* out, const std::uint32_t (&words)[4]) noexcept;

}  // namespace kestrel::detail
