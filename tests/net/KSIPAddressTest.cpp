#include <kestrel/concurrency/KSMutex.h>
#include <kestrel/foundation/KSString.h>
#include <kestrel/net/KSIPAddress.h>
#include <kestrel/net/KSIPSocket.h>

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <string>
#include <thread>

TEST(KSIPAddress, DottedTextsResolveToThemselves) {
    const struct {
        const char* text;
        unsigned int address;
    } rows[] = {{"0.0.0.0", 0},
                {"127.0.0.1", 0x7F000001},
                {"10.20.30.40", 0x0A141E28},
                {"255.255.255.255", 0xFFFFFFFF}};
    for (const auto& row : rows) {
        KSIPAddress address(1);
        EXPECT_TRUE(address.setByName(row.text));
        EXPECT_EQ(address.address, row.address);
        KSString text;
        address.getName(&text);
        EXPECT_EQ(text.compare(KSString(row.text)), 0) << row.text;
    }
    KSIPAddress address;
    EXPECT_TRUE(address.setByName("localhost"));
    EXPECT_EQ(address.address >> 24, 127u);
    address.getName(nullptr);
}

TEST(KSIPAddress, UnknownNamesLeaveTheAddress) {
    // A label beyond 63 characters is refused before any question leaves the machine.
    const std::string impossible(300, 'a');
    KSIPAddress address(0x01020304);
    for (const char* name : {static_cast<const char*>(nullptr), impossible.c_str()}) {
        EXPECT_FALSE(address.setByName(name));
        EXPECT_EQ(address, KSIPAddress(0x01020304));
    }
}

TEST(KSIPAddress, ResolverCallsWaitForTheSharedMutex) {
    dnsMutex.lock();
    KSString text;
    std::thread other([&] { KSIPAddress(0x7F000001).getName(&text); });
    EXPECT_TRUE(text.empty());
    dnsMutex.unlock();
    other.join();
    EXPECT_EQ(text.compare(KSString("127.0.0.1")), 0);
}

TEST(KSIPSocket, OrderingsNeedBothFields) {
    const struct {
        KSIPSocket a, b;
        bool equal, less, greater;
    } rows[] = {
        {{1u, 80}, {1u, 80}, true, false, false},  {{1u, 80}, {2u, 81}, false, true, false},
        {{2u, 81}, {1u, 80}, false, false, true},  {{2u, 80}, {1u, 81}, false, false, false},
        {{1u, 80}, {1u, 81}, false, false, false}, {{0x7FFFFFFFu, 1}, {0x80000000u, 2}, false, true, false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.a == row.b, row.equal);
        EXPECT_EQ(row.a != row.b, !row.equal);
        EXPECT_EQ(row.a < row.b, row.less);
        EXPECT_EQ(row.a > row.b, row.greater);
    }
}

TEST(KSIPSocketDeathTest, DisplayStopsTheProcess) {
    KSString out;
    EXPECT_EXIT((dup2(2, 1), KSIPSocket(1u, 2).getDisplay(&out)), testing::KilledBySignal(SIGABRT),
                "^File KSString, line 658 should not have been reached:\n\t$");
}
