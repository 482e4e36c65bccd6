#include <kestrel/concurrency/KSThread.h>

#include "Helpers.h"

#include <kestrel/concurrency/KSSemaphore.h>
#include <kestrel/concurrency/KSThreadNS.h>
#include <kestrel/foundation/KSString.h>
#include <kestrel/platform/CFBase.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

void countOne(void* counter) { ++*static_cast<std::atomic<int>*>(counter); }

}  // namespace

TEST(KSThread, TenThousandThreadsOneAfterTheOther) {
    std::atomic<int> count{0};
    for (int i = 0; i < 10000; ++i) {
        KSThread thread(countOne, &count);
        KSThread copy = thread;
        copy.wait();
        ASSERT_EQ(count, i + 1);
    }
}

TEST(KSThread, SignalsDoNotEndAWait) {
    TestThread::installHandler();
    KSSemaphore gate(0);
    std::atomic<bool> isJoined{false};
    TestThread joiner([&] {
        KSThread([](void* waited) { static_cast<KSSemaphore*>(waited)->wait(); }, &gate).wait();
        isJoined = true;
    });
    joiner.interruptTenTimes();
    EXPECT_FALSE(isJoined);
    gate.signal();
    joiner.join();
    EXPECT_TRUE(isJoined);
}

TEST(KSThread, HandlesKnowTheirThread) {
    static KSThread main;
    struct Answers {
        bool isSelf, isMain, isOwnHandle;
    } answers{};
    KSThread worker(
        [](void* out) {
            KSThread own;
            KSThread other(main);
            const bool isMainBefore = other == main && !other.isSelf();
            const pthread_t handle = other.self();
            *static_cast<Answers*>(out) = {own.isSelf(), isMainBefore,
                                           pthread_equal(handle, pthread_self()) && other == own};
        },
        &answers);
    EXPECT_FALSE(worker.isSelf());
    EXPECT_FALSE(worker == main);
    worker.wait();
    EXPECT_TRUE(main.isSelf());
    EXPECT_TRUE(answers.isSelf && answers.isMain && answers.isOwnHandle);
}

TEST(KSThread, AThreadThatCannotStartLeavesAnUnsetHandle) {
    pthread_attr_t before, huge;
    pthread_getattr_default_np(&before);
    pthread_attr_init(&huge);
    pthread_attr_setstacksize(&huge, std::size_t{1} << 48);  // more than the address space
    ASSERT_EQ(pthread_setattr_default_np(&huge), 0);
    std::atomic<int> count{0};
    KSThread thread(countOne, &count);  // the start record is freed: the leak checker looks
    pthread_setattr_default_np(&before);
    pthread_attr_destroy(&huge);
    pthread_attr_destroy(&before);

    EXPECT_FALSE(thread.isSelf());
    EXPECT_FALSE(thread == KSThread());
    thread.cancel();
    thread.wait();
    EXPECT_EQ(count, 0);
}

TEST(KSThread, CancellationUnwindsTheFunctionAndFreesTheStartRecord) {
    static std::atomic<int> unwound;
    unwound = 0;
    struct Witness {
        ~Witness() { ++unwound; }
    };
    KSSemaphore never(0);
    TestThread thread([&] {
        const Witness witness;
        never.wait();
    });
    thread.waitUntilAsleep();
    thread.cancel();
    thread.join();
    EXPECT_EQ(unwound, 1);
    never.signal();  // the semaphore is unlocked and took nothing
    never.wait();
}

TEST(KSThread, StartupRunsTheRecordOnTheCallingThread) {
    // The record's shape is the documented pair of pointers; startup frees it.
    struct Pair {
        void (*function)(void*);
        void* argument;
    };
    std::atomic<int> count{0};
    EXPECT_EQ(KSThread::startup(new Pair{countOne, &count}), nullptr);
    EXPECT_EQ(KSThread::startup(new Pair{nullptr, nullptr}), nullptr);
    EXPECT_EQ(count, 1);
}

TEST(KSThreadNS, RunsDetachedThreadsThatNeverNeedJoining) {
    struct Job {
        KSSemaphore done{0};
        std::atomic<int> count{0};
    };
    // Never destroyed: the last signal() may still run when its wait() has returned.
    static Job& job = *new Job;
    KSThreadNS(nullptr, &job);
    for (int i = 0; i < 1000; ++i) {
        KSThreadNS(
            [](void* arg) {
                Job& own = *static_cast<Job*>(arg);
                ++own.count;
                own.done.signal();
            },
            &job);
        if (i % 10 == 9)
            for (int j = 0; j < 10; ++j) job.done.wait();
    }
    EXPECT_EQ(job.count, 1000);
}

TEST(KSThreadNS, ReleasesAtItsEndWhatItsFunctionsHandedOutForAWhile) {
    static const KSString text("a title");
    static KSSemaphore& done = *new KSSemaphore(0);
    static CFIndex before, during;
    before = CFGetRetainCount(text.cf_str());
    KSThreadNS(
        [](void*) {
            text.ns_str();
            during = CFGetRetainCount(text.cf_str());
            done.signal();
        },
        nullptr);
    done.wait();
    EXPECT_EQ(during, before + 1);
    while (CFGetRetainCount(text.cf_str()) != before) std::this_thread::yield();
}
