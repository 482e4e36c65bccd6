#include "Helpers.h"

#include <kestrel/net/KSTCPServer.h>
#include <kestrel/net/KSTCPStream.h>
#include <kestrel/time/KSTime.h>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace {

int descriptorOf(const KSTCPStream& stream) { return stream.getWaitable().getDescriptor(); }

/// A listening server on a free loopback port.
struct Listening {
    Listening() {
        while (!server.bind(KSIPSocket(loopback, port)) && port < 39999) ++port;
    }
    KSIPSocket address() const { return {loopback, port}; }
    KSTCPServer server;
    unsigned short port = 30000;
};

/// Two connected streams.
struct Pair {
    Pair() {
        Listening listening;
        EXPECT_TRUE(client.open(listening.address()));
        server.reset(listening.server.accept());
        EXPECT_TRUE(server);
    }
    KSTCPStream client;
    std::unique_ptr<KSTCPStream> server;
};

}  // namespace

TEST(KSTCP, BytesGoBothWaysAndPeersKnowEachOther) {
    Listening listening;
    KSTCPStream client;
    ASSERT_TRUE(client.open(listening.address())) << textOf(client.getError());
    const std::unique_ptr<KSTCPStream> server(listening.server.accept());
    ASSERT_TRUE(server);
    EXPECT_EQ(client.getPeer(), listening.address());
    EXPECT_EQ(server->getPeer().address, loopback);
    EXPECT_NE(server->getPeer().port, 0);

    client << "text " << KSString("\x8e") << "!";  // Mac Roman e acute, sent as UTF-8
    char bytes[9] = {};
    EXPECT_EQ(server->read(bytes, 8), 8u);
    EXPECT_STREQ(bytes, "text \xC3\xA9!");
    EXPECT_EQ(server->write("ok", 2), 2u);
    EXPECT_EQ(client.read(bytes, 2), 2u);
    EXPECT_TRUE(client.getError().empty());
    for (const int descriptor : {descriptorOf(client), descriptorOf(*server)})
        EXPECT_TRUE(fcntl(descriptor, F_GETFD) & FD_CLOEXEC);
}

TEST(KSTCP, ReadsThatThePeerCutsShortGiveWhatCame) {
    Pair pair;
    char bytes[100];
    pair.client.write(std::string(40, 'x').data(), 40);
    pair.client.close();
    EXPECT_EQ(pair.server->read(bytes, 100), 40u);
    EXPECT_EQ(textOf(pair.server->getError()), "Remote machine closed connection");
}

TEST(KSTCP, HalfClosedPeersCanStillBeWrittenTo) {
    Pair pair;
    shutdown(descriptorOf(pair.client), SHUT_WR);
    char byte;
    EXPECT_EQ(pair.server->read(&byte, 1), 0u);
    EXPECT_EQ(pair.server->write("x", 1), 1u);
    EXPECT_EQ(pair.client.read(&byte, 1), 1u);
}

TEST(KSTCP, WritingToAPeerThatHasGoneIsAnErrorAndNoSignal) {
    Pair pair;
    pair.client.close();
    const std::string many(1 << 20, 'x');
    unsigned long long sent = many.size();
    for (int tries = 0; tries < 10 && sent == many.size(); ++tries)
        sent = pair.server->write(many.data(), many.size());
    EXPECT_LT(sent, many.size());
    const std::string error = textOf(pair.server->getError());
    EXPECT_TRUE(error == std::strerror(EPIPE) || error == std::strerror(ECONNRESET)) << error;
}

TEST(KSTCP, APeerThatReadsNothingBlocksTheWriterUntilItGoes) {
    Pair pair;
    std::atomic<bool> done = false;
    unsigned long long sent = 0;
    const std::string many(64 << 20, 'x');
    std::thread writer([&] {
        sent = pair.server->write(many.data(), many.size());
        done = true;
    });
    unsigned long long waiting = 0;
    while (waiting < 32768 && pair.client.getBytesAvail(&waiting)) std::this_thread::yield();
    EXPECT_FALSE(done);
    pair.client.close();
    writer.join();
    EXPECT_LT(sent, many.size());
}

