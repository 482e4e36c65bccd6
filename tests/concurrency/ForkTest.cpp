// A child that is forked while other threads wait, hold locks and sleep.
#include "Helpers.h"

#include <kestrel/concurrency/KSBarrier.h>
#include <kestrel/concurrency/KSMutex.h>
#include <kestrel/concurrency/KSSemaphore.h>
#include <kestrel/concurrency/KSWaitable.h>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// Everything once, with fresh objects, between two threads.
bool worksAnew() {
    KSEvent event;
    KSSemaphore semaphore(0);
    KSMutex mutex;
    KSBarrier& barrier = *new KSBarrier(2);
    int counter = 0;
    TestThread thread([&] {
        mutex.lock();
        ++counter;
        mutex.unlock();
        raise(event);
        semaphore.wait();
        barrier.wait();
    });
    KSTime soon = KSTime::now();
    soon.add(0, 1000);
    KSWaitable::wait(soon);
    KSWaitable::wait({event.getWaitable()});
    semaphore.signal();
    barrier.wait();
    thread.join();
    return counter == 1 && soon.isPast();
}

}  // namespace

TEST(Fork, AChildCanUseNewObjectsWhateverTheParentsThreadsWereDoing) {
    KSSemaphore semaphore(0);
    KSEvent event;
    TestThread inSemaphore([&] { semaphore.wait(); });
    TestThread inEvent([&] { KSWaitable::wait({event.getWaitable()}); });
    for (const TestThread* thread : {&inSemaphore, &inEvent}) thread->waitUntilAsleep();

    const pid_t child = fork();
    if (child == 0) _exit(worksAnew() ? 0 : 1);
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);

    // The descriptors of an event are shared: what the child raises wakes the parent.
    const pid_t raiser = fork();
    if (raiser == 0) {
        raise(event);
        _exit(0);
    }
    ASSERT_EQ(waitpid(raiser, &status, 0), raiser);
    inEvent.join();
    semaphore.signal();
}
