#include <kestrel/serialization/KSFileWriteStream.h>

#include <kestrel/serialization/KSException.h>

#include <cstdlib>

KSFileWriteStream::KSFileWriteStream(const KSURL& url)
    : m_url(url), m_stream(CFWriteStreamCreateWithFile(kCFAllocatorDefault, m_url.cf_url())) {
    if (!m_stream) return;  // the first write will tell
    CFWriteStreamOpen(m_stream);
    const CFStreamError error = CFWriteStreamGetError(m_stream);
    const bool counts =
        error.domain == kCFStreamErrorDomainPOSIX || error.domain == kCFStreamErrorDomainMacOSStatus;
    if (counts && error.error != 0) {
        CFRelease(m_stream);
        throw KSException_WriteError();
    }
    m_buffer = static_cast<char*>(std::malloc(bufferSize));
}

KSFileWriteStream::~KSFileWriteStream() {
    if (m_stream && CFWriteStreamGetStatus(m_stream) != kCFStreamStatusNotOpen) {
        if (m_pending > 0)
            CFWriteStreamWrite(m_stream, reinterpret_cast<const UInt8*>(m_buffer),
                               static_cast<CFIndex>(m_pending));
        CFWriteStreamClose(m_stream);
    }
    CFRelease(m_stream);
    std::free(m_buffer);
}

unsigned long long KSFileWriteStream::read(void*, unsigned long long) { return 0; }

unsigned long long KSFileWriteStream::writeThrough(const void* bytes, std::uint32_t size) {
    if (!m_stream || CFWriteStreamGetStatus(m_stream) == kCFStreamStatusNotOpen)
        throw KSException_WriteError();
    const std::size_t pending = m_pending;
    m_pending = 0;  // first: what a failing flush could not write is gone
    if (pending > 0) writeToFile(m_buffer, pending);
    if (fits(size)) return buffer(bytes, size);
    writeToFile(bytes, size);
    return size;
}

void KSFileWriteStream::writeToFile(const void* bytes, std::size_t size) {
    const CFIndex written =
        CFWriteStreamWrite(m_stream, static_cast<const UInt8*>(bytes), static_cast<CFIndex>(size));
    if (written < static_cast<CFIndex>(size)) throw KSException_WriteError();
}

KSString KSFileWriteStream::getError() const { return KSString(); }
