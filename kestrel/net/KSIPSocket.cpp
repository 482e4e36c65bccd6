#include <kestrel/net/KSIPSocket.h>

#include <kestrel/foundation/KSString.h>

#include <cstdio>

void KSIPSocket::getDisplay(KSString* out) const {
    if (!out) return;
    address.getName(out);
    char portText[8];
    std::snprintf(portText, sizeof portText, "%hu", port);
    out->push_back(':');
    out->append(portText);
}
