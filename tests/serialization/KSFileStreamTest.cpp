#include <kestrel/files/KSURL.h>
#include <kestrel/foundation/KSString.h>
#include <kestrel/serialization/KSException.h>
#include <kestrel/serialization/KSFileReadStream.h>
#include <kestrel/serialization/KSFileWriteStream.h>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <thread>

namespace {

class KSFileStream : public testing::Test {
protected:
    KSFileStream() {
        std::string name = (std::filesystem::temp_directory_path() / "kestrel-stream-XXXXXX").string();
        folder = mkdtemp(name.data());
        path = folder + "/file";
    }
    ~KSFileStream() override { std::filesystem::remove_all(folder); }

    KSURL url() const { return KSURL(path.c_str(), false); }
    std::string content() const {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::string folder, path;
};

std::string pattern(std::size_t size) {
    std::string text(size, '\0');
    for (std::size_t i = 0; i < size; ++i) text[i] = static_cast<char>(i * 7 + i / 251);
    return text;
}

}  // namespace

TEST_F(KSFileStream, BufferIsFlushedWhenItWouldBeFullAndAtTheEnd) {
    const struct {
        const char* name;
        std::size_t first, second;
        std::size_t inFile;  // after both writes
    } rows[] = {
        {"one byte short of full", 51199, 0, 0},
        {"exactly full goes straight to the file", 51200, 0, 51200},
        {"filling up flushes what was pending and keeps the rest", 51190, 10, 51190},
        {"stays within", 51190, 9, 0},
        {"too large after a flush", 10, 60000, 60010},
        {"large twice", 60000, 70000, 130000},
    };
    for (const auto& row : rows) {
        const std::string text = pattern(row.first + row.second);
        {
            KSFileWriteStream file(url());
            EXPECT_EQ(file.write(text.data(), row.first), row.first);
            if (row.second) {
                EXPECT_EQ(file.write(text.data() + row.first, row.second), row.second);
            }
            EXPECT_EQ(content().size(), row.inFile) << row.name;
        }
        EXPECT_EQ(content(), text) << row.name;
    }
}

TEST_F(KSFileStream, ManySmallWritesArriveInOrder) {
    const std::string text = pattern(300000);
    {
        KSFileWriteStream file(url());
        for (std::size_t at = 0, size = 0; at < text.size(); at += size) {
            size = std::min<std::size_t>(at % 97, text.size() - at);
            file.write(text.data() + at, size);
            if (size == 0) size = file.write(text.data() + at, 1);
        }
    }
    EXPECT_EQ(content(), text);

    KSFileReadStream file(url());
    std::string read(text.size() + 10, '\0');
    EXPECT_EQ(file.read(read.data(), 1000), 1000u);
    EXPECT_EQ(file.read(read.data() + 1000, read.size()), text.size() - 1000);
    EXPECT_EQ(file.read(read.data(), 10), 0u);
    EXPECT_EQ(read.substr(0, text.size()), text);
}

TEST_F(KSFileStream, LengthsAreTakenAsThirtyTwoBits) {
    std::ofstream(path) << "abcdef";
    KSFileReadStream in(url());
    char bytes[8] = {};
    EXPECT_EQ(in.read(bytes, 0x100000003ULL), 3u);
    EXPECT_STREQ(bytes, "abc");
    KSFileWriteStream out(url());
    EXPECT_EQ(out.write("xyz", 0x700000002ULL), 2u);
    EXPECT_EQ(out.write(nullptr, 0), 0u);
}

TEST_F(KSFileStream, OpeningEmptiesTheFileAndStreamsKnowTheirURL) {
    std::ofstream(path) << "old content";
    KSFileWriteStream file(url());
    EXPECT_EQ(content(), "");
    EXPECT_EQ(file.getURL().getFilename().compare(KSString("file")), 0);
    EXPECT_EQ(file.read(nullptr, 5), 0u);
    EXPECT_TRUE(file.getError().empty());
    KSFileReadStream reader(url());
    EXPECT_EQ(reader.write("x", 1), 0u);
    EXPECT_TRUE(reader.getError().empty());
}

TEST_F(KSFileStream, WhatCannotBeOpenedThrowsOrGivesTheErrorResult) {
    char byte;
    EXPECT_THROW(KSFileWriteStream(KSURL(folder.c_str(), true)), KSException_WriteError);
    EXPECT_THROW(KSFileWriteStream(KSURL((folder + "/no/such").c_str(), false)), KSException_WriteError);
    KSFileReadStream missing(url());
    EXPECT_EQ(missing.read(&byte, 1), ~0ULL);
    KSFileReadStream directory(KSURL(folder.c_str(), true));
    EXPECT_EQ(directory.read(&byte, 1), ~0ULL);

    // A URL that names no file has no platform stream at all.
    const KSURL elsewhere(KSString("http://localhost/x"), false);
    KSFileReadStream none(elsewhere);
    EXPECT_EQ(none.read(&byte, 1), 0u);
    KSFileWriteStream nowhere(elsewhere);
    EXPECT_THROW(nowhere.write("x", 1), KSException_WriteError);
    EXPECT_THROW(nowhere.write("", 0), KSException_WriteError);
}

TEST_F(KSFileStream, FullDiskThrowsAndThePendingBytesAreGone) {
    KSFileWriteStream full(KSURL("/dev/full", false));
    const std::string text = pattern(60000);
    EXPECT_EQ(full.write(text.data(), 50000), 50000u);                    // only buffered
    EXPECT_THROW(full.write(text.data(), 2000), KSException_WriteError);  // the flush fails
    EXPECT_EQ(full.write(text.data(), 51199), 51199u);                    // the buffer was empty again
    EXPECT_THROW(full.write(text.data(), 60000), KSException_WriteError);
    EXPECT_THROW(full.write(text.data(), 60000), KSException_WriteError);  // now straight to the file
}

TEST_F(KSFileStream, AFileLimitCutsAWriteShort) {
    rlimit before;
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    void (*handler)(int) = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{100000, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    bool thrown = false;
    {
        KSFileWriteStream file(url());
        try {
            file.write(pattern(150000).data(), 150000);
        } catch (const KSException& exception) {
            thrown = dynamic_cast<const KSException_WriteError*>(&exception) != nullptr;
        }
    }
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_TRUE(thrown);
    EXPECT_EQ(content(), pattern(150000).substr(0, 100000));
}

TEST_F(KSFileStream, NamesThatAreNoTextOpen) {
    path = folder + "/\xFF\xFE:name \x80#?%41";
    {
        const KSURL original = url();
        KSFileWriteStream file(original);
        file << "found";
    }
    EXPECT_EQ(content(), "found");
}

TEST_F(KSFileStream, SignalsInterruptNeitherReadsNorWrites) {
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    struct sigaction interrupting {};
    struct sigaction before;
    interrupting.sa_handler = [](int) {};  // without SA_RESTART
    sigaction(SIGUSR1, &interrupting, &before);
    const std::string text = pattern(3 << 20);
    std::string got;
    std::atomic<bool> done = false;
    std::thread reader([&] {
        KSFileReadStream file(url());
        char bytes[4096];
        for (unsigned long long count; (count = file.read(bytes, sizeof bytes)) != 0 && count != ~0ULL;)
            got.append(bytes, count);
        done = true;
    });
    std::thread writer([&] {
        KSFileWriteStream file(url());
        file.write(text.data(), text.size());
    });
    for (int i = 0; i < 500 && !done; ++i) {
        pthread_kill(writer.native_handle(), SIGUSR1);
        pthread_kill(reader.native_handle(), SIGUSR1);
        std::this_thread::yield();
    }
    writer.join();
    reader.join();
    sigaction(SIGUSR1, &before, nullptr);
    EXPECT_EQ(got, text);
}

TEST_F(KSFileStream, DescriptorsAreCloseOnExecAndClosed) {
    const auto open = [] { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); };
    const auto before = open();
    {
        KSFileWriteStream out(url());
        KSFileReadStream in(url());
        EXPECT_EQ(open(), before + 2);
        for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
            std::error_code gone;
            if (std::filesystem::read_symlink(entry, gone) == path) {
                EXPECT_TRUE(fcntl(std::stoi(entry.path().filename()), F_GETFD) & FD_CLOEXEC);
            }
        }
    }
    EXPECT_EQ(open(), before);
}
