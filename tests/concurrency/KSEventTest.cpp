#include <kestrel/concurrency/KSEvent.h>

#include "Helpers.h"

#include <kestrel/concurrency/KSWaitable.h>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <memory>
#include <set>
#include <vector>

namespace {

bool isReadable(int descriptor) {
    pollfd entry{descriptor, POLLIN, 0};
    return poll(&entry, 1, 0) == 1;
}

/// Opens descriptors until the next one would have at least this number.
class ManyDescriptors {
public:
    explicit ManyDescriptors(int until) {
        do {
            m_all.push_back(open("/dev/null", O_RDONLY | O_CLOEXEC));
        } while (m_all.back() >= 0 && m_all.back() < until);
    }
    ManyDescriptors(const ManyDescriptors&) = delete;
    ManyDescriptors& operator=(const ManyDescriptors&) = delete;
    ~ManyDescriptors() {
        for (const int descriptor : m_all) close(descriptor);
    }

private:
    std::vector<int> m_all;
};

}  // namespace

TEST(KSEvent, HoldsOneByteWhileRaisedHoweverOftenItIsRaised) {
    KSEvent event;
    const int descriptor = event.getWaitable().getDescriptor();
    for (int cycle = 0; cycle < 3; ++cycle) {
        for (int again = 0; again < 3; ++again) {
            raise(event);
            int bytes = 0;
            ASSERT_EQ(ioctl(descriptor, FIONREAD, &bytes), 0);
            EXPECT_EQ(bytes, 1);
            EXPECT_EQ(event.wait(), 1);
        }
        for (int again = 0; again < 3; ++again) {
            lower(event);
            EXPECT_FALSE(isReadable(descriptor));
        }
    }
    event.lock();  // every change has given the lock back
    event.unlock();
}

TEST(KSEvent, ClosesBothDescriptorsWhichNoChildProgramInherits) {
    const std::set<int> before = openDescriptors();
    {
        const KSEvent event;
        int added = 0;
        for (const int descriptor : openDescriptors()) {
            if (before.count(descriptor)) continue;
            ++added;
            EXPECT_TRUE(fcntl(descriptor, F_GETFD) & FD_CLOEXEC);
        }
        EXPECT_EQ(added, 2);
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST(KSEvent, WorksAboveDescriptor1024) {
    const DescriptorLimit limit(4096);
    const ManyDescriptors many(1500);
    KSEvent event;
    ASSERT_GT(event.getWaitable().getDescriptor(), 1024);
    TestThread raiser([&] { raise(event); });
    EXPECT_EQ(event.wait(), 1);
    KSWaitable::wait({event.getWaitable()});
}

TEST(KSEvent, AWaitThatASignalInterruptsReturnsAtOnce) {
    TestThread::installHandler();
    KSEvent event;
    int result = 0, error = 0;
    TestThread thread([&] {
        result = event.wait();
        error = errno;
    });
    thread.waitUntilAsleep();
    thread.interrupt();
    thread.join();
    EXPECT_EQ(result, -1);
    EXPECT_EQ(error, EINTR);
}

TEST(KSEvent, WithoutDescriptorsItStillLocksAndReturnsErrors) {
    const std::set<int> before = openDescriptors();
    for (const int spare : {0, 1}) {  // none free, and one too few
        const int lowest = fcntl(0, F_DUPFD_CLOEXEC, 3);
        close(lowest);
        std::vector<std::unique_ptr<KSEvent>> events;
        {
            const DescriptorLimit limit(static_cast<rlim_t>(lowest + spare));
            events.push_back(std::make_unique<KSEvent>());
        }
        EXPECT_EQ(openDescriptors(), before) << spare << " spare";
        KSEvent& event = *events.back();
        EXPECT_EQ(event.getWaitable().getDescriptor(), -1);
        for (int i = 0; i < 2; ++i) {
            raise(event);
            EXPECT_EQ(event.wait(), -1);
            EXPECT_EQ(errno, EBADF);
            lower(event);
        }
        KSWaitable::wait({event.getWaitable()});  // returns at once
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST(KSEvent, AClosedDescriptorIsAnError) {
    KSEvent event;
    const int descriptor = event.getWaitable().getDescriptor();
    const int copy = fcntl(descriptor, F_DUPFD_CLOEXEC, 3);
    close(descriptor);
    EXPECT_EQ(event.wait(), -1);
    EXPECT_EQ(errno, EBADF);
    KSWaitable::wait({event.getWaitable()});        // ends, for it cannot become readable
    ASSERT_EQ(dup2(copy, descriptor), descriptor);  // the destructor closes it
    close(copy);
}

TEST(KSEvent, CancellingWhileTheLockIsHeldReleasesTheLock) {
    KSEvent event;
    TestThread thread([&] {
        pthread_cancel(pthread_self());  // takes effect at the next cancellation point
        raise(event);
        lower(event);
        event.wait();
    });
    thread.join();
    raise(event);
    EXPECT_EQ(event.wait(), 1);
}

TEST(KSEvent, PingPongsBetweenTwoThreads) {
    KSEvent ping, pong;
    const auto take = [](KSEvent& event) {
        event.wait();
        lower(event);
    };
    int ball = 0;
    TestThread other([&] {
        for (int i = 0; i < 2000; ++i) {
            take(ping);
            ++ball;
            raise(pong);
        }
    });
    for (int i = 0; i < 2000; ++i) {
        raise(ping);
        take(pong);
        ASSERT_EQ(ball, i + 1);
    }
}
