#include <kestrel/foundation/KSInfo.h>
#include <kestrel/foundation/KSString.h>
#include <kestrel/foundation/KSUser.h>
#include <kestrel/platform/detail/MemoryStatistics.h>

#include <gtest/gtest.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>

using kestrel::detail::MemoryStatistics;
using kestrel::detail::readMemoryStatistics;

TEST(KSInfo, MemoryFiguresHangTogether) {
    unsigned long long figure[7] = {};
    ASSERT_TRUE(KSInfo::getMemoryInfo(&figure[0], &figure[1], &figure[2], &figure[3], &figure[4], &figure[5],
                                      &figure[6]));
    EXPECT_GT(figure[0], 64ULL << 20);
    EXPECT_LT(figure[1], figure[0]);
    EXPECT_EQ(figure[2] + figure[3], figure[0]);
    EXPECT_GT(figure[4], 1ULL << 20);
    EXPECT_GT(figure[5], figure[4]);
    EXPECT_GT(figure[6], 0u);
    EXPECT_LT(figure[6], 1ULL << 63);
    EXPECT_TRUE(KSInfo::getMemoryInfo(nullptr));  // every pointer may be null
}

TEST(KSInfo, ResidentMemoryGrowsWithTouchedPages) {
    unsigned long long before = 0;
    unsigned long long after = 0;
    KSInfo::getMemoryInfo(nullptr, nullptr, nullptr, nullptr, &before);
    const std::string touched(32 << 20, 'x');
    KSInfo::getMemoryInfo(nullptr, nullptr, nullptr, nullptr, &after);
    EXPECT_GE(after, before + (touched.size() >> 1));
}

namespace {

/// A folder with tables as the kernel writes them.
class Tables {
public:
    Tables() {
        std::string name = (std::filesystem::temp_directory_path() / "kestrel-tables-XXXXXX").string();
        path = ::mkdtemp(name.data());
        std::filesystem::create_directory(path + "/self");
        write("/meminfo", "MemTotal:    1000 kB\nMemFree:    250 kB\nMemAvailable: 999 kB\n");
        write("/self/statm", "900 7 5 1 0 300 0\n");
        write("/self/maps",
              "00001000-00002000 r-xp 00000000 08:02 173521 /bin/a name\n"
              "6ffff000-70002000 rw-p 00000000 00:00 0\n"
              "8fffe000-90004000 rw-p 00000000 00:00 0 [heap]\n"
              "90004000-90005000 rw-p 00000000 00:00 0\n"
              "ffffffffff600000-ffffffffff601000 --xp 00000000 00:00 0 [vsyscall]\n");
    }
    ~Tables() { std::filesystem::remove_all(path); }
    void write(const char* name, const char* text) const { std::ofstream(path + name) << text; }

    std::string path;
};

}  // namespace

TEST(MemoryStatistics, AreReadFromTheTables) {
    const Tables tables;
    MemoryStatistics read;
    ASSERT_TRUE(readMemoryStatistics(read, tables.path));
    EXPECT_EQ(read.total, 1000u * 1024);
    EXPECT_EQ(read.free, 250u * 1024);
    EXPECT_EQ(read.resident, 7u * static_cast<unsigned long>(sysconf(_SC_PAGESIZE)));
    EXPECT_EQ(read.regions, 0x1000u + 0x3000 + 0x6000 + 0x1000);
    EXPECT_EQ(read.sharedWindow, 0x2000u + 0x2000);  // regions are cut at the window's ends
    EXPECT_EQ(read.largestGap, 0x6fffd000u);
}

