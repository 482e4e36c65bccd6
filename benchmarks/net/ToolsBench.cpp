// The library's TCP and UDP beside curl, socat and nc themselves, on loopback.
//
// download<server, client> hands one file over a new connection, from the start of the client's program to its
// end; each server is measured with each client. echo<server> sends a message to a server and waits for it to
// come back, always through the same client loop. Rows whose program is not installed are skipped.
#include <kestrel/foundation/KSString.h>
#include <kestrel/net/KSTCPServer.h>
#include <kestrel/net/KSTCPStream.h>
#include <kestrel/net/KSUDPData.h>
#include <kestrel/time/KSTime.h>

#include <benchmark/benchmark.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr KSIPAddress loopback(0x7F000001);
constexpr std::size_t chunkSize = 65536;
constexpr std::size_t bodySize = std::size_t{256} << 20;

/// A file that begins like the answer of a web server, so that curl takes it too.
class Document {
public:
    static const Document& get() {
        static const Document only;
        return only;
    }
    ~Document() { std::filesystem::remove_all(folder); }

    bool isSameAs(const std::string& other, std::size_t from) const {
        std::ifstream left(path, std::ios::binary), right(other, std::ios::binary);
        left.seekg(static_cast<std::streamoff>(from));
        std::vector<char> a(chunkSize), b(chunkSize);
        do {
            left.read(a.data(), chunkSize);
            right.read(b.data(), chunkSize);
            if (left.gcount() != right.gcount() || a != b) return false;
        } while (left.gcount() > 0);
        return true;
    }

    std::string folder, path;
    std::size_t headSize = 0;

private:
    Document() {
        folder = (std::filesystem::temp_directory_path() / "kestrel-bench-XXXXXX").string();
        if (!mkdtemp(folder.data())) std::abort();
        path = folder + "/document";
        std::ofstream out(path, std::ios::binary);
        const std::string head =
            "HTTP/1.0 200 OK\r\nContent-Length: " + std::to_string(bodySize) + "\r\n\r\n";
        headSize = head.size();
        out << head;
        std::vector<std::uint32_t> words(chunkSize / 4);
        std::uint32_t state = 1;
        for (std::size_t i = 0; i < bodySize; i += chunkSize) {
            for (std::uint32_t& word : words) word = state = state * 1664525u + 1013904223u;
            out.write(reinterpret_cast<const char*>(words.data()), chunkSize);
        }
    }
};

