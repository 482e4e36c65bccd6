// A mutex, a wait on descriptors and a TCP connection, on other libraries and ours beside them so that one run
// gives the ratios.
#include "../Pinned.h"

#include <kestrel/concurrency/KSMutex.h>
#include <kestrel/concurrency/KSWaitable.h>
#include <kestrel/net/KSTCPStream.h>

#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <netinet/in.h>
#include <poll.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <thread>
#include <vector>

#if defined(KESTREL_PEER_GIO)
#include <gio/gio.h>
#endif
#if defined(KESTREL_PEER_QTNETWORK)
#include <QMutex>
#include <QTcpSocket>
#endif
#if defined(KESTREL_PEER_POCO)
#include <Poco/Mutex.h>
#include <Poco/Net/PollSet.h>
#include <Poco/Net/StreamSocket.h>
#include <Poco/Net/StreamSocketImpl.h>
#endif

namespace {

// Each library is a struct: a Mutex, a List of descriptors to wait on, and a Stream that takes over a connected
// descriptor. What a library lacks it leaves out.

struct Plain {
    struct Mutex {
        void lock() { pthread_mutex_lock(&mutex); }
        void unlock() { pthread_mutex_unlock(&mutex); }
        pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    };
    struct List {
        explicit List(const std::vector<int>& descriptors) {
            for (const int descriptor : descriptors) entries.push_back({descriptor, POLLIN, 0});
        }
        void wait() { poll(entries.data(), entries.size(), -1); }
        std::vector<pollfd> entries;
    };
    struct Stream {
        explicit Stream(int connected) : descriptor(connected) {}
        Stream(const Stream&) = delete;
        Stream& operator=(const Stream&) = delete;
        ~Stream() { ::close(descriptor); }
        bool put(char byte) { return ::send(descriptor, &byte, 1, MSG_NOSIGNAL) == 1; }
        bool take(char& byte) { return ::read(descriptor, &byte, 1) == 1; }
        int descriptor;
    };
};

struct Kestrel {
    using Mutex = KSMutex;
    struct List {
        explicit List(const std::vector<int>& descriptors)
            : entries(descriptors.begin(), descriptors.end()) {}
        void wait() { KSWaitable::wait(entries); }
        std::vector<KSWaitable> entries;
    };
    struct Stream {
        explicit Stream(int descriptor) : stream(descriptor, KSIPSocket()) {}
        bool put(char byte) { return stream.write(&byte, 1) == 1; }
        bool take(char& byte) { return stream.read(&byte, 1) == 1; }
        KSTCPStream stream;
    };
};

#if defined(KESTREL_PEER_GIO)
struct Glib {
    struct Mutex {
        Mutex() { g_mutex_init(&mutex); }
        Mutex(const Mutex&) = delete;
        Mutex& operator=(const Mutex&) = delete;
        ~Mutex() { g_mutex_clear(&mutex); }
        void lock() { g_mutex_lock(&mutex); }
        void unlock() { g_mutex_unlock(&mutex); }
        GMutex mutex;
    };
    struct List {
        explicit List(const std::vector<int>& descriptors) {
            for (const int descriptor : descriptors) entries.push_back({descriptor, G_IO_IN, 0});
        }
        void wait() { g_poll(entries.data(), static_cast<guint>(entries.size()), -1); }
        std::vector<GPollFD> entries;
    };
    struct Stream {
        explicit Stream(int descriptor) : socket(g_socket_new_from_fd(descriptor, nullptr)) {}
        Stream(const Stream&) = delete;
        Stream& operator=(const Stream&) = delete;
        ~Stream() { g_object_unref(socket); }
        bool put(char byte) { return g_socket_send(socket, &byte, 1, nullptr, nullptr) == 1; }
        bool take(char& byte) { return g_socket_receive(socket, &byte, 1, nullptr, nullptr) == 1; }
        GSocket* socket;
    };
};
#endif

#if defined(KESTREL_PEER_QTNETWORK)
struct QtLibrary {
    using Mutex = QMutex;
    struct Stream {
        explicit Stream(int descriptor) { socket.setSocketDescriptor(descriptor); }
        bool put(char byte) { return socket.write(&byte, 1) == 1 && socket.waitForBytesWritten(); }
        bool take(char& byte) {
            return (socket.bytesAvailable() > 0 || socket.waitForReadyRead(-1)) && socket.read(&byte, 1) == 1;
        }
        QTcpSocket socket;
    };
};
#endif

#if defined(KESTREL_PEER_POCO)
struct PocoLibrary {
    using Mutex = Poco::FastMutex;
    using Socket = Poco::Net::StreamSocket;
    static Socket wrap(int descriptor) { return Socket(new Poco::Net::StreamSocketImpl(descriptor)); }
    struct List {
        explicit List(const std::vector<int>& descriptors) {
            for (const int descriptor : descriptors) entries.push_back(wrap(dup(descriptor)));
        }
        void wait() {
            auto readable = entries;  // the call leaves only the readable ones
            Poco::Net::Socket::SocketList none, broken;
            Poco::Net::Socket::select(readable, none, broken, Poco::Timespan(10, 0));
        }
        Poco::Net::Socket::SocketList entries;
    };
    /// Stays with the kernel from one wait to the next.
    struct StandingList {
        explicit StandingList(const std::vector<int>& descriptors) {
            for (const int descriptor : descriptors)
                entries.add(wrap(dup(descriptor)), Poco::Net::PollSet::POLL_READ);
        }
        void wait() { entries.poll(Poco::Timespan(10, 0)); }
        Poco::Net::PollSet entries;
    };
    struct Stream {
        explicit Stream(int descriptor) : socket(wrap(descriptor)) {}
        bool put(char byte) { return socket.sendBytes(&byte, 1) == 1; }
        bool take(char& byte) { return socket.receiveBytes(&byte, 1) == 1; }
        Socket socket;
    };
};
struct PocoStanding {
    using List = PocoLibrary::StandingList;
};
#endif

template <class Library>
void lockAndUnlock(benchmark::State& state) {
    typename Library::Mutex mutex;
    long guarded = 0;
    benchmark::DoNotOptimize(&guarded);
    for (auto _ : state) {
        mutex.lock();
        ++guarded;
        mutex.unlock();
    }
    if (guarded != static_cast<long>(state.iterations())) state.SkipWithError("lost a turn");
}

/// Sockets that nothing ever reaches, and as the last one that is readable.
template <class Library>
void waitOnMany(benchmark::State& state) {
    rlimit limit;
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0 || write(ends[1], "x", 1) != 1)
        return state.SkipWithError("no socket pair");
    std::vector<int> descriptors;
    for (std::int64_t i = 1; i < state.range(0); ++i)
        descriptors.push_back(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    descriptors.push_back(ends[0]);
    {
        typename Library::List list(descriptors);
        const Pinned pinned(0);
        for (auto _ : state) list.wait();  // would hang, or take seconds, if the last were not seen
    }
    for (const int descriptor : descriptors) close(descriptor);
    close(ends[1]);
}

/// Two connected sockets.
struct Connection {
    Connection() {
        const int listening = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* const any = reinterpret_cast<sockaddr*>(&address);
        ends[0] = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        isGood = bind(listening, any, size) == 0 && listen(listening, 1) == 0 &&
                 getsockname(listening, any, &size) == 0 && connect(ends[0], any, size) == 0;
        ends[1] = isGood ? accept(listening, nullptr, nullptr) : -1;
        close(listening);
    }
    int ends[2];
    bool isGood;
};

/// One byte there and back, the other side on a thread of its own on the same processor.
template <class Library>
void pingPong(benchmark::State& state) {
    const Connection connection;
    if (!connection.isGood) return state.SkipWithError("no connection");
    const Pinned pinned(0);
    std::thread other([&] {
        typename Library::Stream stream(connection.ends[1]);
        for (char byte; stream.take(byte) && stream.put(static_cast<char>(byte + 1));) {
        }
    });
    bool isGood = true;
    {
        typename Library::Stream stream(connection.ends[0]);
        char byte = 0;
        for (auto _ : state) {
            const char sent = byte;
            isGood = isGood && stream.put(sent) && stream.take(byte) && byte == static_cast<char>(sent + 1);
        }
    }
    other.join();
    if (!isGood) state.SkipWithError("the wrong byte came back");
}

BENCHMARK(lockAndUnlock<Plain>);
BENCHMARK(lockAndUnlock<Kestrel>);
BENCHMARK(waitOnMany<Plain>)->RangeMultiplier(10)->Range(1, 1000);
BENCHMARK(waitOnMany<Kestrel>)->RangeMultiplier(10)->Range(1, 1000);
BENCHMARK(pingPong<Plain>)->UseRealTime();
BENCHMARK(pingPong<Kestrel>)->UseRealTime();
#if defined(KESTREL_PEER_GIO)
BENCHMARK(lockAndUnlock<Glib>);
BENCHMARK(waitOnMany<Glib>)->RangeMultiplier(10)->Range(1, 1000);
BENCHMARK(pingPong<Glib>)->UseRealTime();
#endif
#if defined(KESTREL_PEER_QTNETWORK)
BENCHMARK(lockAndUnlock<QtLibrary>);
BENCHMARK(pingPong<QtLibrary>)->UseRealTime();
#endif
#if defined(KESTREL_PEER_POCO)
BENCHMARK(lockAndUnlock<PocoLibrary>);
BENCHMARK(waitOnMany<PocoLibrary>)->RangeMultiplier(10)->Range(1, 1000);
BENCHMARK(waitOnMany<PocoStanding>)->RangeMultiplier(10)->Range(1, 1000);
BENCHMARK(pingPong<PocoLibrary>)->UseRealTime();
#endif

}  // namespace
