// kestrel/serialization/detail/EscapedText.h - UTF-16 text as UTF-8 with its markup characters escaped.
#pragma once

#include <string>

namespace kestrel::detail {

/// Appends the text from begin on, up to a few thousand units of it, and returns where the next piece
/// begins; end when all is done. & < > and the double quote become entities, the apostrophe stays, lone
/// surrogates become U+FFFD. Never ends a piece inside a surrogate pair.
const unsigned short* appendEscaped(std::string& out, const unsigned short* begin, const unsigned short* end);

}  // namespace kestrel::detail
