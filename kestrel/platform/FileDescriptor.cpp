#include <kestrel/platform/detail/FileDescriptor.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace kestrel::detail {

namespace {

int openRetrying(const char* path, int flags) {
    int descriptor;
    do {
        descriptor = ::open(path, flags | O_CLOEXEC, 0666);
    } while (descriptor < 0 && errno == EINTR);
    return descriptor;
}

}  // namespace

int openForReading(const char* path) { return openRetrying(path, O_RDONLY); }

int openForWriting(const char* path) { return openRetrying(path, O_WRONLY | O_CREAT | O_TRUNC); }

std::FILE* openFreshFile(const char* path) {
    const int descriptor = openRetrying(path, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW);
    if (descriptor < 0) return nullptr;
    std::FILE* stream = ::fdopen(descriptor, "w");
    if (!stream) ::close(descriptor);
    return stream;
}

long readRetrying(int descriptor, void* bytes, std::size_t size) {
    long count;
    do {
        count = ::read(descriptor, bytes, size);
    } while (count < 0 && errno == EINTR);
    return count;
}

long writeAll(int descriptor, const void* bytes, std::size_t size) {
    const char* next = static_cast<const char*>(bytes);
    std::size_t left = size;
    while (left > 0) {
        const long count = ::write(descriptor, next, left);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return left == size ? -1 : static_cast<long>(size - left);
        next += count;
        left -= static_cast<std::size_t>(count);
    }
    return static_cast<long>(size);
}

}  // namespace kestrel::detail
