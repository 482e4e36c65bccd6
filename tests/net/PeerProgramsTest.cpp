// Programs of other makers talk to the example service and to a datagram socket, on loopback only.
#include <kestrel/net/KSIPSocket.h>
#include <kestrel/net/KSUDPData.h>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <string>

namespace {

/// The service, running for at most a minute, and the port it took.
class Service {
public:
    Service() {
        int ends[2];
        if (pipe(ends) != 0) return;
        m_process = fork();
        if (m_process == 0) {
            dup2(ends[1], 1);
            execl(KESTREL_BIN_DIR "/example_tcp_service", "tcp_service", "20000", "60",
                  static_cast<char*>(nullptr));
            _exit(127);
        }
        close(ends[1]);
        std::FILE* said = fdopen(ends[0], "r");
        if (std::fscanf(said, "listening on 127.0.0.1:%d", &m_port) != 1) m_port = -1;
        std::fclose(said);
    }
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;
    ~Service() {
        kill(m_process, SIGTERM);
        waitpid(m_process, nullptr, 0);
    }
    std::string port() const { return std::to_string(m_port); }

private:
    pid_t m_process = -1;
    int m_port = -1;
};

std::string outputOf(const std::string& command) {
    std::FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    std::string output;
    std::array<char, 4096> bytes;
    for (std::size_t count; (count = std::fread(bytes.data(), 1, bytes.size(), pipe)) > 0;)
        output.append(bytes.data(), count);
    pclose(pipe);
    return output;
}

}  // namespace

TEST(PeerPrograms, TalkToTheService) {
    const Service service;
    const struct {
        const char* name;
        std::string command;
        std::string output;
    } rows[] = {
        {"curl", "curl -s -m 20 http://127.0.0.1:" + service.port() + "/", "kestrel\n"},
        {"socat", "printf 'one\\ntwo\\nquit\\n' | socat -t 20 - TCP4:127.0.0.1:" + service.port(),
         "ONE\nTWO\n"},
        {"nc", "printf 'net cat\\nquit\\n' | nc -w 20 127.0.0.1 " + service.port(), "NET CAT\n"},
        {"many at once",
         "for i in 1 2 3 4 5 6 7 8; do printf \"client\\nquit\\n\" | nc -w 20 127.0.0.1 " + service.port() +
             " & done; wait",
         "CLIENT\nCLIENT\nCLIENT\nCLIENT\nCLIENT\nCLIENT\nCLIENT\nCLIENT\n"},
    };
    for (const auto& row : rows) EXPECT_EQ(outputOf(row.command), row.output) << row.name;
}

TEST(PeerPrograms, ExchangeDatagrams) {
    KSUDPData data;
    KSIPSocket local(KSIPAddress(0x7F000001), 0);
    ASSERT_TRUE(data.bind(&local));
    std::FILE* socat =
        popen(("echo question | socat -t 20 -T 20 - UDP4:127.0.0.1:" + std::to_string(local.port) +
               ",shut-none | head -n 1")
                  .c_str(),
              "r");
    char bytes[64] = {};
    KSIPSocket from;
    EXPECT_EQ(data.recv(bytes, sizeof bytes, &from), 9u);
    EXPECT_STREQ(bytes, "question\n");
    EXPECT_EQ(data.send("answer\n", 7, from), 7u);
    char line[64] = {};
    EXPECT_EQ(std::fgets(line, sizeof line, socat), line);
    EXPECT_STREQ(line, "answer\n");
    data.send("bye\n", 4, from);  // head has gone: socat ends at its next write
    pclose(socat);
}
