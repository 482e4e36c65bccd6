// kestrel/net/KSUDPData.h - sends and receives UDP datagrams.
#pragma once

#include <kestrel/concurrency/KSWaitable.h>
#include <kestrel/foundation/KSString.h>
#include <kestrel/net/KSIPSocket.h>
#include <kestrel/platform/Export.h>

/// An IPv4 datagram socket; broadcasting is allowed on it.
///
/// Ownership  owns its descriptor, which is close-on-exec.
/// Threads    one thread at a time.
/// Errors     a false result or a count of 0, and the reason in getError, which every call clears first; a
///            count of 0 without a reason is an empty datagram. Interrupted calls go on.
/// Example
///     KSUDPData data;
///     data.bind();
///     data.send("ping", 4, KSIPSocket(KSIPAddress(0x7F000001), 9000));
class KESTREL_API KSUDPData {
public:
    KSUDPData() = default;
    KSUDPData(const KSUDPData&) = delete;
    KSUDPData& operator=(const KSUDPData&) = delete;
    ~KSUDPData();

    /// Binds to *local, giving up an earlier socket, and stores the port that is really used in local->port,
    /// so that port 0 yields the one that the system chose. Null fails with "No socket passed". On failure
    /// the object is closed.
    bool bind(KSIPSocket* local);
    /// Binds to any address and a port that the system chooses.
    bool bind();

    /// Sends one datagram. @return the number of bytes sent
    unsigned long long send(const void* bytes, unsigned long long length, const KSIPSocket& to);
    /// Blocks until a datagram arrives; what does not fit in length bytes of it is lost.
    /// @param from  when not null, receives the sender
    /// @return the number of bytes received
    unsigned long long recv(void* bytes, unsigned long long length, KSIPSocket* from);

    /// Readable when a datagram waits.
    KSWaitable getWaitable() const;
    KSString getError() const;
    void close();

private:
    int m_descriptor = -1;
    KSString m_error;
};
