#include <kestrel/net/KSTCPServer.h>

#include <kestrel/foundation/KSPrint.h>
#include <kestrel/net/KSTCPStream.h>
#include <kestrel/net/detail/SystemError.h>
#include <kestrel/platform/detail/Socket.h>

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <new>

using namespace kestrel::detail;

KSTCPServer::~KSTCPServer() { close(); }

bool KSTCPServer::bind(const KSIPSocket& local) {
    const int descriptor = openStreamSocket();
    if (descriptor < 0) {
        m_error = getSystemError();
        return false;
    }
    close();
    m_descriptor = descriptor;

    const int on = 1;
    if (::setsockopt(m_descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) < 0)
        KSPrint("Setting reuse addr failed\n");
    if (bindSocket(m_descriptor, {local.address.address, local.port}) < 0 || ::listen(m_descriptor, 5) < 0) {
        m_error = getSystemError();
        return false;
    }
    return true;
}

KSTCPStream* KSTCPServer::accept() {
    Endpoint peer;
    const int descriptor = acceptSocket(m_descriptor, peer);
    if (descriptor < 0) {
        m_error = getSystemError();
        return nullptr;
    }
    auto* const stream = new (std::nothrow) KSTCPStream(descriptor, KSIPSocket(peer.address, peer.port));
    if (!stream) {
        ::close(descriptor);
        errno = ENOMEM;
        m_error = getSystemError();
    }
    return stream;
}

KSWaitable KSTCPServer::getWaitable() const { return KSWaitable(m_descriptor); }

KSString KSTCPServer::getError() const { return m_error; }

int KSTCPServer::close() {
    const int result = m_descriptor >= 0 ? ::close(m_descriptor) : -1;
    m_descriptor = -1;
    return result;
}
