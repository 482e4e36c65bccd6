#include <kestrel/platform/CFBundle.h>

#include <kestrel/platform/detail/StringObject.h>

bool CFBundleAddSearchFolder(const char* path) { return path != nullptr; }

CFBundleRef CFBundleGetBundleWithIdentifier(CFStringRef) { return nullptr; }

CFStringRef CFBundleGetIdentifier(CFBundleRef) { return nullptr; }

CFStringRef CFBundleCopyLocalizedString(CFBundleRef, CFStringRef key, CFStringRef value, CFStringRef) {
    const bool hasValue = CFStringGetLength(value) > 0;
    return CFStringCreateCopy(kCFAllocatorDefault, hasValue || !key ? value : key);
}
