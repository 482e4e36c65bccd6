#include <kestrel/net/KSIPAddress.h>

#include <kestrel/concurrency/KSMutex.h>
#include <kestrel/foundation/KSString.h>

#include <arpa/inet.h>
#include <netdb.h>
#include <sys/socket.h>

#include <cstring>

KSMutex dnsMutex;

namespace {

class DnsLock {
public:
    DnsLock() { dnsMutex.lock(); }
    DnsLock(const DnsLock&) = delete;
    DnsLock& operator=(const DnsLock&) = delete;
    ~DnsLock() { dnsMutex.unlock(); }
};

}  // namespace

bool KSIPAddress::setByName(const char* name) {
    if (!name) return false;
    const DnsLock lock;
    const hostent* host = ::gethostbyname(name);
    if (!host || host->h_addrtype != AF_INET || !host->h_addr_list[0]) return false;
    in_addr first;
    std::memcpy(&first, host->h_addr_list[0], sizeof first);
    address = ntohl(first.s_addr);
    return true;
}

void KSIPAddress::getName(KSString* out) const {
    if (!out) return;
    const DnsLock lock;
    out->set(::inet_ntoa(in_addr{htonl(address)}));
}
