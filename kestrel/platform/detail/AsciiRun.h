// kestrel/platform/detail/AsciiRun.h - runs of ASCII, the fast part of every text conversion.
#pragma once

#include <kestrel/platform/CFBase.h>

#include <cstddef>
#include <cstdint>

namespace kestrel::detail {

/// Widens bytes into units up to the first byte from 0x80 up; returns how many were widened.
std::size_t widenAscii(const std::uint8_t* bytes, std::size_t count, UniChar* units) noexcept;
/// Narrows units into bytes up to the first unit from 0x80 up; returns how many were narrowed.
std::size_t narrowAscii(const UniChar* units, std::size_t count, std::uint8_t* bytes) noexcept;

}  // namespace kestrel::detail
