// Mutex, semaphore, condition variable, barrier and thread, each beside the POSIX calls beneath and the
// standard library. What two threads do is pinned: to one processor, where only the work counts, or to two,
// where waking the other one counts as well.
#include "../Pinned.h"

#include <kestrel/concurrency/KSBarrier.h>
#include <kestrel/concurrency/KSConditionVariable.h>
#include <kestrel/concurrency/KSMutex.h>
#include <kestrel/concurrency/KSSemaphore.h>
#include <kestrel/concurrency/KSThread.h>

#include <benchmark/benchmark.h>
#include <pthread.h>
#include <semaphore.h>

#include <atomic>
#include <barrier>
#include <mutex>
#include <semaphore>
#include <thread>

namespace {

struct PosixMutex {
    void lock() { pthread_mutex_lock(&mutex); }
    void unlock() { pthread_mutex_unlock(&mutex); }
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
};
struct PosixCondition {
    void wait(PosixMutex* mutex) { pthread_cond_wait(&condition, &mutex->mutex); }
    void signal() { pthread_cond_signal(&condition); }
    pthread_cond_t condition = PTHREAD_COND_INITIALIZER;
};
/// What a semaphore of a mutex and a condition costs at least.
struct PosixMutexAndCondition {
    explicit PosixMutexAndCondition(unsigned initial) : count(initial) {}
    void wait() {
        pthread_mutex_lock(&mutex);
        while (count == 0) pthread_cond_wait(&condition, &mutex);
        --count;
        pthread_mutex_unlock(&mutex);
    }
    void signal() {
        pthread_mutex_lock(&mutex);
        ++count;
        pthread_mutex_unlock(&mutex);
        pthread_cond_signal(&condition);
    }
    unsigned count;
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    pthread_cond_t condition = PTHREAD_COND_INITIALIZER;
};
struct PosixSemaphore {
    explicit PosixSemaphore(unsigned initial) { sem_init(&semaphore, 0, initial); }
    PosixSemaphore(const PosixSemaphore&) = delete;
    PosixSemaphore& operator=(const PosixSemaphore&) = delete;
    ~PosixSemaphore() { sem_destroy(&semaphore); }
    void wait() { sem_wait(&semaphore); }
    void signal() { sem_post(&semaphore); }
    sem_t semaphore;
};
struct StandardSemaphore {
    explicit StandardSemaphore(unsigned initial) : semaphore(initial) {}
    void wait() { semaphore.acquire(); }
    void signal() { semaphore.release(); }
    std::counting_semaphore<> semaphore;
};
struct StandardBarrier {
    explicit StandardBarrier(unsigned parties) : barrier(parties) {}
    void wait() { barrier.arrive_and_wait(); }
    std::barrier<> barrier;
};
struct PosixBarrier {
    explicit PosixBarrier(unsigned parties) { pthread_barrier_init(&barrier, nullptr, parties); }
    PosixBarrier(const PosixBarrier&) = delete;
    PosixBarrier& operator=(const PosixBarrier&) = delete;
    ~PosixBarrier() { pthread_barrier_destroy(&barrier); }
    void wait() { pthread_barrier_wait(&barrier); }
    pthread_barrier_t barrier;
};

template <class Mutex>
void lockAndUnlock(benchmark::State& state) {
    Mutex mutex;
    long guarded = 0;
    benchmark::DoNotOptimize(&guarded);
    for (auto _ : state) {
        mutex.lock();
        ++guarded;
        mutex.unlock();
    }
    if (guarded != static_cast<long>(state.iterations())) state.SkipWithError("lost a turn");
}
BENCHMARK(lockAndUnlock<KSMutex>);
BENCHMARK(lockAndUnlock<PosixMutex>);
BENCHMARK(lockAndUnlock<std::mutex>);

template <class Semaphore>
void signalAndWait(benchmark::State& state) {
    Semaphore semaphore(0);
    for (auto _ : state) {
        semaphore.signal();
        semaphore.wait();  // would hang if the signal were lost
    }
}
BENCHMARK(signalAndWait<KSSemaphore>);
BENCHMARK(signalAndWait<PosixMutexAndCondition>);
BENCHMARK(signalAndWait<PosixSemaphore>);
BENCHMARK(signalAndWait<StandardSemaphore>);

/// A turn goes to another thread and back.
template <class Mutex, class Condition>
void conditionRoundTrip(benchmark::State& state) {
    static Mutex mutex;
    static Condition condition[2];
    static long turn;
    turn = 0;
    struct Player {
        static void play(long side, long end) {
            for (long mine = side; mine < end; mine += 2) {
                mutex.lock();
                while (turn != mine) condition[side].wait(&mutex);
                ++turn;
                mutex.unlock();
                condition[1 - side].signal();
            }
        }
    };
    static long end, processors;
    end = 2 * static_cast<long>(state.max_iterations);
    processors = state.range(0);
    pthread_t other;
    pthread_create(
        &other, nullptr,
        [](void*) -> void* {
            const Pinned pinned(processors - 1);
            Player::play(1, end);
            return nullptr;
        },
        nullptr);
    const Pinned pinned(0);
    long mine = 0;
    for (auto _ : state) {
        mutex.lock();
        while (turn != mine) condition[0].wait(&mutex);
        ++turn;
        mutex.unlock();
        condition[1].signal();
        mine += 2;
    }
    pthread_join(other, nullptr);
    if (turn != end) state.SkipWithError("lost a turn");
}
BENCHMARK(conditionRoundTrip<KSMutex, KSConditionVariable>)->ArgName("cpus")->Arg(1)->Arg(2)->UseRealTime();
BENCHMARK(conditionRoundTrip<PosixMutex, PosixCondition>)->ArgName("cpus")->Arg(1)->Arg(2)->UseRealTime();

template <class Barrier>
void meetAtBarrier(benchmark::State& state) {
    static Barrier& barrier = *new Barrier(2);
    static std::atomic<long> arrived;
    const Pinned pinned(state.thread_index());
    if (state.thread_index() == 0) arrived = 0;
    for (auto _ : state) {
        arrived.fetch_add(1, std::memory_order_relaxed);
        barrier.wait();
    }
    if (state.thread_index() == 0 && arrived < 2 * static_cast<long>(state.iterations()) - 1)
        state.SkipWithError("passed alone");
}
BENCHMARK(meetAtBarrier<KSBarrier>)->Threads(2)->UseRealTime();
BENCHMARK(meetAtBarrier<PosixBarrier>)->Threads(2)->UseRealTime();
BENCHMARK(meetAtBarrier<StandardBarrier>)->Threads(2)->UseRealTime();

void count(void* counter) { ++*static_cast<long*>(counter); }
void startAndJoin(benchmark::State& state) {
    const Pinned pinned(0);
    long ran = 0;
    for (auto _ : state) {
        KSThread thread(count, &ran);
        thread.wait();
    }
    if (ran != static_cast<long>(state.iterations())) state.SkipWithError("a thread did not run");
}
void startAndJoinPosix(benchmark::State& state) {
    const Pinned pinned(0);
    long ran = 0;
    const auto run = [](void* counter) -> void* {
        count(counter);
        return nullptr;
    };
    for (auto _ : state) {
        pthread_t thread;
        pthread_create(&thread, nullptr, run, &ran);
        pthread_join(thread, nullptr);
    }
    if (ran != static_cast<long>(state.iterations())) state.SkipWithError("a thread did not run");
}
void startAndJoinStandard(benchmark::State& state) {
    const Pinned pinned(0);
    long ran = 0;
    for (auto _ : state) {
        std::thread thread(count, &ran);
        thread.join();
    }
    if (ran != static_cast<long>(state.iterations())) state.SkipWithError("a thread did not run");
}
BENCHMARK(startAndJoin)->UseRealTime();
BENCHMARK(startAndJoinPosix)->UseRealTime();
BENCHMARK(startAndJoinStandard)->UseRealTime();

}  // namespace
