// Mutex, condition variable, semaphore and barrier.
#include "Helpers.h"

#include <kestrel/concurrency/KSBarrier.h>
#include <kestrel/concurrency/KSConditionVariable.h>
#include <kestrel/concurrency/KSMutex.h>
#include <kestrel/concurrency/KSSemaphore.h>

#include <gtest/gtest.h>

#include <atomic>
#include <deque>
#include <memory>
#include <mutex>
#include <vector>

TEST(KSMutex, LetsOneThreadInAtATime) {
    KSMutex mutex;
    long counter = 0;
    {
        std::deque<TestThread> threads;
        for (int t = 0; t < 8; ++t)
            threads.emplace_back([&] {
                for (int i = 0; i < 5000; ++i) {
                    mutex.lock();
                    ++counter;
                    mutex.unlock();
                }
            });
    }
    EXPECT_EQ(counter, 8 * 5000);
}

TEST(KSMutex, AThreadThatIsSignalledWhileItWaitsGoesOnWaiting) {
    TestThread::installHandler();
    KSMutex mutex;
    std::atomic<bool> isIn{false};
    mutex.lock();
    TestThread thread([&] {
        mutex.lock();
        isIn = true;
        mutex.unlock();
    });
    for (int i = 0; i < 20; ++i) {
        thread.waitUntilAsleep();
        thread.sendSignal();  // the thread sanitizer keeps the handler back until the thread is in
    }
    thread.waitUntilAsleep();
    EXPECT_FALSE(isIn);
    mutex.unlock();
    thread.join();
    EXPECT_TRUE(isIn);
}

TEST(KSConditionVariable, SignalWakesOneWaiterAndACancelledOneGivesTheMutexBack) {
    KSMutex mutex;
    KSConditionVariable condition;
    int tickets = 0;
    std::atomic<int> served{0};
    const auto serve = [&] {
        const std::lock_guard guard(mutex);
        while (tickets == 0) condition.wait(&mutex);
        --tickets;
        ++served;
    };
    condition.signal();  // nobody waits: it is not kept
    TestThread first(serve), second(serve), cancelled(serve);
    cancelled.waitUntilAsleep();
    cancelled.cancel();
    cancelled.join();
    TestThread::installHandler();
    for (TestThread* thread : {&first, &second}) thread->interruptTenTimes();  // no ticket yet
    EXPECT_EQ(served, 0);

    const auto issue = [&] {
        mutex.lock();  // free again although the cancelled thread waited with it
        ++tickets;
        mutex.unlock();
        condition.signal();
    };
    issue();
    while (served < 1) std::this_thread::yield();
    EXPECT_EQ(served, 1);
    issue();
    first.join();
    second.join();
    EXPECT_EQ(served, 2);
}

TEST(KSSemaphore, CountsAndBlocksAtZero) {
    KSSemaphore two(2);
    two.wait();
    two.wait();  // both at once

    TestThread::installHandler();
    std::atomic<bool> isThrough{false};
    TestThread thread([&] {
        two.wait();
        isThrough = true;
    });
    thread.interruptTenTimes();  // a signal handler does not let it through
    EXPECT_FALSE(isThrough);
    two.signal();
    thread.join();
    EXPECT_TRUE(isThrough);
}

TEST(KSSemaphore, LosesNoSignalBetweenFourProducersAndFourConsumers) {
    constexpr int perThread = 5000;
    KSSemaphore filled(0), empty(3);
    std::atomic<int> inside{0}, worst{0};
    {
        std::deque<TestThread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&] {
                for (int i = 0; i < perThread; ++i) {
                    empty.wait();
                    const int now = ++inside;
                    int seen = worst;
                    while (now > seen && !worst.compare_exchange_weak(seen, now)) {
                    }
                    filled.signal();
                }
            });
            threads.emplace_back([&] {
                for (int i = 0; i < perThread; ++i) {
                    filled.wait();
                    --inside;
                    empty.signal();
                }
            });
        }
    }
    EXPECT_EQ(inside, 0);
    EXPECT_LE(worst, 3);
}

TEST(KSSemaphore, EverySignalArrivesWhenNoneFollows) {
    // Each side depends on one signal of the other: one that gets lost stops both for good.
    KSSemaphore ping(0), pong(0);
    int ball = 0;
    TestThread other([&] {
        for (int i = 0; i < 20000; ++i) {
            ping.wait();
            ++ball;
            pong.signal();
        }
    });
    for (int i = 0; i < 20000; ++i) {
        ping.signal();
        pong.wait();
        ASSERT_EQ(ball, i + 1);
    }
    other.join();
}

TEST(KSBarrier, NobodyPassesBeforeTheLastArrivesInAnyOfManyRounds) {
    constexpr int parties = 3, rounds = 3000;
    const auto barrier = std::make_unique<KSBarrier>(parties);
    std::atomic<int> arrived{0};
    std::atomic<int> mistakes{0};
    {
        std::deque<TestThread> threads;
        for (int t = 0; t < parties; ++t)
            threads.emplace_back([&] {
                for (int round = 1; round <= rounds; ++round) {
                    ++arrived;
                    barrier->wait();
                    const int seen = arrived;
                    if (seen < round * parties || seen > round * parties + parties - 1) ++mistakes;
                }
            });
    }
    EXPECT_EQ(mistakes, 0);
    EXPECT_EQ(arrived, parties * rounds);
}

TEST(KSBarrier, ACancelledWaiterHasArrivedAndLeavesTheBarrierUsable) {
    const auto barrier = std::make_unique<KSBarrier>(3);
    TestThread cancelled([&] { barrier->wait(); });
    cancelled.waitUntilAsleep();
    cancelled.cancel();
    cancelled.join();

    TestThread::installHandler();
    TestThread second([&] { barrier->wait(); });
    second.interruptTenTimes();  // spurious wake-ups are no arrival
    barrier->wait();             // the third
    second.join();
    const auto single = std::make_unique<KSBarrier>(1);
    for (int i = 0; i < 3; ++i) single->wait();
}
