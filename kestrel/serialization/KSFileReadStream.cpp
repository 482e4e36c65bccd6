#include <kestrel/serialization/KSFileReadStream.h>

#include <cstdint>

KSFileReadStream::KSFileReadStream(const KSURL& url)
    : m_url(url), m_stream(CFReadStreamCreateWithFile(kCFAllocatorDefault, m_url.cf_url())) {
    if (m_stream) CFReadStreamOpen(m_stream);
}

KSFileReadStream::~KSFileReadStream() {
    if (m_stream) CFReadStreamClose(m_stream);
    CFRelease(m_stream);
}

unsigned long long KSFileReadStream::read(void* bytes, unsigned long long length) {
    if (!m_stream) return 0;
    return static_cast<unsigned long long>(
        CFReadStreamRead(m_stream, static_cast<UInt8*>(bytes), static_cast<std::uint32_t>(length)));
}

unsigned long long KSFileReadStream::write(const void*, unsigned long long) { return 0; }

KSString KSFileReadStream::getError() const { return KSString(); }
