// kestrel/platform/detail/TextEncoding.h - the encodings that are not built in, by their registered names.
#pragma once

#include <kestrel/platform/CFString.h>

#include <cstddef>
#include <cstdint>
#include <span>

namespace kestrel::detail {

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
