#include <kestrel/net/KSUDPData.h>

#include <kestrel/net/detail/SystemError.h>
#include <kestrel/platform/detail/Socket.h>

#include <sys/socket.h>
#include <unistd.h>

using namespace kestrel::detail;

KSUDPData::~KSUDPData() { close(); }

bool KSUDPData::bind(KSIPSocket* local) {
    m_error.clear();
    close();
    if (!local) {
        m_error.set("No socket passed");
        return false;
    }
    m_descriptor = openDatagramSocket();
    const int on = 1;
    Endpoint bound;
    if (m_descriptor < 0 || ::setsockopt(m_descriptor, SOL_SOCKET, SO_BROADCAST, &on, sizeof on) < 0 ||
        bindSocket(m_descriptor, {local->address.address, local->port}) < 0 ||
        getLocalEndpoint(m_descriptor, bound) < 0) {
        m_error = getSystemError();
        close();
        return false;
    }
    local->port = bound.port;
    return true;
}

bool KSUDPData::bind() {
    KSIPSocket any;
    return bind(&any);
}

unsigned long long KSUDPData::send(const void* bytes, unsigned long long length, const KSIPSocket& to) {
    m_error.clear();
    const long count = sendDatagram(m_descriptor, bytes, length, {to.address.address, to.port});
    if (count < 0) m_error = getSystemError();
    return count < 0 ? 0 : static_cast<unsigned long long>(count);
}

unsigned long long KSUDPData::recv(void* bytes, unsigned long long length, KSIPSocket* from) {
    m_error.clear();
    Endpoint sender;
    const long count = receiveDatagram(m_descriptor, bytes, length, from ? &sender : nullptr);
    if (count < 0) {
        m_error = getSystemError();
        return 0;
    }
    if (from) *from = KSIPSocket(sender.address, sender.port);
    return static_cast<unsigned long long>(count);
}

KSWaitable KSUDPData::getWaitable() const { return KSWaitable(m_descriptor); }

KSString KSUDPData::getError() const { return m_error; }

void KSUDPData::close() {
    if (m_descriptor >= 0) ::close(m_descriptor);
    m_descriptor = -1;
}
