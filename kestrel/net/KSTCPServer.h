// kestrel/net/KSTCPServer.h - listens for TCP connections.
#pragma once

#include <kestrel/concurrency/KSWaitable.h>
#include <kestrel/foundation/KSString.h>
#include <kestrel/net/KSIPSocket.h>
#include <kestrel/platform/Export.h>

class KSTCPStream;

/// A listening IPv4 socket.
///
/// Ownership  owns its descriptor, which is close-on-exec; accepted streams belong to the caller.
/// Threads    one thread at a time; several threads may block in accept of one server.
/// Errors     a false or null result, and the reason in getError, which stays until the next failure.
/// Example
///     KSTCPServer server;
///     server.bind(KSIPSocket(KSIPAddress(0x7F000001), 8080));
///     std::unique_ptr<KSTCPStream> client(server.accept());
class KESTREL_API KSTCPServer {
public:
    KSTCPServer() = default;
    KSTCPServer(const KSTCPServer&) = delete;
    KSTCPServer& operator=(const KSTCPServer&) = delete;
    ~KSTCPServer();

    /// Listens on local, address 0 for all interfaces, port 0 for one that the system chooses. The address
    /// may be taken again at once after an earlier server on it has gone. Binding again gives up the earlier
    /// descriptor. After a failure to bind, the unusable descriptor stays until the next bind, close or end.
    bool bind(const KSIPSocket& local);

    /// Blocks until a client connects; the stream belongs to the caller (delete). Null on failure. A signal
    /// does not end the call.
    KSTCPStream* accept();

    /// Readable when a connection waits.
    KSWaitable getWaitable() const;
    KSString getError() const;

    /// Closes the descriptor; the result of the system's close, -1 when there is none.
    int close();

private:
    int m_descriptor = -1;
    KSString m_error;
};
