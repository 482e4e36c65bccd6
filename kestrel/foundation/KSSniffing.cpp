#include <kestrel/foundation/KSString.h>
#include <kestrel/platform/detail/EncodingSniffer.h>
#include <kestrel/platform/detail/TextEncoding.h>

#include <cstring>

CFStringRef CFStringCreateWithSniffingEncoding(const char* text) {
    if (!text) return nullptr;
    const std::span bytes(text, std::strlen(text));
    for (const char* encoding : kestrel::detail::sniffEncodings(bytes))
        if (CFStringRef string = kestrel::detail::createStringNamed(encoding, bytes)) return string;
    return CFStringCreateWithCString(kCFAllocatorDefault, text, kCFStringEncodingMacRoman);
}
