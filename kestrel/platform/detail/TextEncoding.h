// kestrel/platform/detail/TextEncoding.h - text between UTF-16 units and bytes.
#pragma once

#include <kestrel/platform/CFString.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace kestrel::detail {

/// The most bytes of UTF-8 that one unit of UTF-16 becomes.
inline constexpr std::size_t maximumUtf8PerUnit = 3;

/// Writes units as UTF-8 into bytes, which must hold maximumUtf8PerUnit bytes a unit, and returns how many
/// were written. A lone surrogate becomes U+FFFD. No NUL is added.
std::size_t utf8FromUtf16(std::span<const UniChar> units, char* bytes) noexcept;

/// Writes UTF-8 as UTF-16 into units, which must hold one unit a byte. Returns how many were written, or
/// invalidText when the bytes are not well-formed.
std::size_t utf16FromUtf8(std::span<const char> bytes, UniChar* units) noexcept;
inline constexpr std::size_t invalidText = static_cast<std::size_t>(-1);

/// The units as UTF-8.
std::string utf8Of(std::span<const UniChar> units);

/// The registered name of an encoding, null for an unknown one; and the way back, which takes aliases in
/// either case and gives kCFStringEncodingInvalidId for an unknown name.
const char* nameOfEncoding(CFStringEncoding encoding) noexcept;
CFStringEncoding encodingOfName(const char* name) noexcept;

/// Decodes bytes in the encoding with this registered name or alias into a new string; null for an unknown
/// name or malformed bytes.
CFStringRef createStringNamed(const char* encodingName, std::span<const char> bytes) noexcept;

/// How far an encoding went.
struct Encoded {
    std::size_t units = 0;
    std::size_t bytes = 0;
};
/// Encodes units until the bytes are full or one cannot be held; lossByte, when not 0, stands in for it.
Encoded encodeNamed(const char* encodingName, std::span<const UniChar> units, std::uint8_t lossByte,
                    std::span<std::uint8_t> bytes);

}  // namespace kestrel::detail
