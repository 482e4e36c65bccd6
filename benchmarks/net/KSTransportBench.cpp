// TCP and UDP over loopback beside the plain system calls: each pair of rows does the same work.
#include "../Pinned.h"

#include <kestrel/net/KSTCPServer.h>
#include <kestrel/net/KSTCPStream.h>
#include <kestrel/net/KSUDPData.h>

#include <benchmark/benchmark.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

namespace {

constexpr KSIPAddress loopback(0x7F000001);

/// Two connected streams, and a way to use their descriptors without the classes.
struct Connection {
    Connection() {
        KSTCPServer server;
        unsigned short port = 31000;
        while (!server.bind(KSIPSocket(loopback, port)) && port < 39999) ++port;
        client.open(KSIPSocket(loopback, port));
        accepted.reset(server.accept());
    }
    static int descriptor(const KSTCPStream& stream) { return stream.getWaitable().getDescriptor(); }

    KSTCPStream client;
    std::unique_ptr<KSTCPStream> accepted;
};

bool readAll(int descriptor, char* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t count = ::read(descriptor, bytes, size);
        if (count <= 0) return false;
        bytes += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

/// One byte there and back, the other side on a thread of its own, on the same processor or on another.
void pingPong(benchmark::State& state, bool raw) {
    Connection connection;
    KSTCPStream& peer = *connection.accepted;
    std::thread other([&] {
        const Pinned pinned(state.range(0) - 1);
        char byte;
        if (raw) {
            const int descriptor = Connection::descriptor(peer);
            while (::read(descriptor, &byte, 1) == 1 && ::send(descriptor, &byte, 1, MSG_NOSIGNAL) == 1) {
            }
        } else {
            while (peer.read(&byte, 1) == 1 && peer.write(&byte, 1) == 1) {
            }
        }
    });
    const int descriptor = Connection::descriptor(connection.client);
    const Pinned pinned(0);
    char byte = 'x';
    bool good = true;
    for (auto _ : state)
        good &= raw ? ::send(descriptor, &byte, 1, MSG_NOSIGNAL) == 1 && ::read(descriptor, &byte, 1) == 1
                    : connection.client.write(&byte, 1) == 1 && connection.client.read(&byte, 1) == 1;
    if (!good || byte != 'x') state.SkipWithError("the byte did not come back");
    connection.client.close();
    other.join();
}

/// 64 KiB at a time, the other side reading all of it.
void bulk(benchmark::State& state, bool raw) {
    Connection connection;
    KSTCPStream& peer = *connection.accepted;
    constexpr std::size_t size = 65536;
    std::thread other([&] {
        const Pinned pinned(1);
        std::vector<char> bytes(size);
        if (raw) {
            while (readAll(Connection::descriptor(peer), bytes.data(), size)) {
            }
        } else {
            while (peer.read(bytes.data(), size) == size) {
            }
        }
    });
    const Pinned pinned(0);
    const std::vector<char> bytes(size, 'x');
    const int descriptor = Connection::descriptor(connection.client);
    bool good = true;
    for (auto _ : state)
        good &= raw ? ::send(descriptor, bytes.data(), size, MSG_NOSIGNAL) == static_cast<ssize_t>(size)
                    : connection.client.write(bytes.data(), size) == size;
    if (!good) state.SkipWithError("a send came up short");
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
    connection.client.close();
    other.join();
}

/// One datagram sent and received on one thread.
void datagram(benchmark::State& state, bool raw) {
    const Pinned pinned(0);
    KSUDPData from;
    KSUDPData to;
    KSIPSocket address(loopback, 0);
    from.bind();
    to.bind(&address);
    sockaddr_in system{};
    system.sin_family = AF_INET;
    system.sin_addr.s_addr = htonl(address.address.address);
    system.sin_port = htons(address.port);
    const int sender = from.getWaitable().getDescriptor();
    const int receiver = to.getWaitable().getDescriptor();
    char bytes[512] = {};
    bool good = true;
    for (auto _ : state)
        good &= raw ? ::sendto(sender, bytes, sizeof bytes, 0, reinterpret_cast<sockaddr*>(&system),
                               sizeof system) == sizeof bytes &&
                          ::recv(receiver, bytes, sizeof bytes, MSG_WAITALL) == sizeof bytes
                    : from.send(bytes, sizeof bytes, address) == sizeof bytes &&
                          to.recv(bytes, sizeof bytes, nullptr) == sizeof bytes;
    if (!good) state.SkipWithError("a datagram was lost");
}

BENCHMARK_CAPTURE(pingPong, plain, true)->ArgName("cpus")->Arg(1)->Arg(2)->UseRealTime();
BENCHMARK_CAPTURE(pingPong, kestrel, false)->ArgName("cpus")->Arg(1)->Arg(2)->UseRealTime();
BENCHMARK_CAPTURE(bulk, plain, true)->UseRealTime();
BENCHMARK_CAPTURE(bulk, kestrel, false)->UseRealTime();
BENCHMARK_CAPTURE(datagram, plain, true);
BENCHMARK_CAPTURE(datagram, kestrel, false);

}  // namespace
