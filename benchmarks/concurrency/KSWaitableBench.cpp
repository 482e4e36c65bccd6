// The wait on a list beside poll, and the event beside a bare socket pair.
#include "../Pinned.h"

#include <kestrel/concurrency/KSEvent.h>
#include <kestrel/concurrency/KSThread.h>
#include <kestrel/concurrency/KSWaitable.h>

#include <benchmark/benchmark.h>
#include <poll.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <vector>

namespace {

/// Sockets that nothing ever reaches, and an event that is raised. All rows look at the same ones.
class Descriptors {
public:
    static const Descriptors& all() {
        static const Descriptors only;
        return only;
    }
    /// A list of so many of them, the event last; empty when the process may not open so many.
    template <class Entry, class Make>
    std::vector<Entry> entries(std::int64_t count, Make make) const {
        std::vector<Entry> result;
        const auto quiet = static_cast<std::size_t>(count) - 1;
        if (quiet > m_quiet.size()) return result;
        for (std::size_t i = 0; i < quiet; ++i) result.push_back(make(m_quiet[i]));
        result.push_back(make(m_event.getWaitable().getDescriptor()));
        return result;
    }

private:
    Descriptors() {
        rlimit limit;
        getrlimit(RLIMIT_NOFILE, &limit);
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &limit);
        for (int descriptor = 0; m_quiet.size() < 10000 && descriptor >= 0;) {
            descriptor = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
            if (descriptor >= 0) m_quiet.push_back(descriptor);
        }
        m_event.lock();
        m_event.raise();
    }

    KSEvent m_event;
    std::vector<int> m_quiet;
};

void waitOnList(benchmark::State& state, bool withDeadline) {
    auto list = Descriptors::all().entries<KSWaitable>(state.range(0), [](int d) { return KSWaitable(d); });
    if (list.empty()) return state.SkipWithError("too few descriptors");
    if (withDeadline) list.push_back(KSTime(0x7FFFFFFF, 0));
    const Pinned pinned(0);
    for (auto _ : state) KSWaitable::wait(list);
}
/// A deadline needs at least the clock, and a poll with a time-out.
void pollList(benchmark::State& state, bool withDeadline) {
    auto list = Descriptors::all().entries<pollfd>(state.range(0), [](int d) {
        return pollfd{d, POLLIN, 0};
    });
    if (list.empty()) return state.SkipWithError("too few descriptors");
    if (poll(list.data(), list.size(), 0) != 1 || list.back().revents != POLLIN)
        return state.SkipWithError("the wrong one is readable");
    const Pinned pinned(0);
    for (auto _ : state) {
        if (withDeadline) {
            timeval now;
            gettimeofday(&now, nullptr);
            const timespec timeout{0x7FFFFFFE - now.tv_sec, (1000000 - now.tv_usec) * 1000 - 1};
            benchmark::DoNotOptimize(ppoll(list.data(), list.size(), &timeout, nullptr));
        } else {
            benchmark::DoNotOptimize(poll(list.data(), list.size(), -1));
        }
    }
}
BENCHMARK_CAPTURE(waitOnList, kestrel, false)->RangeMultiplier(10)->Range(1, 10000);
BENCHMARK_CAPTURE(pollList, plain, false)->RangeMultiplier(10)->Range(1, 10000);
BENCHMARK_CAPTURE(waitOnList, kestrelUntilDeadline, true)->RangeMultiplier(10)->Range(1, 10000);
BENCHMARK_CAPTURE(pollList, plainUntilDeadline, true)->RangeMultiplier(10)->Range(1, 10000);

void raiseAndLower(benchmark::State& state) {
    const Pinned pinned(0);
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
    const Pinned pinned(0);
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

/// Both directions between two threads: through events, through bare socket pairs, and through socket pairs
/// with a mutex that is held while the byte goes in or out, as an event's is. On one processor the byte wakes
/// the taker at once, which then has to wait for that mutex: this is what the third costs beyond the second.
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

struct LockedSocketLink : SocketLink {
    void give() {
        pthread_mutex_lock(&mutex);
        SocketLink::give();
        pthread_mutex_unlock(&mutex);
    }
    void take() {
        pollfd entry{ends[0], POLLIN, 0};
        isWhole = poll(&entry, 1, -1) == 1 && isWhole;
        pthread_mutex_lock(&mutex);
        char byte;
        isWhole = read(ends[0], &byte, 1) == 1 && isWhole;
        pthread_mutex_unlock(&mutex);
    }
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
};

template <class Link>
void roundTrip(benchmark::State& state) {
    struct Game {
        Link there, back;
        long rounds = 0, end = 0, processors = 1;
    } game;
    game.end = static_cast<long>(state.max_iterations);
    game.processors = state.range(0);
    KSThread other(
        [](void* argument) {
            Game& own = *static_cast<Game*>(argument);
            const Pinned pinned(own.processors - 1);
            for (long i = 0; i < own.end; ++i) {
                own.there.take();
                ++own.rounds;
                own.back.give();
            }
        },
        &game);
    const Pinned pinned(0);
    for (auto _ : state) {
        game.there.give();
        game.back.take();
    }
    other.wait();
    if (game.rounds != game.end) state.SkipWithError("lost a turn");
}
BENCHMARK(roundTrip<EventLink>)->ArgName("cpus")->Arg(1)->Arg(2)->UseRealTime();
BENCHMARK(roundTrip<SocketLink>)->ArgName("cpus")->Arg(1)->Arg(2)->UseRealTime();
BENCHMARK(roundTrip<LockedSocketLink>)->ArgName("cpus")->Arg(1)->Arg(2)->UseRealTime();

}  // namespace
