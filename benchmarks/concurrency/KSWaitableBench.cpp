// The wait on a list beside poll, and the event beside a bare socket pair.
#include <kestrel/concurrency/KSEvent.h>
#include <kestrel/concurrency/KSThread.h>
#include <kestrel/concurrency/KSWaitable.h>

#include <benchmark/benchmark.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstddef>
#include <ctime>
#include <vector>

namespace {

/// Sockets that nothing ever reaches, and an event, the last, that is raised.
class Descriptors {
public:
    explicit Descriptors(std::size_t count) {
        rlimit limit;
        getrlimit(RLIMIT_NOFILE, &limit);
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &limit);
        for (std::size_t i = 1; i < count; ++i) {
            m_quiet.push_back(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
            m_isComplete = m_isComplete && m_quiet.back() >= 0;
        }
        m_event.lock();
        m_event.raise();
    }
    Descriptors(const Descriptors&) = delete;
    Descriptors& operator=(const Descriptors&) = delete;
    ~Descriptors() {
        for (const int descriptor : m_quiet) close(descriptor);
    }

    bool isComplete() const { return m_isComplete; }
    template <class Entry, class Make>
    std::vector<Entry> entries(Make make) const {
        std::vector<Entry> result;
        for (const int descriptor : m_quiet) result.push_back(make(descriptor));
        result.push_back(make(m_event.getWaitable().getDescriptor()));
        return result;
    }

private:
    KSEvent m_event;
    std::vector<int> m_quiet;
    bool m_isComplete = true;
};

void waitOnList(benchmark::State& state) {
    const Descriptors descriptors(static_cast<std::size_t>(state.range(0)));
    if (!descriptors.isComplete()) return state.SkipWithError("too few descriptors");
    auto list = descriptors.entries<KSWaitable>([](int descriptor) { return KSWaitable(descriptor); });
    for (auto _ : state) KSWaitable::wait(list);
}
void waitOnListUntilDeadline(benchmark::State& state) {
    const Descriptors descriptors(static_cast<std::size_t>(state.range(0)));
    if (!descriptors.isComplete()) return state.SkipWithError("too few descriptors");
    auto list = descriptors.entries<KSWaitable>([](int descriptor) { return KSWaitable(descriptor); });
    list.push_back(KSTime(0x7FFFFFFF, 0));
    for (auto _ : state) KSWaitable::wait(list);
}
void pollDescriptors(benchmark::State& state) {
    const Descriptors descriptors(static_cast<std::size_t>(state.range(0)));
    if (!descriptors.isComplete()) return state.SkipWithError("too few descriptors");
    auto list = descriptors.entries<pollfd>([](int descriptor) { return pollfd{descriptor, POLLIN, 0}; });
    if (poll(list.data(), list.size(), 0) != 1 || list.back().revents != POLLIN)
        return state.SkipWithError("the wrong one is readable");
    for (auto _ : state) benchmark::DoNotOptimize(poll(list.data(), list.size(), -1));
}
/// What a deadline needs at least: the clock, and a poll with a time-out.
void pollUntilDeadline(benchmark::State& state) {
    const Descriptors descriptors(static_cast<std::size_t>(state.range(0)));
    if (!descriptors.isComplete()) return state.SkipWithError("too few descriptors");
    auto list = descriptors.entries<pollfd>([](int descriptor) { return pollfd{descriptor, POLLIN, 0}; });
    if (poll(list.data(), list.size(), 0) != 1) return state.SkipWithError("nothing is readable");
    for (auto _ : state) {
        timeval now;
        gettimeofday(&now, nullptr);
        const timespec timeout{0x7FFFFFFF - now.tv_sec, 0};
        benchmark::DoNotOptimize(ppoll(list.data(), list.size(), &timeout, nullptr));
    }
}
BENCHMARK(waitOnList)->RangeMultiplier(10)->Range(1, 10000);
BENCHMARK(waitOnListUntilDeadline)->RangeMultiplier(10)->Range(1, 10000);
BENCHMARK(pollDescriptors)->RangeMultiplier(10)->Range(1, 10000);
BENCHMARK(pollUntilDeadline)->RangeMultiplier(10)->Range(1, 10000);

void raiseAndLower(benchmark::State& state) {
    KSEvent event;
    for (auto _ : state) {
        event.lock();
        event.raise();
        event.lock();
        event.lower();
    }
    event.lock();
    event.raise();
    if (event.wait() != 1) state.SkipWithError("the event does not work");
}
void writeAndRead(benchmark::State& state) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) return state.SkipWithError("no pair");
    char byte = 'R';
    for (auto _ : state)
        if (write(ends[1], &byte, 1) != 1 || read(ends[0], &byte, 1) != 1) state.SkipWithError("no byte");
    close(ends[0]);
    close(ends[1]);
}
BENCHMARK(raiseAndLower);
BENCHMARK(writeAndRead);

/// Both directions between two threads, through events or through bare socket pairs.
struct EventLink {
    void give() {
        event.lock();
        event.raise();
    }
    void take() {
        event.wait();
        event.lock();
        event.lower();
    }
    KSEvent event;
};
struct SocketLink {
    SocketLink() {
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) ends[0] = ends[1] = -1;
    }
    SocketLink(const SocketLink&) = delete;
    SocketLink& operator=(const SocketLink&) = delete;
    ~SocketLink() {
        close(ends[0]);
        close(ends[1]);
    }
    void give() { isWhole = write(ends[1], "R", 1) == 1 && isWhole; }
    void take() {
        pollfd entry{ends[0], POLLIN, 0};
        char byte;
        isWhole = poll(&entry, 1, -1) == 1 && read(ends[0], &byte, 1) == 1 && isWhole;
    }
    int ends[2];
    bool isWhole = true;
};

template <class Link>
void roundTrip(benchmark::State& state) {
    struct Game {
        Link there, back;
        long rounds = 0, end = 0;
    } game;
    game.end = static_cast<long>(state.max_iterations);
    KSThread other(
        [](void* argument) {
            Game& own = *static_cast<Game*>(argument);
            for (long i = 0; i < own.end; ++i) {
                own.there.take();
                ++own.rounds;
                own.back.give();
            }
        },
        &game);
    for (auto _ : state) {
        game.there.give();
        game.back.take();
    }
    other.wait();
    if (game.rounds != game.end) state.SkipWithError("lost a turn");
}
BENCHMARK(roundTrip<EventLink>)->UseRealTime();
BENCHMARK(roundTrip<SocketLink>)->UseRealTime();

}  // namespace
