// kestrel/net/KSTCPStream.h - a connected TCP byte stream.
#pragma once

#include <kestrel/concurrency/KSWaitable.h>
#include <kestrel/foundation/KSString.h>
#include <kestrel/net/KSIPSocket.h>
#include <kestrel/platform/Export.h>
#include <kestrel/serialization/KSStream.h>

/// A blocking IPv4 connection that is also a KSStream, so that text can be written to it with operator<<.
///
/// Ownership  owns its descriptor, which is close-on-exec.
/// Threads    one thread reads and one may write at the same time; everything else by one thread at a time.
/// Errors     a short count or a false result, and the reason in getError, which stays until the next
///            failure. A peer that has gone is an error of write, never a signal. Interrupted calls go on.
/// Example
///     KSTCPStream stream;
///     if (stream.open(KSIPSocket(KSIPAddress(0x7F000001), 8080))) stream << "GET / HTTP/1.0\r\n\r\n";
///     unsigned long long got = stream.read(buffer, sizeof buffer);
class KESTREL_API KSTCPStream : public KSStream {
public:
    KSTCPStream() = default;
    /// Takes over a connected descriptor.
    KSTCPStream(int descriptor, const KSIPSocket& peer);
    KSTCPStream(const KSTCPStream&) = delete;
    KSTCPStream& operator=(const KSTCPStream&) = delete;
    ~KSTCPStream() override;

    /// Connects to remote, giving up an earlier connection. On failure the stream is closed.
    bool open(const KSIPSocket& remote);

    /// Reads until length bytes have arrived, the peer closes ("Remote machine closed connection") or an
    /// error occurs. Lengths count as signed 32-bit numbers: one below 1 reads nothing.
    /// @return the number of bytes read
    unsigned long long read(void* bytes, unsigned long long length) override;

    /// Writes until length bytes are sent or an error occurs; any length.
    /// @return the number of bytes written
    unsigned long long write(const void* bytes, unsigned long long length) override;

    /// Stores the number of bytes that can be read without waiting. False for null, or with an error text.
    bool getBytesAvail(unsigned long long* count);

    /// Readable when bytes have arrived or the peer has closed.
    KSWaitable getWaitable() const;
    KSString getError() const override;
    const KSIPSocket& getPeer() const { return m_peer; }

    void close();

private:
    int m_descriptor = -1;
    KSIPSocket m_peer;
    KSString m_error;
};
