// kestrel armor, as a user runs it.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace {

namespace fs = std::filesystem;

/// A folder of its own for each test, in which the commands run.
class ArmorCommand : public testing::Test {
protected:
    void SetUp() override {
        std::string path = (fs::temp_directory_path() / "kestrel-armor-XXXXXX").string();
        ASSERT_NE(mkdtemp(path.data()), nullptr);
        m_folder = path;
    }
    void TearDown() override {
        fs::permissions(m_folder, fs::perms::owner_all);
        fs::remove_all(m_folder);
    }

    /// Runs a shell command in which "kestrel armor" is $K; the exit status, and what it printed.
    int run(const std::string& command, std::string* printed = nullptr) {
        const std::string line = "cd '" + m_folder.string() + "' && TMPDIR=. && export TMPDIR && K='" +
                                 KESTREL_BIN_DIR "/kestrel armor' && { " + command + "; } 2>&1";
        FILE* const pipe = popen(line.c_str(), "r");
        if (!pipe) return -1;
        std::string output;
        for (int c; (c = std::fgetc(pipe)) != EOF;) output += static_cast<char>(c);
        if (printed) *printed = output;
        const int status = pclose(pipe);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    void put(const char* name, const std::string& bytes) {
        std::ofstream(m_folder / name, std::ios::binary) << bytes;
    }
    std::string get(const char* name) {
        std::ifstream file(m_folder / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    /// The number of files, so that a temporary left behind shows.
    long countFiles() { return std::distance(fs::directory_iterator(m_folder), fs::directory_iterator()); }

    fs::path m_folder;
};

std::string randomText(std::size_t size) {
    std::mt19937 random(3);
    std::string bytes(size, '\0');
    for (char& c : bytes) c = static_cast<char>(random());
    return bytes;
}

}  // namespace

TEST_F(ArmorCommand, BringsFilesAndPipesBack) {
    for (const std::size_t size : {0u, 1u, 2u, 3u, 4u, 196607u, 196608u, 196609u, 1000003u}) {
        const std::string bytes = randomText(size);
        put("in", bytes);
        ASSERT_EQ(run("$K encode in text && $K decode text out"), 0) << size;
        EXPECT_EQ(get("out"), bytes) << size;
        EXPECT_EQ(get("text").size(), size ? 12 + (size + 2) / 3 * 4 : 0);
        ASSERT_EQ(run("cat in | $K encode | tee piped | $K decode > out"), 0) << size;
        EXPECT_EQ(get("out"), bytes) << size;
        EXPECT_EQ(get("piped"), get("text")) << "a pipe, whose length nobody knows, gives the same text";
    }
    EXPECT_EQ(countFiles(), 4);
    put("in", "\xFF");
    ASSERT_EQ(run("$K encode in text"), 0);
    EXPECT_EQ(get("text"), "**********2ezk**");
}

TEST_F(ArmorCommand, RefusesBadTextsAndLeavesTheOutputAsItWas) {
    const struct {
        const char* name;
        std::string text;
        const char* error;  // empty: the text is fine
    } rows[] = {
        {"LineEnd", "**********2ezk**\r\n", ""},
        {"Short", "*****", "in: Not enough data"},
        {"Foreign", "<?xml version?>", "in: Magic Number does not match"},
        {"BadHeader", "****+*****2ezk**", "in: character 5 is not part of the alphabet"},
        {"BadCharacter", "**********2ez k*", "in: character 14 is not part of the alphabet"},
        {"Truncated", "**********Ee*-01-*", "in: ends at character 18, before its 4 bytes are complete"},
        {"HugeLength", "zzzzzzzzzzwe0000",
         "in: ends at character 16, before its 18446744073709551615 bytes are complete"},
        {"MoreText", "**********2ezk**0", "in: more text after character 16"},
    };
    for (const auto& row : rows) {
        put("in", row.text);
        put("out", "precious");
        std::string printed;
        const bool good = !*row.error;
        EXPECT_EQ(run("$K decode in out", &printed), good ? 0 : 2) << row.name;
        EXPECT_EQ(printed, good ? "" : std::string("kestrel armor: ") + row.error + "\n") << row.name;
        EXPECT_EQ(get("out"), good ? "\xFF" : "precious") << row.name;
        EXPECT_EQ(countFiles(), 2) << row.name;
    }
}

TEST_F(ArmorCommand, SaysWhatCannotBeReadOrWritten) {
    put("in", "bytes");
    const struct {
        const char* command;
        const char* error;
    } rows[] = {
        {"$K encode missing out", "missing: No such file or directory"},
        {"$K encode . out", ".: Is a directory"},
        {"$K decode . out", ".: Is a directory"},
        {"$K encode in .", ".: Is a directory"},
        {"$K encode in missing/out", "missing/out: No such file or directory"},
        {"$K encode in /dev/full", "/dev/full: No space left on device"},
        {"$K encode in > /dev/full", "standard output: No space left on device"},
        {"ulimit -f 0; trap '' XFSZ; $K encode in out", "out: File too large"},
    };
    for (const auto& row : rows) {
        std::string printed;
        EXPECT_EQ(run(row.command, &printed), 2) << row.command;
        EXPECT_EQ(printed, std::string("kestrel armor: ") + row.error + "\n") << row.command;
        EXPECT_EQ(countFiles(), 1) << row.command;
    }
    if (geteuid() != 0) {  // nothing is read-only to the superuser
        ASSERT_EQ(chmod(m_folder.c_str(), 0555), 0);
        EXPECT_EQ(run("$K encode in out"), 2);
    }
}

TEST_F(ArmorCommand, KeepsLinksAndPermissionsOfWhatItReplaces) {
    put("in", "\xFF");
    put("real", "old");
    fs::create_symlink("real", m_folder / "link");
    ASSERT_EQ(chmod((m_folder / "real").c_str(), 0640), 0);
    ASSERT_EQ(run("$K encode in link"), 0);
    EXPECT_TRUE(fs::is_symlink(m_folder / "link"));
    EXPECT_EQ(get("real"), "**********2ezk**");
    struct stat status {};
    ASSERT_EQ(stat((m_folder / "real").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640u);

    ASSERT_EQ(run("$K encode in in"), 0) << "the input may be the output";
    EXPECT_EQ(get("in"), "**********2ezk**");
}
