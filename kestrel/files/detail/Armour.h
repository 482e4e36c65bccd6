// kestrel/files/detail/Armour.h - groups of three bytes as four printable characters, and back.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kestrel::detail {

/// The character of each 6-bit value.
inline constexpr std::string_view encodeVals =
    "*-0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
static_assert(encodeVals.size() == 64);

/// The 6-bit value of each character; 0 for every one outside the alphabet (and for '*').
struct DecodeVals {
    constexpr DecodeVals() {
        for (std::size_t i = 0; i < encodeVals.size(); ++i)
            values[static_cast<unsigned char>(encodeVals[i])] = static_cast<std::uint8_t>(i);
    }
    std::uint8_t values[256] = {};
};
inline constexpr DecodeVals decodeVals;

/// Writes groups * 3 bytes as groups * 4 characters, most significant bits first. The two may not overlap.
void encodeArmour(const std::uint8_t* bytes, std::size_t groups, char* text) noexcept;
/// Reads groups * 4 characters of any kind into groups * 3 bytes. The two may not overlap.
void decodeArmour(const char* text, std::size_t groups, std::uint8_t* bytes) noexcept;

// The same, plainly; they say what the right bytes are.
void encodeArmourReference(const std::uint8_t* bytes, std::size_t groups, char* text) noexcept;
void decodeArmourReference(const char* text, std::size_t groups, std::uint8_t* bytes) noexcept;

}  // namespace kestrel::detail
