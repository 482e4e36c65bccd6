#include <kestrel/platform/CFBase.h>

#include <kestrel/platform/detail/PlatformObject.h>

#include <cstdio>

using kestrel::detail::PlatformObject;

CFTypeRef CFRetain(CFTypeRef object) {
    if (object) static_cast<const PlatformObject*>(object)->retain();
    return object;
}

void CFRelease(CFTypeRef object) {
    if (object) static_cast<const PlatformObject*>(object)->release();
}

CFIndex CFGetRetainCount(CFTypeRef object) {
    return object ? static_cast<const PlatformObject*>(object)->getReferenceCount() : 0;
}

void CFShow(CFTypeRef object) {
    const std::string text = object ? static_cast<const PlatformObject*>(object)->describe() : "(null)";
    std::fprintf(stderr, "%s\n", text.c_str());
}
