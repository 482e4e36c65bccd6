#include "Helpers.h"

#include <kestrel/net/KSUDPData.h>
#include <kestrel/time/KSTime.h>

#include <fcntl.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string>

namespace {

struct Bound {
    Bound() { EXPECT_TRUE(data.bind(&address)) << textOf(data.getError()); }
    KSIPSocket address{loopback, 0};
    KSUDPData data;
};

}  // namespace

TEST(KSUDPData, TheChosenPortIsWrittenBackAndDatagramsArriveWithTheirSender) {
    Bound a;
    Bound b;
    EXPECT_NE(a.address.port, 0);
    EXPECT_NE(a.address.port, b.address.port);
    EXPECT_TRUE(fcntl(a.data.getWaitable().getDescriptor(), F_GETFD) & FD_CLOEXEC);

    EXPECT_EQ(a.data.send("datagram", 8, b.address), 8u);
    char bytes[16] = {};
    KSIPSocket from;
    EXPECT_EQ(b.data.recv(bytes, sizeof bytes, &from), 8u);
    EXPECT_STREQ(bytes, "datagram");
    EXPECT_EQ(from, a.address);
    b.data.send("to nobody in particular", 4, from);
    EXPECT_EQ(a.data.recv(bytes, sizeof bytes, nullptr), 4u);
}

TEST(KSUDPData, LargerDatagramsAreCutAndEmptyOnesAreNoError) {
    Bound a;
    Bound b;
    a.data.send("0123456789", 10, b.address);
    a.data.send("", 0, b.address);
    a.data.send("z", 1, b.address);
    char bytes[4] = {};
    EXPECT_EQ(b.data.recv(bytes, 4, nullptr), 4u);
    errno = EINTR;  // a stale error must not make an empty datagram look interrupted
    EXPECT_EQ(b.data.recv(bytes, 4, nullptr), 0u);
    EXPECT_TRUE(b.data.getError().empty());
    EXPECT_EQ(b.data.recv(bytes, 4, nullptr), 1u);
    EXPECT_EQ(bytes[0], 'z');

    const std::string tooLarge(100000, 'x');
    EXPECT_EQ(a.data.send(tooLarge.data(), tooLarge.size(), b.address), 0u);
    EXPECT_EQ(textOf(a.data.getError()), std::strerror(EMSGSIZE));
    EXPECT_EQ(a.data.send("x", 1, b.address), 1u);
    EXPECT_TRUE(a.data.getError().empty());  // every call clears it first
}

TEST(KSUDPData, FailuresCloseTheSocketAndSayWhy) {
    Bound taken;
    KSUDPData data;
    EXPECT_FALSE(data.bind(nullptr));
    EXPECT_EQ(textOf(data.getError()), "No socket passed");
    EXPECT_TRUE(data.bind());
    EXPECT_TRUE(data.getError().empty());
    EXPECT_FALSE(data.bind(nullptr));  // gives up the socket that it had
    EXPECT_EQ(data.getWaitable().getDescriptor(), -1);
    EXPECT_FALSE(data.bind(&taken.address));
    EXPECT_EQ(textOf(data.getError()), std::strerror(EADDRINUSE));
    EXPECT_EQ(data.getWaitable().getDescriptor(), -1);

    char byte;
    KSIPSocket from(KSIPAddress(1), 2);
    EXPECT_EQ(data.recv(&byte, 1, &from), 0u);
    EXPECT_EQ(textOf(data.getError()), std::strerror(EBADF));
    EXPECT_EQ(from, KSIPSocket(KSIPAddress(1), 2));
    data.close();
    data.close();
}

TEST(KSUDPData, SignalsDoNotEndAReceiveAndCancellationDoes) {
    TestThread::installHandler();
    Bound a;
    Bound b;
    char bytes[8] = {};
    {
        TestThread cancelled([&] { b.data.recv(bytes, sizeof bytes, nullptr); });
        cancelled.waitUntilAsleep();
        cancelled.cancel();
    }
    unsigned long long count = 0;
    TestThread receiver([&] { count = b.data.recv(bytes, sizeof bytes, nullptr); });
    receiver.interruptTenTimes();
    a.data.send("late", 4, b.address);
    receiver.join();
    EXPECT_EQ(count, 4u);
}

TEST(KSUDPData, ExhaustedDescriptorsAreAnError) {
    KSUDPData data;
    bool isBound;
    {
        const DescriptorLimit none(0);
        isBound = data.bind();
    }
    EXPECT_FALSE(isBound);
    EXPECT_EQ(textOf(data.getError()), std::strerror(EMFILE));
}

TEST(KSUDPData, CanBeWaitedForTogetherWithADeadline) {
    Bound a;
    Bound b;
    KSTime deadline = KSTime::now();
    deadline.add(30, 0);
    a.data.send("x", 1, b.address);
    KSWaitable::wait({b.data.getWaitable(), KSWaitable(deadline)});
    EXPECT_TRUE(deadline.isFuture());
}
