#include <kestrel/files/KSURL.h>

#include <kestrel/platform/detail/CFOwner.h>
#include <kestrel/platform/detail/URLObject.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <utility>

using kestrel::detail::CFOwner;

namespace {

/// Wraps a text that a Copy function made; a null text gives a null string.
KSString take(CFStringRef text) { return KSString(CFOwner(text).get()); }

CFURLRef createFromPath(const char* path, bool isDirectory) {
    if (!path) return nullptr;
    return CFURLCreateFromFileSystemRepresentation(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(path),
                                                   static_cast<CFIndex>(std::strlen(path)), isDirectory);
}

CFURLRef createFromText(CFURLRef url) {
    return CFURLCreateWithString(kCFAllocatorDefault, CFURLGetString(url), nullptr);
}

}  // namespace

KSURL::KSURL(const char* path, bool isDirectory) : m_url(createFromPath(path, isDirectory)) {}

KSURL::KSURL(const char* path, unsigned int first, unsigned int second) {
    if (!path) return;
    std::string text(std::strlen(path) + 29, '\0');
    const int length = std::snprintf(text.data(), text.size(), "%s:%d:%d", path, static_cast<int>(first),
                                     static_cast<int>(second));
    if (length > 0) m_url = createFromPath(text.c_str(), false);
}

KSURL::KSURL(CFURLRef url) noexcept : m_url(static_cast<CFURLRef>(CFRetain(url))) {}

KSURL::KSURL(const KSString& text, bool isDirectory)
    : m_url(text.find(KSString("://")) >= 0
                ? CFURLCreateWithString(kCFAllocatorDefault, text.cf_str(), nullptr)
                : CFURLCreateWithFileSystemPath(kCFAllocatorDefault, text.cf_str(), kCFURLPOSIXPathStyle,
                                                isDirectory)) {}

KSURL::KSURL(const KSURL& other) : m_url(createFromText(other.m_url)) {}

KSURL::KSURL(KSURL&& other) noexcept : m_url(std::exchange(other.m_url, nullptr)) {}

KSURL& KSURL::operator=(const KSURL& other) {
    if (this != &other) CFRelease(std::exchange(m_url, createFromText(other.m_url)));
    return *this;
}

KSURL& KSURL::operator=(KSURL&& other) noexcept {
    if (this != &other) CFRelease(std::exchange(m_url, std::exchange(other.m_url, nullptr)));
    return *this;
}

KSString KSURL::getAsFileSystemString() const {
    return take(CFURLCopyFileSystemPath(m_url, kCFURLPOSIXPathStyle));
}

KSString KSURL::getPathAsFileSystemString() const {
    const CFOwner folder(CFURLCreateCopyDeletingLastPathComponent(kCFAllocatorDefault, m_url));
    return take(CFURLCopyFileSystemPath(folder.get(), kCFURLPOSIXPathStyle));
}

KSString KSURL::getContainingFolder() const { return getPathAsFileSystemString(); }

KSString KSURL::getFilename() const { return take(CFURLCopyLastPathComponent(m_url)); }

KSString KSURL::getShortFilename() const {
    const CFOwner shorter(CFURLCreateCopyDeletingPathExtension(kCFAllocatorDefault, m_url));
    return take(CFURLCopyLastPathComponent(shorter.get()));
}

KSString KSURL::getExtension() const { return take(CFURLCopyPathExtension(m_url)); }

KSString KSURL::getAsURLString() const { return KSString(CFURLGetString(m_url)); }

KSString KSURL::getAsHFSString() const { return take(CFURLCopyFileSystemPath(m_url, kCFURLHFSPathStyle)); }

char* KSURL::getString(unsigned int* length) const {
    const CFOwner path(CFURLCopyFileSystemPath(m_url, kCFURLPOSIXPathStyle));
    if (!path.get()) return nullptr;
    const CFIndex units = CFStringGetLength(path.get());
    char* const bytes = new char[static_cast<std::size_t>(units) + 10];
    CFIndex written = 0;
    CFStringGetBytes(path.get(), CFRangeMake(0, units), kCFStringEncodingMacRoman, '?', false,
                     reinterpret_cast<UInt8*>(bytes), units, &written);
    const bool isRoot = written == 1 && bytes[0] == '/';
    if (CFURLHasDirectoryPath(m_url) && !isRoot) bytes[written++] = '/';
    bytes[written] = '\0';
    if (length) *length = static_cast<unsigned int>(written);
    return bytes;
}

bool KSURL::getFSRef(FSRef* /*ref*/) const { return false; }

bool KSURL::getFSSpec(FSSpec* /*spec*/) const { return false; }

void KSURL::debugShow() const { CFShow(m_url); }