/// A program with its arguments, in a process of its own that lives for at most a minute.
class Program {
public:
    explicit Program(const std::string& command) : m_process(fork()) {
        if (m_process != 0) return;
        execl("/bin/sh", "sh", "-c", ("exec timeout 60 " + command).c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program() {
        if (m_process <= 0) return;
        kill(m_process, SIGTERM);
        wait();
    }
    /// Whether it ended well.
    bool wait() {
        int status = -1;
        waitpid(m_process, &status, 0);
        m_process = -1;
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

private:
    pid_t m_process;
};

bool isInstalled(const std::string& program) {
    return std::system(("command -v " + program + " >/dev/null 2>&1").c_str()) == 0;
}

unsigned short freePort() {
    static unsigned short port = 33000;
    for (KSTCPServer server; !server.bind(KSIPSocket(loopback, ++port)) && port < 39999;) {
    }
    return port;
}

/// Waits until a socket of that kind ("tcp", "udp") is bound to the port; false after ten seconds.
bool isBound(const char* kind, unsigned short port) {
    KSTime end = KSTime::now();
    end.add(10, 0);
    char wanted[32];
    std::snprintf(wanted, sizeof wanted, "0100007F:%04X 00000000:0000", port);
    for (; end.isFuture(); std::this_thread::yield()) {
        std::ifstream table(std::string("/proc/net/") + kind);
        for (std::string line; std::getline(table, line);)
            if (line.find(wanted) != std::string::npos) return true;
    }
    return false;
}

struct Tool {
    const char* name;
    std::string (*command)(unsigned short port, const std::string& file);
};

/// What serves the document; kestrel's own server has no command.
const Tool servers[] = {
    {"kestrel", nullptr},
    {"socat",
     [](unsigned short port, const std::string& file) {
         return "socat -b 65536 TCP4-LISTEN:" + std::to_string(port) +
                ",bind=127.0.0.1,reuseaddr 'OPEN:" + file + ",rdonly!!OPEN:/dev/null,wronly'";
     }},
    {"nc",
     [](unsigned short port, const std::string& file) {
         return "nc -l -N 127.0.0.1 " + std::to_string(port) + " <" + file + " >/dev/null";
     }},
};
/// What fetches it into a file.
const Tool clients[] = {
    {"curl",
     [](unsigned short port, const std::string& file) {
         return "curl -s -S -o " + file + " http://127.0.0.1:" + std::to_string(port) + "/";
     }},
    {"socat",
     [](unsigned short port, const std::string& file) {
         return "socat -u -b 65536 TCP4:127.0.0.1:" + std::to_string(port) + " CREATE:" + file;
     }},
    {"nc", [](unsigned short port,
              const std::string& file) { return "nc -d 127.0.0.1 " + std::to_string(port) + " >" + file; }},
    {"kestrel", nullptr},
};

/// Serves the document to one client, as a program of ours would. curl asks first.
void serveDocument(KSTCPServer& server, bool asksFirst) {
    const std::unique_ptr<KSTCPStream> stream(server.accept());
    if (!stream) return;
    std::string request;
    for (char byte; asksFirst && !request.ends_with("\r\n\r\n") && stream->read(&byte, 1) == 1;)
        request += byte;
    std::ifstream file(Document::get().path, std::ios::binary);
    std::vector<char> bytes(chunkSize);
    do {
        file.read(bytes.data(), chunkSize);
    } while (file.gcount() > 0 &&
             stream->write(bytes.data(), static_cast<unsigned long long>(file.gcount())) > 0);
}

bool fetchDocument(unsigned short port, const std::string& path) {
    KSTCPStream stream;
    if (!stream.open(KSIPSocket(loopback, port))) return false;
    std::ofstream file(path, std::ios::binary);
    std::vector<char> bytes(chunkSize);
    while (const auto count = stream.read(bytes.data(), chunkSize))
        file.write(bytes.data(), static_cast<std::streamsize>(count));
    return file.good();
}

/// One transfer into a file: the seconds that the client took, or a negative number if something went wrong.
double transfer(const Tool& server, const Tool& client, const std::string& target) {
    const unsigned short port = freePort();
    const bool asksFirst = std::string(client.name) == "curl";
    KSTCPServer own;
    std::unique_ptr<Program> foreign;
    std::thread serving;
    if (server.command) {
        foreign = std::make_unique<Program>(server.command(port, Document::get().path));
        if (!isBound("tcp", port)) return -1;
    } else {
        if (!own.bind(KSIPSocket(loopback, port))) return -1;
        serving = std::thread([&] { serveDocument(own, asksFirst); });
    }
    const auto start = std::chrono::steady_clock::now();
    const bool isFetched =
        client.command ? Program(client.command(port, target)).wait() : fetchDocument(port, target);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    if (!isFetched) KSTCPStream().open(KSIPSocket(loopback, port));  // a server that still waits goes on
    if (serving.joinable()) serving.join();
    return isFetched && (!foreign || foreign->wait()) ? taken.count() : -1;
}

void download(benchmark::State& state, const Tool& server, const Tool& client) {
    for (const Tool* tool : {&server, &client})
        if (tool->command && !isInstalled(tool->name)) return state.SkipWithError("not installed");
    const Document& document = Document::get();
    const bool isCurl = std::string(client.name) == "curl";
    const std::string target = document.folder + "/copy";
    const bool isGood =
        transfer(server, client, target) >= 0 && document.isSameAs(target, isCurl ? document.headSize : 0);
    std::filesystem::remove(target);
    if (!isGood) return state.SkipWithError("the copy differs");
    for (auto _ : state) {
        const double seconds = transfer(server, client, "/dev/null");
        if (seconds < 0) state.SkipWithError("a transfer failed");
        state.SetIterationTime(seconds);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bodySize));
}

constexpr std::size_t messageSize = 64;

/// Messages that go to an echo server and come back, each a little different.
template <class Exchange>
void exchange(benchmark::State& state, Exchange once) {
    std::vector<char> out(messageSize, 'k'), back(messageSize);
    bool isGood = true;
    std::size_t count = 0;
    for (auto _ : state) {
        ++out[count++ % messageSize];
        isGood = isGood && once(out.data(), back.data()) && out == back;
    }
    if (!isGood) state.SkipWithError("a message came back changed");
}

void echoTCP(benchmark::State& state, const char* socat) {
    if (socat && !isInstalled("socat")) return state.SkipWithError("not installed");
    const unsigned short port = freePort();
    KSTCPServer own;
    std::unique_ptr<Program> foreign;
    std::thread serving;
    if (socat) {
        foreign = std::make_unique<Program>("socat TCP4-LISTEN:" + std::to_string(port) +
                                            ",bind=127.0.0.1,reuseaddr,nodelay " + socat);
        if (!isBound("tcp", port)) return state.SkipWithError("no server");
    } else {
        own.bind(KSIPSocket(loopback, port));
        serving = std::thread([&] {
            const std::unique_ptr<KSTCPStream> stream(own.accept());
            char bytes[messageSize];
            while (stream && stream->read(bytes, messageSize) == messageSize)
                stream->write(bytes, messageSize);
        });
    }
    KSTCPStream stream;
    if (!stream.open(KSIPSocket(loopback, port))) state.SkipWithError("no connection");
    exchange(state, [&](const char* out, char* back) {
        return stream.write(out, messageSize) == messageSize && stream.read(back, messageSize) == messageSize;
    });
    stream.close();
    if (serving.joinable()) serving.join();
}

void echoUDP(benchmark::State& state, const char* socat) {
    if (socat && !isInstalled("socat")) return state.SkipWithError("not installed");
    KSUDPData own, data;
    KSIPSocket address(loopback, 0), local(loopback, 0);
    if (!own.bind(&address) || !data.bind(&local)) return state.SkipWithError("no socket");
    std::unique_ptr<Program> foreign;
    std::thread serving;
    if (socat) {
        own.close();
        foreign = std::make_unique<Program>("socat UDP4-LISTEN:" + std::to_string(address.port) +
                                            ",bind=127.0.0.1 " + socat);
        if (!isBound("udp", address.port)) return state.SkipWithError("no server");
    } else {
        serving = std::thread([&] {
            char bytes[messageSize];
            KSIPSocket from;
            while (const auto count = own.recv(bytes, messageSize, &from)) own.send(bytes, count, from);
        });
    }
    exchange(state, [&](const char* out, char* back) {
        return data.send(out, messageSize, address) == messageSize &&
               data.recv(back, messageSize, nullptr) == messageSize;
    });
    if (serving.joinable()) {
        data.send("", 0, address);  // the end
        serving.join();
    }
}

BENCHMARK_CAPTURE(echoTCP, kestrel, nullptr)->UseRealTime();
BENCHMARK_CAPTURE(echoTCP, socat_pipe, "PIPE")->UseRealTime();
BENCHMARK_CAPTURE(echoTCP, socat_cat, "EXEC:cat")->UseRealTime();
BENCHMARK_CAPTURE(echoUDP, kestrel, nullptr)->UseRealTime();
BENCHMARK_CAPTURE(echoUDP, socat_pipe, "PIPE")->UseRealTime();

const bool areRegistered = [] {
    for (const Tool& client : clients)
        for (const Tool& server : servers)
            benchmark::RegisterBenchmark(
                ("download/" + std::string(server.name) + "_to_" + client.name).c_str(),
                [&](benchmark::State& state) { download(state, server, client); })
                ->Iterations(1)
                ->Unit(benchmark::kMillisecond)
                ->UseManualTime();
    return true;
}();

}  // namespace