TEST(MemoryStatistics, AreAllZeroWhenOneTableIsMissingOrBroken) {
    const struct {
        const char* table;
        const char* text;  // null: the table is missing
    } rows[] = {{"/meminfo", nullptr},     {"/meminfo", "MemTotal: 5 kB\n"}, {"/self/statm", nullptr},
                {"/self/statm", "12\n"},   {"/self/maps", nullptr},          {"/self/maps", ""},
                {"/self/maps", "5-4 r\n"}, {"/self/maps", "nonsense\n"}};
    for (const auto& row : rows) {
        const Tables tables;
        if (row.text)
            tables.write(row.table, row.text);
        else
            std::filesystem::remove(tables.path + row.table);
        MemoryStatistics read;
        read.regions = 1;
        EXPECT_FALSE(readMemoryStatistics(read, tables.path)) << row.table;
        EXPECT_EQ(read.total + read.free + read.resident + read.regions + read.sharedWindow + read.largestGap,
                  0u)
            << row.table;
    }
}

TEST(KSInfo, SystemNameIsTheHostName) {
    utsname system;
    ASSERT_EQ(uname(&system), 0);
    KSString name;
    EXPECT_TRUE(KSInfo::getSystemName(&name));
    EXPECT_EQ(name.compare(KSString(system.nodename)), 0);
    EXPECT_FALSE(KSInfo::getSystemName(nullptr));
    EXPECT_GE(KSInfo::getProcessors(), 1);
}

TEST(KSInfoDeathTest, UnfinishedNamesStopTheProcessWithTheirMessage) {
    const auto stops = testing::KilledBySignal(SIGABRT);
    const char* const message = "^File KSString, line 658 should not have been reached:\n\t$";
    KSString out;
    EXPECT_EXIT((dup2(2, 1), KSInfo::getSystemType(&out)), stops, message);
    EXPECT_EXIT((dup2(2, 1), KSUser::getCurrentUserFullName(&out)), stops, message);
    EXPECT_FALSE(KSInfo::getSystemType(nullptr));
    EXPECT_FALSE(KSUser::getCurrentUserFullName(nullptr));
}

TEST(KSUser, CurrentNameIsFoundButTheResultIsFalse) {
    KSString name("left over");
    EXPECT_FALSE(KSUser::getCurrentUserName(&name));
    EXPECT_FALSE(KSUser::getCurrentUserName(nullptr));
    KSString home;
    EXPECT_EQ(KSUser::getUserHomeDir(&home, name), !name.empty());
    EXPECT_EQ(KSUser::isSuperUser(), geteuid() == 0);
}

TEST(KSUser, HomeFolderOfTheSuperuserIsKnownAndOfNobodyElseLeavesTheText) {
    KSString home("as it was");
    EXPECT_FALSE(KSUser::getUserHomeDir(&home, KSString("no such user here")));
    EXPECT_FALSE(KSUser::getUserHomeDir(&home, KSString()));
    EXPECT_EQ(home.compare(KSString("as it was")), 0);
    EXPECT_FALSE(KSUser::getUserHomeDir(nullptr, KSString("root")));
    EXPECT_TRUE(KSUser::getUserHomeDir(&home, KSString("root")));
    EXPECT_EQ(home.compare(KSString("/root")), 0);
}

TEST(KSBackground, ParentExitsAndTheChildLeadsASession) {
    for (const bool closing : {false, true}) {
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        const pid_t parent = fork();
        if (parent == 0) {
            const bool inChild = ksBackground(closing);
            char facts[4] = {inChild ? 'c' : 'p', getsid(0) == getpid() ? 's' : '-', dup(1) >= 0 ? 'o' : '-',
                             std::signal(SIGTSTP, SIG_DFL) == SIG_IGN ? 'i' : '-'};
            _exit(write(ends[1], facts, sizeof facts) == sizeof facts ? 7 : 8);
        }
        close(ends[1]);
        int status = -1;
        ASSERT_EQ(waitpid(parent, &status, 0), parent);
        EXPECT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), 0);
        char facts[5] = {};
        EXPECT_EQ(read(ends[0], facts, 4), 4);
        EXPECT_STREQ(facts, closing ? "cs-i" : "csoi");
        close(ends[0]);
    }
}
