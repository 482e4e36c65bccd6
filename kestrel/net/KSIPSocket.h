// kestrel/net/KSIPSocket.h - an IPv4 endpoint: address and port.
#pragma once

#include <kestrel/net/KSIPAddress.h>
#include <kestrel/platform/Export.h>

class KSString;

/// An address with a port, both in host byte order.
///
/// The two orderings are deliberately conjunctive: `<` holds only when the port is smaller and the address is
/// smaller, `>` only when both are larger. Two endpoints can so be neither equal nor ordered either way; this
/// is no strict weak ordering, and endpoints must not be keys of sorted containers.
///
/// Threads    a plain value.
/// Example
///     const KSIPSocket local(KSIPAddress(0x7F000001), 8080);
///     KSTCPServer server;
///     if (!server.bind(local)) report(server.getError());
class KESTREL_API KSIPSocket {
public:
    constexpr KSIPSocket() = default;
    constexpr KSIPSocket(const KSIPAddress& ipAddress, unsigned short ipPort)
        : address(ipAddress), port(ipPort) {}

    friend constexpr bool operator==(const KSIPSocket&, const KSIPSocket&) = default;
    friend constexpr bool operator<(const KSIPSocket& a, const KSIPSocket& b) {
        return a.port < b.port && a.address.address < b.address.address;
    }
    friend constexpr bool operator>(const KSIPSocket& a, const KSIPSocket& b) { return b < a; }

    /// Unfinished on purpose: sets out to the address text and then stops the process, since it appends the
    /// colon through KSString::push_back. Format address and port yourself.
    void getDisplay(KSString* out) const;

    KSIPAddress address;
    unsigned short port = 0;
};
