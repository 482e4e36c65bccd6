// kestrel/platform/detail/MacRoman.h - the 8-bit text of the library's NUL-terminated strings.
#pragma once

#include <kestrel/platform/CFBase.h>

#include <cstddef>
#include <cstdint>

namespace kestrel::detail {

/// Decodes count bytes into as many units; every byte is a character.
void utf16FromMacRoman(const std::uint8_t* bytes, std::size_t count, UniChar* units) noexcept;
/// Encodes units into bytes up to the first one that Mac OS Roman cannot hold; returns how many. The bytes
/// behind those, as far as count, are undefined.
std::size_t macRomanFromUtf16(const UniChar* units, std::size_t count, std::uint8_t* bytes) noexcept;

}  // namespace kestrel::detail
