#include <kestrel/concurrency/KSEvent.h>

#include <kestrel/concurrency/KSWaitable.h>
#include <kestrel/platform/detail/Polling.h>
#include <kestrel/platform/detail/SocketPair.h>

KSEvent::KSEvent() {
    const kestrel::detail::SocketPair pair = kestrel::detail::openSocketPair();
    m_readEnd = pair.readEnd;
    m_writeEnd = pair.writeEnd;
}

KSEvent::~KSEvent() { kestrel::detail::closeSocketPair({m_readEnd, m_writeEnd}); }

void KSEvent::raise() {
    if (m_raised == 0) {
        kestrel::detail::sendByte(m_writeEnd, 'R');
        m_raised = 1;
    }
    unlock();
}

void KSEvent::lower() {
    if (m_raised == 1) {
        kestrel::detail::receiveByte(m_readEnd);
        m_raised = 0;
    }
    unlock();
}

int KSEvent::wait() {
    int result;
    do {
        result = kestrel::detail::waitUntilReadable(m_readEnd);
    } while (result == 4);  // the one result that is tried again; -1 with EINTR is not
    return result;
}

KSWaitable KSEvent::getWaitable() const { return KSWaitable(m_readEnd); }
