// kestrel/net/detail/SystemError.h - the system's text for errno.
#pragma once

#include <kestrel/foundation/KSString.h>

namespace kestrel::detail {

/// The text for the errno of the call that has just failed. Reads errno before anything else can change it.
KSString getSystemError();

}  // namespace kestrel::detail
