// kestrel/platform/detail/EncodingSniffer.h - guesses in which encoding bytes were written.
#pragma once

#include <span>
#include <vector>

namespace kestrel::detail {

/// The names of the encodings that bytes may be in, the likeliest first; none when nothing fits.
std::vector<const char*> sniffEncodings(std::span<const char> bytes);

}  // namespace kestrel::detail
