// kestrel/serialization/KSHash128.h - a 128-bit digest of values.
#pragma once

#include <kestrel/platform/Export.h>

#include <cstdint>

class KSString;

/// A 128-bit digest and the means to compute it. It tells values apart; it is no protection against
/// anyone who wants two values to look alike.
///
/// It is built on the compression function of RFC 1321, and is deliberately not that digest: there is no
/// length field and no final step. Each addData call pads its own tail, so the value depends on how data
/// is divided among calls; calls whose lengths are multiples of 64 chain as one call would.
///
/// Shape      four 32-bit words, word 0 first: the chaining state. All zero means that nothing has been
///            added yet.
/// Threads    a plain value.
/// Errors     text that is no digest gives the all-zero value.
/// Example
///     KSHash128 hash;
///     hash.addData(pixels, size);
///     KSPrint("%s\n", std::unique_ptr<char, decltype(&free)>(hash.getString().createCStr(), free).get());
struct KESTREL_API KSHash128 {
    std::uint32_t words[4] = {0, 0, 0, 0};

    /// All zero: empty.
    constexpr KSHash128() = default;
    constexpr KSHash128(std::uint32_t w0, std::uint32_t w1, std::uint32_t w2, std::uint32_t w3) noexcept
        : words{w0, w1, w2, w3} {}
    /// The digest of one run of bytes.
    KSHash128(const unsigned char* data, unsigned int length) noexcept;
    /// Reads 32 hexadecimal digits, either case; what follows them is not looked at. All zero when there
    /// is another character among them, and when Mac OS Roman cannot hold the text.
    explicit KSHash128(const KSString& text);
    bool operator==(const KSHash128&) const = default;

    /// Compresses the bytes in blocks of 64. A tail of 1 to 63 bytes is padded with one byte 0x80 and
    /// zeros to a block of its own; no length is added, and never a second block. Length 0, or null data,
    /// only turns an empty digest into the initial state.
    void addData(const unsigned char* data, unsigned int length) noexcept;
    /// Compresses one block of other's words, the word 0x80000000 (a word here, not the byte that addData
    /// uses) and zeros. other may be this digest: its words are taken as they were.
    KSHash128& operator+=(const KSHash128& other) noexcept;
    /// 32 lower-case digits, word 0 first; each word stands as a number, not as its bytes in memory.
    KSString getString() const;
    /// One compression of sixteen words into the state as it is; an empty digest is not replaced first.
    void transform(const unsigned int* block) noexcept;
};