TEST(KSTCP, CountsBelowOneInThirtyTwoBitsReadNothing) {
    Pair pair;
    pair.client << "waiting";
    char bytes[8] = {};
    for (const unsigned long long count : {0ULL, 0x80000000ULL, 0xFFFFFFFFULL, 0x100000000ULL})
        EXPECT_EQ(pair.server->read(bytes, count), 0u) << count;
    EXPECT_EQ(pair.server->read(bytes, 0x100000007ULL), 7u);
    EXPECT_STREQ(bytes, "waiting");
    EXPECT_TRUE(pair.server->getError().empty());
}

TEST(KSTCP, BytesAvailableAreCountedInAllSixtyFourBits) {
    Pair pair;
    unsigned long long count = ~0ULL;
    EXPECT_TRUE(pair.server->getBytesAvail(&count));
    EXPECT_EQ(count, 0u);
    pair.client << "abc";
    KSTime deadline = KSTime::now();
    deadline.add(10, 0);
    KSWaitable::wait({pair.server->getWaitable(), KSWaitable(deadline)});
    count = ~0ULL;
    EXPECT_TRUE(pair.server->getBytesAvail(&count));
    EXPECT_EQ(count, 3u);
    EXPECT_FALSE(pair.server->getBytesAvail(nullptr));
    pair.server->close();
    EXPECT_FALSE(pair.server->getBytesAvail(&count));
    EXPECT_EQ(textOf(pair.server->getError()), std::strerror(EBADF));
}

TEST(KSTCP, ErrorsStayUntilTheNextFailure) {
    Pair pair;
    char byte;
    pair.client.close();
    pair.server->read(&byte, 1);
    pair.server->write("x", 1);
    EXPECT_EQ(textOf(pair.server->getError()), "Remote machine closed connection");
}

TEST(KSTCP, FailedConnectionsCloseTheStream) {
    unsigned short freePort = 0;
    {
        Listening listening;
        freePort = listening.port;
    }
    Pair pair;  // an open stream gives up what it had
    EXPECT_FALSE(pair.client.open(KSIPSocket(loopback, freePort)));
    EXPECT_EQ(textOf(pair.client.getError()), std::strerror(ECONNREFUSED));
    EXPECT_EQ(descriptorOf(pair.client), -1);
    EXPECT_EQ(pair.client.write("x", 1), 0u);
    EXPECT_EQ(textOf(pair.client.getError()), std::strerror(EBADF));
}

TEST(KSTCPServer, PortsInUseFailAndPortsJustLeftDoNot) {
    Listening first;
    KSTCPServer second;
    EXPECT_FALSE(second.bind(first.address()));
    EXPECT_EQ(textOf(second.getError()), std::strerror(EADDRINUSE));
    EXPECT_EQ(second.accept(), nullptr);

    KSTCPStream client;
    ASSERT_TRUE(client.open(first.address()));
    const std::unique_ptr<KSTCPStream> accepted(first.server.accept());
    EXPECT_EQ(first.server.close(), 0);  // before the client: its connection stays in TIME_WAIT
    accepted->close();
    client.close();
    EXPECT_EQ(first.server.close(), -1);
    EXPECT_TRUE(second.bind(first.address())) << textOf(second.getError());
}

TEST(KSTCPServer, BindingAgainLeaksNoDescriptor) {
    const std::size_t before = openDescriptors().size();
    {
        Listening taken;
        KSTCPServer server;
        for (int i = 0; i < 5; ++i) server.bind(taken.address());  // fails
        for (unsigned short i = 1; i <= 5; ++i)
            server.bind(KSIPSocket(loopback, static_cast<unsigned short>(taken.port + i)));
        EXPECT_LE(openDescriptors().size(), before + 2);
    }
    EXPECT_EQ(openDescriptors().size(), before);
}

