// kestrel/foundation/detail/StringUtf8.h - UTF-8 into strings and out of them, without detours.
#pragma once

#include <kestrel/foundation/KSString.h>
#include <kestrel/platform/detail/Utf8.h>

#include <cstddef>
#include <string_view>

namespace kestrel::detail {

/// A string of UTF-8; null when the bytes are not well-formed or without memory.
KSString stringFromUtf8(std::string_view bytes);

/// Appends UTF-8; a null string becomes that text. False, with the string as it was, when the bytes are not
/// well-formed or without memory.
bool appendUtf8(KSString& string, std::string_view bytes);

/// Room in bytes for the UTF-8 of string, whatever its characters.
inline std::size_t utf8Room(const KSString& string) noexcept {
    return std::size_t{string.size()} * maximumUtf8PerUnit;
}
/// Writes string as UTF-8 into bytes, which must hold utf8Room(string) of them, and returns how many were
/// written. A lone surrogate becomes U+FFFD. No NUL is added.
inline std::size_t utf8FromString(const KSString& string, char* bytes) noexcept {
    return utf8FromUtf16({string.u_str(), string.size()}, bytes);
}

}  // namespace kestrel::detail
