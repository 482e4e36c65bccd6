// kestrel/platform/detail/Socket.h - IPv4 sockets: close-on-exec, never a SIGPIPE, interruptions retried.
//
// Every function returns -1 with errno set on failure. Addresses and ports are in host byte order.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kestrel::detail {

struct Endpoint {
    std::uint32_t address = 0;
    std::uint16_t port = 0;
};

int openStreamSocket();
int openDatagramSocket();

int bindSocket(int descriptor, const Endpoint& local);
/// Connects, and waits for the outcome when a signal interrupts the call.
int connectSocket(int descriptor, const Endpoint& remote);
int acceptSocket(int descriptor, Endpoint& peer);
/// The address that the socket is bound to.
int getLocalEndpoint(int descriptor, Endpoint& local);

/// One attempt to send on a connected socket; a closed peer is the error EPIPE, not a signal.
long sendBytes(int descriptor, const void* bytes, std::size_t size);
long sendDatagram(int descriptor, const void* bytes, std::size_t size, const Endpoint& to);
/// Receives one datagram, cut to size bytes; 0 is an empty datagram.
long receiveDatagram(int descriptor, void* bytes, std::size_t size, Endpoint* from);

/// The number of bytes that can be read without waiting.
int getBytesReady(int descriptor, int& count);

}  // namespace kestrel::detail
