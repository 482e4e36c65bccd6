// kestrel/serialization/KSUUID.h - a 128-bit identifier.
#pragma once

#include <kestrel/platform/Export.h>

#include <cstdint>
#include <optional>

/// A 128-bit identifier of four 32-bit words, word 0 first. Its text form is 32 lower-case hexadecimal
/// digits, 8 a word, most significant digit first.
///
/// Errors     text that is no identifier gives nullopt.
/// Threads    a plain value.
/// Example
///     const char* text = "000000010000000200000003deadbeef rest";
///     auto id = KSUUID::parse(text);  // {1, 2, 3, 0xdeadbeef}; text stands at " rest"
struct KESTREL_API KSUUID {
    std::uint32_t words[4] = {0, 0, 0, 0};

    constexpr KSUUID() = default;
    constexpr KSUUID(std::uint32_t w0, std::uint32_t w1, std::uint32_t w2, std::uint32_t w3) noexcept
        : words{w0, w1, w2, w3} {}
    bool operator==(const KSUUID&) const = default;

    /// Reads exactly 32 hexadecimal digits, either case, from NUL-terminated text and moves text past
    /// them. At any other character among them: nullopt, and text stays. Null text gives nullopt.
    static std::optional<KSUUID> parse(const char*& text) noexcept;
};
