#include <kestrel/platform/CFBase.h>

#include <cstdio>

using kestrel::detail::PlatformObject;

CFIndex CFGetRetainCount(CFTypeRef object) {
    return object ? static_cast<const PlatformObject*>(object)->getReferenceCount() : 0;
}

void CFShow(CFTypeRef object) {
    const std::string text = object ? static_cast<const PlatformObject*>(object)->describe() : "(null)";
    std::fprintf(stderr, "%s\n", text.c_str());
}
