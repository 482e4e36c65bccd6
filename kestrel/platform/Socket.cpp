#include <kestrel/platform/detail/Socket.h>

#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace kestrel::detail {

namespace {

sockaddr_in toSystem(const Endpoint& endpoint) {
    sockaddr_in system{};
    system.sin_family = AF_INET;
    system.sin_addr.s_addr = htonl(endpoint.address);
    system.sin_port = htons(endpoint.port);
    return system;
}

Endpoint fromSystem(const sockaddr_in& system) {
    return {ntohl(system.sin_addr.s_addr), ntohs(system.sin_port)};
}

/// Calls again while a signal interrupts.
template <class Call>
auto retrying(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR) result = call();
    return result;
}

#if defined(__APPLE__)

constexpr int sendFlags = 0;

int prepare(int descriptor) {
    if (descriptor < 0) return descriptor;
    const int on = 1;
    ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    ::setsockopt(descriptor, SOL_SOCKET, SO_NOSIGPIPE, &on, sizeof on);
    return descriptor;
}

int openSocket(int type) { return prepare(::socket(AF_INET, type, 0)); }

int acceptPrepared(int descriptor, sockaddr* peer, socklen_t* size) {
    return prepare(::accept(descriptor, peer, size));
}

#else

constexpr int sendFlags = MSG_NOSIGNAL;

int openSocket(int type) { return ::socket(AF_INET, type | SOCK_CLOEXEC, 0); }

int acceptPrepared(int descriptor, sockaddr* peer, socklen_t* size) {
    return ::accept4(descriptor, peer, size, SOCK_CLOEXEC);
}

#endif

}  // namespace

int openStreamSocket() { return openSocket(SOCK_STREAM); }

int openDatagramSocket() { return openSocket(SOCK_DGRAM); }

int bindSocket(int descriptor, const Endpoint& local) {
    const sockaddr_in system = toSystem(local);
    return ::bind(descriptor, reinterpret_cast<const sockaddr*>(&system), sizeof system);
}

int connectSocket(int descriptor, const Endpoint& remote) {
    const sockaddr_in system = toSystem(remote);
    if (::connect(descriptor, reinterpret_cast<const sockaddr*>(&system), sizeof system) == 0) return 0;
    if (errno != EINTR) return -1;

    // The connection goes on being made; a second connect would only say so.
    pollfd waiting{descriptor, POLLOUT, 0};
    if (retrying([&] { return ::poll(&waiting, 1, -1); }) < 0) return -1;
    int error = 0;
    socklen_t size = sizeof error;
    if (::getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &size) < 0) return -1;
    errno = error;
    return error == 0 ? 0 : -1;
}

int acceptSocket(int descriptor, Endpoint& peer) {
    sockaddr_in system{};
    const int accepted = retrying([&] {
        socklen_t size = sizeof system;
        return acceptPrepared(descriptor, reinterpret_cast<sockaddr*>(&system), &size);
    });
    if (accepted >= 0) peer = fromSystem(system);
    return accepted;
}

int getLocalEndpoint(int descriptor, Endpoint& local) {
    sockaddr_in system{};
    socklen_t size = sizeof system;
    if (::getsockname(descriptor, reinterpret_cast<sockaddr*>(&system), &size) < 0) return -1;
    local = fromSystem(system);
    return 0;
}

long sendBytes(int descriptor, const void* bytes, std::size_t size) {
    return retrying([&] { return ::send(descriptor, bytes, size, sendFlags); });
}

long sendDatagram(int descriptor, const void* bytes, std::size_t size, const Endpoint& to) {
    const sockaddr_in system = toSystem(to);
    return retrying([&] {
        return ::sendto(descriptor, bytes, size, sendFlags, reinterpret_cast<const sockaddr*>(&system),
                        sizeof system);
    });
}

long receiveDatagram(int descriptor, void* bytes, std::size_t size, Endpoint* from) {
    if (!from) return retrying([&] { return ::recv(descriptor, bytes, size, MSG_WAITALL); });
    sockaddr_in system{};
    const long count = retrying([&] {
        socklen_t addressSize = sizeof system;
        return ::recvfrom(descriptor, bytes, size, MSG_WAITALL, reinterpret_cast<sockaddr*>(&system),
                          &addressSize);
    });
    if (count >= 0) *from = fromSystem(system);
    return count;
}

int getBytesReady(int descriptor, int& count) {
    return retrying([&] { return ::ioctl(descriptor, FIONREAD, &count); });
}

}  // namespace kestrel::detail
