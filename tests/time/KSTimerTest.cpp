#include <kestrel/time/KSTimer.h>

#include <gtest/gtest.h>

#include <cmath>

#include "FakeClock.h"

namespace {

TEST(KSTimer, AveragesOverTimingsAndShowsTheLast) {
    FakeClock clock(1000, 900000);
    KSTimer timer;
    EXPECT_EQ(timer.getNumTimings(), 0);
    EXPECT_EQ(timer.getAverageSeconds(), 0.0);
    EXPECT_TRUE(std::isinf(timer.getRate()));

    timer.start();
    clock.set(1001, 900000);
    timer.stop();
    timer.start();
    EXPECT_EQ(timer.getSeconds(), 0.0);  // a new timing begins at 0
    clock.set(1005, 150000);             // the microseconds borrow a second
    timer.stop();
    EXPECT_EQ(timer.secs(), 3);
    EXPECT_EQ(timer.uSecs(), 250000);
    EXPECT_DOUBLE_EQ(timer.getSeconds(), 3.25);
    EXPECT_DOUBLE_EQ(timer.getRate(), 1 / 3.25);
    EXPECT_EQ(timer.getNumTimings(), 2);
    EXPECT_DOUBLE_EQ(timer.getAverageSeconds(), 2.125);

    timer.reset();
    EXPECT_EQ(timer.getSeconds(), 0.0);
    EXPECT_EQ(timer.getNumTimings(), 0);
    EXPECT_EQ(timer.getAverageSeconds(), 0.0);
}

TEST(KSTimer, PausedSpansDoNotCount) {
    FakeClock clock(50, 0);
    KSTimer timer;
    timer.start();
    clock.set(50, 600000);
    timer.pause();
    EXPECT_EQ(timer.uSecs(), 600000);
    EXPECT_EQ(timer.getNumTimings(), 0);
    clock.set(80, 0);
    timer.resume();
    clock.set(82, 700000);
    timer.pause();  // 0.6 s + 2.7 s: the microseconds carry
    EXPECT_EQ(timer.secs(), 3);
    EXPECT_EQ(timer.uSecs(), 300000);
    clock.set(500, 999999);
    timer.resume();
    clock.set(501, 699998);
    timer.stop();
    EXPECT_EQ(timer.secs(), 3);
    EXPECT_EQ(timer.uSecs(), 999999);  // the largest that carries nothing
    EXPECT_EQ(timer.getNumTimings(), 1);
    EXPECT_DOUBLE_EQ(timer.getAverageSeconds(), 3.999999);
}

TEST(KSTimer, AbortedTimingsDoNotCount) {
    FakeClock clock(10);
    KSTimer timer;
    timer.start();
    clock.set(12);
    timer.stop();
    timer.start();
    clock.set(20);
    timer.abortTiming();
    EXPECT_EQ(timer.getSeconds(), 0.0);
    EXPECT_EQ(timer.getNumTimings(), 1);
    EXPECT_DOUBLE_EQ(timer.getAverageSeconds(), 2.0);
}

TEST(KSTimer, TimesAcrossTheEndOf32Bits) {
    FakeClock clock(0x7FFFFFFF, 500000);
    KSTimer timer;
    timer.start();
    clock.set(0x80000001, 250000);
    timer.stop();
    EXPECT_DOUBLE_EQ(timer.getSeconds(), 1.75);
    // Out of order: the state's mark, -1 or -2, is taken as the start. Nothing overflows.
    clock.set(0x7FFFFFFF, 0);
    KSTimer unstarted;
    unstarted.pause();
    unstarted.stop();
    EXPECT_EQ(unstarted.getNumTimings(), 1);
}

}  // namespace
