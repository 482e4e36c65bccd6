// kestrel/imaging/detail/BlendNames.h - names out of a localised menu text.
#pragma once

#include <kestrel/foundation/KSString.h>

#include <vector>

namespace kestrel::detail {

/// Splits at every "|"; without one, at every ";"; without either, the whole text is the single name. Pieces
/// are not trimmed and may be empty.
std::vector<KSString> splitMenuString(const KSString& menu);

}  // namespace kestrel::detail
