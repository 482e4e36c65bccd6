#include <kestrel/platform/detail/SocketPair.h>

#include <fcntl.h>
#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace kestrel::detail {

namespace {

/// Puts off a cancellation of the calling thread while a caller's lock is held.
class CancellationPause {
public:
    CancellationPause() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_before); }
    CancellationPause(const CancellationPause&) = delete;
    CancellationPause& operator=(const CancellationPause&) = delete;
    ~CancellationPause() { pthread_setcancelstate(m_before, nullptr); }

private:
    int m_before = PTHREAD_CANCEL_ENABLE;
};

}  // namespace

SocketPair openSocketPair() {
    int ends[2] = {-1, -1};
#if defined(SOCK_CLOEXEC)
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) return {};
#else
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) return {};
    const int on = 1;
    for (const int end : ends) {
        ::fcntl(end, F_SETFD, FD_CLOEXEC);
        ::setsockopt(end, SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on);
    }
#endif
    return {ends[0], ends[1]};
}

void closeSocketPair(const SocketPair& pair) {
    const CancellationPause pause;
    if (pair.readEnd >= 0) ::close(pair.readEnd);
    if (pair.writeEnd >= 0) ::close(pair.writeEnd);
}

bool sendByte(int writeEnd, char byte) {
    const CancellationPause pause;
#if defined(MSG_NOSIGNAL)
    constexpr int flags = MSG_DONTWAIT | MSG_NOSIGNAL;
#else
    constexpr int flags = MSG_DONTWAIT;
#endif
    ssize_t count;
    do {
        count = ::send(writeEnd, &byte, 1, flags);
    } while (count < 0 && errno == EINTR);
    return count == 1;
}

bool receiveByte(int readEnd) {
    const CancellationPause pause;
    char byte;
    ssize_t count;
    do {
        count = ::recv(readEnd, &byte, 1, MSG_DONTWAIT);
    } while (count < 0 && errno == EINTR);
    return count == 1;
}

}  // namespace kestrel::detail
