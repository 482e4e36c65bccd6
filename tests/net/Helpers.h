// tests/net/Helpers.h - what the tests of streams and datagrams share.
#pragma once

#include "../concurrency/Helpers.h"

#include <kestrel/foundation/KSString.h>
#include <kestrel/net/KSIPAddress.h>

#include <cstdlib>
#include <memory>
#include <string>

inline constexpr KSIPAddress loopback(0x7F000001);

inline std::string textOf(const KSString& string) {
    const std::unique_ptr<char, decltype(&std::free)> text(string.createUTF8Str(), &std::free);
    return text ? text.get() : "";
}
