#include <kestrel/platform/CFStream.h>

#include <kestrel/platform/detail/FileDescriptor.h>
#include <kestrel/platform/detail/URLObject.h>

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <new>
#include <optional>
#include <string>
#include <utility>

using kestrel::detail::fileSystemPath;
using kestrel::detail::PlatformObject;

namespace {

/// What both directions share: a path, a descriptor, a status and the last error.
class FileStream : public PlatformObject {
public:
    explicit FileStream(std::string filePath) : m_path(std::move(filePath)) {}
    ~FileStream() override { close(); }
    std::string describe() const override { return "<stream on " + m_path + ">"; }

    bool open(int (*openFile)(const char*)) {
        if (m_status != kCFStreamStatusNotOpen) return false;
        m_descriptor = openFile(m_path.c_str());
        if (m_descriptor < 0)
            fail();
        else
            m_status = kCFStreamStatusOpen;
        return m_descriptor >= 0;
    }
    /// Records the outcome of a call that should have moved wanted bytes.
    CFIndex account(long count, std::size_t wanted) {
        if (count < 0 || static_cast<std::size_t>(count) < wanted) fail();
        return count;
    }
    void setAtEnd() { m_status = kCFStreamStatusAtEnd; }
    void close() {
        if (m_descriptor < 0) return;
        ::close(m_descriptor);
        m_descriptor = -1;
        m_status = kCFStreamStatusClosed;
    }
    int getDescriptor() const { return m_descriptor; }
    CFStreamStatus getStatus() const { return m_status; }
    CFStreamError getError() const { return m_error; }

private:
    void fail() {
        m_error = {kCFStreamErrorDomainPOSIX, errno};
        m_status = kCFStreamStatusError;
    }

    std::string m_path;
    int m_descriptor = -1;
    CFStreamStatus m_status = kCFStreamStatusNotOpen;
    CFStreamError m_error{0, 0};
};

template <class Stream>
Stream* create(CFURLRef url) {
    std::optional<std::string> path = fileSystemPath(url);
    return path ? new (std::nothrow) Stream(std::move(*path)) : nullptr;
}

}  // namespace

struct __CFReadStream final : FileStream {
    using FileStream::FileStream;
};
struct __CFWriteStream final : FileStream {
    using FileStream::FileStream;
};

CFReadStreamRef CFReadStreamCreateWithFile(CFAllocatorRef, CFURLRef url) {
    return create<__CFReadStream>(url);
}

Boolean CFReadStreamOpen(CFReadStreamRef stream) {
    return stream && stream->open(kestrel::detail::openForReading);
}

CFIndex CFReadStreamRead(CFReadStreamRef stream, UInt8* bytes, CFIndex length) {
    if (!stream || stream->getDescriptor() < 0 || length < 0) return -1;
    const long count =
        kestrel::detail::readRetrying(stream->getDescriptor(), bytes, static_cast<std::size_t>(length));
    if (count == 0 && length > 0) stream->setAtEnd();
    return stream->account(count, 0);
}

void CFReadStreamClose(CFReadStreamRef stream) {
    if (stream) stream->close();
}

CFStreamStatus CFReadStreamGetStatus(CFReadStreamRef stream) {
    return stream ? stream->getStatus() : kCFStreamStatusNotOpen;
}

CFStreamError CFReadStreamGetError(CFReadStreamRef stream) {
    return stream ? stream->getError() : CFStreamError{0, 0};
}

CFWriteStreamRef CFWriteStreamCreateWithFile(CFAllocatorRef, CFURLRef url) {
    return create<__CFWriteStream>(url);
}

Boolean CFWriteStreamOpen(CFWriteStreamRef stream) {
    return stream && stream->open(kestrel::detail::openForWriting);
}

CFIndex CFWriteStreamWrite(CFWriteStreamRef stream, const UInt8* bytes, CFIndex length) {
    if (!stream || stream->getDescriptor() < 0 || length < 0) return -1;
    const auto size = static_cast<std::size_t>(length);
    return stream->account(kestrel::detail::writeAll(stream->getDescriptor(), bytes, size), size);
}

void CFWriteStreamClose(CFWriteStreamRef stream) {
    if (stream) stream->close();
}

CFStreamStatus CFWriteStreamGetStatus(CFWriteStreamRef stream) {
    return stream ? stream->getStatus() : kCFStreamStatusNotOpen;
}

CFStreamError CFWriteStreamGetError(CFWriteStreamRef stream) {
    return stream ? stream->getError() : CFStreamError{0, 0};
}
