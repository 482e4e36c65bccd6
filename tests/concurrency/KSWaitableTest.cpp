#include <kestrel/concurrency/KSWaitable.h>

#include "Helpers.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <chrono>
#include <deque>
#include <limits>
#include <memory>
#include <string>

namespace {

constexpr int never = 0x7FFFFFFF;

KSTime fromNow(int microseconds) {
    KSTime time = KSTime::now();
    time.add(0, microseconds);
    return time;
}

/// Milliseconds of the steady clock that a wait took.
template <class Argument>
double millisecondsOf(const Argument& argument) {
    const auto start = std::chrono::steady_clock::now();
    KSWaitable::wait(argument);
    const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - start;
    return taken.count();
}

using List = std::vector<KSWaitable>;

/// A connected pair of sockets.
struct Sockets {
    Sockets() { EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0); }
    Sockets(const Sockets&) = delete;
    Sockets& operator=(const Sockets&) = delete;
    ~Sockets() {
        close(ends[0]);
        closeWriter();
    }
    void closeWriter() {
        if (ends[1] >= 0) close(ends[1]);
        ends[1] = -1;
    }
    int ends[2];
};

}  // namespace

TEST(KSWaitable, ConstructorsKeepWhatTheyAreGiven) {
    const auto holds = [](const KSWaitable& waitable, int descriptor, KSWaitable::Function function,
                          KSTime deadline) {
        return waitable.getDescriptor() == descriptor && waitable.getFunction() == function &&
               waitable.getDeadline() == deadline;
    };
    const KSWaitable::Function function = [](const List&) {};
    EXPECT_TRUE(holds(KSWaitable(), -2, nullptr, KSTime(0, 0)));
    EXPECT_TRUE(holds(KSWaitable(function), -2, function, KSTime(0, 0)));
    EXPECT_TRUE(holds(KSWaitable(7), 7, nullptr, KSTime(0, 0)));
    EXPECT_TRUE(holds(KSWaitable(KSTime(12, 34)), -1, nullptr, KSTime(12, 34)));
}

TEST(KSWaitable, ReturnsAtOnceWhenThereIsNothingToWaitFor) {
    KSEvent raised, lowered;
    raise(raised);
    const KSWaitable endless{KSTime()};
    const struct {
        const char* name;
        List list;
    } rows[] = {
        {"empty", {}},
        {"only never", {endless, endless}},
        {"default entry", {lowered.getWaitable(), KSWaitable(), endless}},
        {"deadline long past", {lowered.getWaitable(), KSTime(1, 0)}},
        {"deadline passed, descriptor readable", {raised.getWaitable(), KSTime(1, 0)}},
        {"negative descriptor is a deadline of its time", {lowered.getWaitable(), KSWaitable(-7)}},
        {"raised event", {lowered.getWaitable(), raised.getWaitable()}},
        {"raised event and never", {raised.getWaitable(), endless}},
        {"raised event and a far deadline", {raised.getWaitable(), KSTime(never, 0)}},
        {"a file is readable", {lowered.getWaitable(), KSWaitable(0)}},
    };
    const int input = dup(0);
    std::FILE* file = std::fopen(KESTREL_SOURCE_DIR "/CMakeLists.txt", "re");
    dup2(fileno(file), 0);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_LT(millisecondsOf(row.list), 2000);
    }
    dup2(input, 0);
    close(input);
    std::fclose(file);
}

TEST(KSWaitable, NeverEndsBeforeTheEarliestDeadline) {
    KSEvent lowered;
    for (const int microseconds : {1, 999, 1001, 20500}) {
        const KSTime first = fromNow(microseconds), later = fromNow(60000000);
        KSWaitable::wait({later, first, KSTime()});
        EXPECT_TRUE(first.isPast()) << microseconds;
        const KSTime second = fromNow(microseconds);
        KSWaitable::wait({second, lowered.getWaitable(), later});
        EXPECT_TRUE(second.isPast()) << microseconds;
        const KSTime third = fromNow(microseconds);
        KSWaitable::wait(third);
        EXPECT_TRUE(third.isPast()) << microseconds;
        EXPECT_FALSE(later.isPast());
    }
    EXPECT_LT(millisecondsOf(KSTime(1, 0)), 2000);
}

TEST(KSWaitable, FieldsThatNobodyNormalisedAreStillAnInstant) {
    const KSTime now = KSTime::now();
    EXPECT_LT(millisecondsOf(List{KSTime(now.seconds + 1, -1000000)}), 2000);  // the present
    EXPECT_LT(millisecondsOf(KSTime(now.seconds + 60, -0x7FFFFFFF)), 2000);    // past
}