TEST(KSTCP, ExhaustedDescriptorsAreAnError) {
    Listening listening;
    KSTCPStream client;
    KSTCPServer server;
    bool isOpen, isBound;
    {
        const DescriptorLimit none(0);
        isOpen = client.open(listening.address());
        isBound = server.bind(KSIPSocket(loopback, 0));
    }
    EXPECT_FALSE(isOpen);
    EXPECT_FALSE(isBound);
    EXPECT_EQ(textOf(client.getError()), std::strerror(EMFILE));
    EXPECT_EQ(textOf(server.getError()), std::strerror(EMFILE));

    ASSERT_TRUE(client.open(listening.address()));  // a connection waits, but there is no room for it
    std::unique_ptr<KSTCPStream> accepted;
    {
        const DescriptorLimit none(0);
        accepted.reset(listening.server.accept());
    }
    EXPECT_EQ(accepted, nullptr);
    EXPECT_EQ(textOf(listening.server.getError()), std::strerror(EMFILE));
}

TEST(KSTCP, AConnectionResetBeforeItIsAcceptedIsHarmless) {
    Listening listening;
    {
        KSTCPStream client;
        ASSERT_TRUE(client.open(listening.address()));
        const linger reset{1, 0};
        setsockopt(descriptorOf(client), SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
    }
    const std::unique_ptr<KSTCPStream> accepted(listening.server.accept());
    char byte;
    if (accepted) {
        EXPECT_EQ(accepted->read(&byte, 1), 0u);
        EXPECT_FALSE(accepted->getError().empty());
    } else {
        EXPECT_FALSE(listening.server.getError().empty());
    }
}

TEST(KSTCP, SignalsInterruptNoBlockingCall) {
    TestThread::installHandler();
    Listening listening;
    std::string got(16 << 20, '\0');
    unsigned long long count = 0;
    TestThread receiver([&] {
        const std::unique_ptr<KSTCPStream> stream(listening.server.accept());
        if (stream) count = stream->read(got.data(), got.size());
    });
    receiver.interruptTenTimes();  // in accept
    KSTCPStream client;
    ASSERT_TRUE(client.open(listening.address()));
    receiver.interruptTenTimes();  // in read
    const std::string sent(got.size(), 'k');
    unsigned long long sentCount = 0;
    TestThread sender([&] { sentCount = client.write(sent.data(), sent.size()); });
    for (int i = 0; i < 200; ++i) {  // in both, at any moment
        sender.sendSignal();
        receiver.sendSignal();
    }
    sender.join();
    receiver.join();
    EXPECT_EQ(sentCount, sent.size());
    EXPECT_EQ(count, got.size());
    EXPECT_EQ(got, sent);
}

TEST(KSTCP, AWriteToAPeerThatReadsNothingGoesOnAfterSignals) {
    TestThread::installHandler();
    Pair pair;
    const std::string sent(16 << 20, 'k');  // more than the sockets hold
    unsigned long long count = 0;
    TestThread sender([&] { count = pair.client.write(sent.data(), sent.size()); });
    sender.interruptTenTimes();
    std::string got(sent.size(), '\0');
    EXPECT_EQ(pair.server->read(got.data(), got.size()), sent.size());
    sender.join();
    EXPECT_EQ(count, sent.size());
}

TEST(KSTCP, AThreadCanBeCancelledInEveryBlockingCall) {
    Listening listening;
    Pair pair;
    const std::string many(16 << 20, 'x');
    std::string got(8, '\0');
    const std::function<void()> calls[] = {
        [&] { listening.server.accept(); },
        [&] { pair.server->read(got.data(), got.size()); },
        [&] { pair.client.write(many.data(), many.size()); },
    };
    for (const auto& call : calls) {
        TestThread thread(call);
        thread.waitUntilAsleep();
        thread.cancel();
        thread.join();
    }
    KSTCPStream client;  // all is as usable as before
    ASSERT_TRUE(client.open(listening.address()));
    const std::unique_ptr<KSTCPStream> accepted(listening.server.accept());
    client << "sound";
    EXPECT_EQ(accepted->read(got.data(), 5), 5u);
}
