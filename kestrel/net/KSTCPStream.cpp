#include <kestrel/net/KSTCPStream.h>

#include <kestrel/net/detail/SystemError.h>
#include <kestrel/platform/detail/FileDescriptor.h>
#include <kestrel/platform/detail/Socket.h>

#include <unistd.h>

#include <cstddef>
#include <cstdint>

using namespace kestrel::detail;

KSTCPStream::KSTCPStream(int descriptor, const KSIPSocket& peer) : m_descriptor(descriptor), m_peer(peer) {}

KSTCPStream::~KSTCPStream() { close(); }

bool KSTCPStream::open(const KSIPSocket& remote) {
    close();
    m_descriptor = openStreamSocket();
    if (m_descriptor < 0 || connectSocket(m_descriptor, {remote.address.address, remote.port}) < 0) {
        m_error = getSystemError();
        close();
        return false;
    }
    m_peer = remote;
    return true;
}

unsigned long long KSTCPStream::read(void* bytes, unsigned long long length) {
    const auto wanted = static_cast<std::int32_t>(static_cast<std::uint32_t>(length));
    if (wanted < 1) return 0;
    char* const start = static_cast<char*>(bytes);
    std::size_t got = 0;
    while (got < static_cast<std::size_t>(wanted)) {
        const long count = readRetrying(m_descriptor, start + got, static_cast<std::size_t>(wanted) - got);
        if (count < 0) {
            m_error = getSystemError();
            break;
        }
        if (count == 0) {
            m_error.set("Remote machine closed connection");
            break;
        }
        got += static_cast<std::size_t>(count);
    }
    return got;
}

unsigned long long KSTCPStream::write(const void* bytes, unsigned long long length) {
    const char* const start = static_cast<const char*>(bytes);
    std::size_t sent = 0;
    while (sent < length) {
        const long count = sendBytes(m_descriptor, start + sent, length - sent);
        if (count <= 0) {
            m_error = getSystemError();
            break;
        }
        sent += static_cast<std::size_t>(count);
    }
    return sent;
}

bool KSTCPStream::getBytesAvail(unsigned long long* count) {
    if (!count) return false;
    int ready = 0;
    if (getBytesReady(m_descriptor, ready) < 0) {
        m_error = getSystemError();
        return false;
    }
    *count = static_cast<unsigned long long>(ready);
    return true;
}

KSWaitable KSTCPStream::getWaitable() const { return KSWaitable(m_descriptor); }

KSString KSTCPStream::getError() const { return m_error; }

void KSTCPStream::close() {
    if (m_descriptor >= 0) ::close(m_descriptor);
    m_descriptor = -1;
}