class KSWaitableBlocks : public testing::TestWithParam<KSTime> {};

TEST_P(KSWaitableBlocks, UntilTheEventIsRaisedWhateverSignalsArrive) {
    TestThread::installHandler();
    KSEvent event;
    std::atomic<bool> isOver{false};
    for (int round = 0; round < 2; ++round) {  // after lower() it blocks again
        isOver = false;
        TestThread thread([&] {
            KSWaitable::wait({GetParam(), event.getWaitable()});
            isOver = true;
        });
        thread.interruptTenTimes();
        EXPECT_FALSE(isOver);
        raise(event);
        thread.join();
        EXPECT_TRUE(isOver);
        lower(event);
    }
}
INSTANTIATE_TEST_SUITE_P(Deadlines, KSWaitableBlocks,
                         testing::Values(KSTime(), KSTime(never, 0), KSTime(0x7FFFFFFE, never),
                                         KSTime(0x7FFFFFFE, 999999)));

TEST(KSWaitable, SignalsDoNotShortenASleep) {
    TestThread::installHandler();
    for (const bool isList : {true, false}) {
        const KSTime deadline = fromNow(200000);
        bool isReached = false;
        TestThread thread([&] {
            if (isList)
                KSWaitable::wait({deadline});
            else
                KSWaitable::wait(deadline);
            isReached = deadline.isPast();
        });
        thread.interruptTenTimes();
        thread.join();
        EXPECT_TRUE(isReached) << isList;
    }
}

TEST(KSWaitable, AHangUpAndAClosedDescriptorEndTheWait) {
    KSEvent lowered;
    Sockets sockets;
    TestThread thread([&] { KSWaitable::wait({lowered.getWaitable(), sockets.ends[0], KSTime()}); });
    thread.waitUntilAsleep();
    sockets.closeWriter();
    thread.join();

    const int closed = dup(0);
    close(closed);
    EXPECT_LT(millisecondsOf(List{lowered.getWaitable(), closed, KSTime(never, 0)}), 2000);
}

TEST(KSWaitable, WaitsOnThousandsOfDescriptorsOfAnyNumber) {
    const DescriptorLimit limit(16384);
    std::deque<Sockets> all;
    List list;
    for (int i = 0; i < 2000; ++i) {
        all.emplace_back();
        list.push_back(all.back().ends[0]);
    }
    list.push_back(KSTime());
    ASSERT_GT(list[1999].getDescriptor(), 3000);
    for (const std::size_t which : {1999u, 0u, 1024u}) {
        TestThread thread([&] { KSWaitable::wait(list); });
        thread.waitUntilAsleep();
        ASSERT_EQ(write(all[which].ends[1], "x", 1), 1);
        thread.join();
        char byte;
        ASSERT_EQ(read(all[which].ends[0], &byte, 1), 1);
    }
}

TEST(KSWaitable, WakesEveryThreadThatWaitsOnTheSameEvent) {
    KSEvent event;
    std::deque<TestThread> threads;
    for (int i = 0; i < 4; ++i) threads.emplace_back([&] { KSWaitable::wait({event.getWaitable()}); });
    for (const TestThread& thread : threads) thread.waitUntilAsleep();
    raise(event);
    threads.clear();  // joins all four
}

TEST(KSWaitable, TheLastFunctionTakesTheWholeWaitOver) {
    static std::string calls;
    calls.clear();
    KSEvent lowered;
    const KSWaitable first([](const List&) { calls += "first "; });
    const KSWaitable second([](const List& list) { calls += "second " + std::to_string(list.size()); });
    // Neither the deadline long past nor the descriptor that never becomes readable is looked at.
    KSWaitable::wait({first, KSTime(1, 0), second, lowered.getWaitable(), KSTime()});
    EXPECT_EQ(calls, "second 5");
}

TEST(KSWaitable, AThreadCanBeCancelledInAWait) {
    KSEvent event;
    const List many(500, event.getWaitable());  // beyond what fits the stack: its memory is freed
    TestThread inList([&] { KSWaitable::wait(many); });
    TestThread inSleep([&] { KSWaitable::wait(KSTime(never, 0)); });
    TestThread inEvent([&] { event.wait(); });
    for (TestThread* thread : {&inList, &inSleep, &inEvent}) {
        thread->waitUntilAsleep();
        thread->cancel();
        thread->join();
    }
    raise(event);
    EXPECT_EQ(event.wait(), 1);
}
