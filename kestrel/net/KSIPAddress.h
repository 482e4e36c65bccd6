// kestrel/net/KSIPAddress.h - an IPv4 address.
#pragma once

#include <kestrel/platform/Export.h>

class KSMutex;
class KSString;

/// Serialises the calls of the system resolver, which is not re-entrant. Whoever calls the resolver without
/// this library may hold it too.
KESTREL_API extern KSMutex dnsMutex;

/// A 32-bit IPv4 address in host byte order: the first octet stands in the top byte. 0 is any address.
///
/// Threads    a plain value; only setByName and getName take dnsMutex.
/// Errors     setByName answers false and keeps the address.
/// Example
///     KSIPAddress address;
///     if (!address.setByName("localhost")) KSPrint("no such host\n");
///     KSIPSocket server(address, 8080);
class KESTREL_API KSIPAddress {
public:
    constexpr KSIPAddress() = default;
    constexpr KSIPAddress(unsigned int hostOrderAddress) : address(hostOrderAddress) {}

    /// Resolves a host name or a dotted numeric text; blocks as long as the resolver does. On success stores
    /// the first IPv4 address of the answer; false, and nothing changed, for null and for an unknown name.
    bool setByName(const char* name);

    /// Sets out to the dotted-decimal text, such as 127.0.0.1; no reverse lookup. Null does nothing.
    void getName(KSString* out) const;

    friend constexpr bool operator==(const KSIPAddress&, const KSIPAddress&) = default;

    unsigned int address = 0;
};
