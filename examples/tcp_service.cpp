// A tiny TCP service: one thread serves many clients and their deadlines with one wait.
//
//   tcp_service PORT SECONDS  serves on 127.0.0.1 for that long, at the first free port from PORT up
//
// A line is answered in capital letters, "quit" closes, and "GET ..." is answered as a web server would. A
// client that says nothing for five seconds is let go.
#include <kestrel/Kestrel.h>

#include <poll.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr KSIPAddress loopback(0x7F000001);

KSTime fromNow(float seconds) {
    KSTime deadline = KSTime::now();
    deadline.add(seconds);
    return deadline;
}

bool isReadable(const KSWaitable& waitable) {
    pollfd look{waitable.getDescriptor(), POLLIN, 0};
    return poll(&look, 1, 0) == 1;
}

struct Client {
    std::unique_ptr<KSTCPStream> stream;
    KSTime deadline = fromNow(5);
    std::string pending{};

    /// Reads what has come and answers every complete line; false when the client is done.
    bool serve() {
        if (!isReadable(stream->getWaitable())) return !deadline.isPast();
        unsigned long long ready = 0;
        if (!stream->getBytesAvail(&ready) || ready == 0) return false;  // readable without bytes: closed
        std::string bytes(ready, '\0');
        bytes.resize(stream->read(bytes.data(), ready));
        pending += bytes;
        deadline = fromNow(5);
        for (std::size_t end; (end = pending.find('\n')) != std::string::npos; pending.erase(0, end + 1))
            if (!answer(pending.substr(0, end))) return false;
        return pending.size() < 65536;  // no line is that long
    }

    bool answer(std::string line) {
        if (line == "quit") return false;
        if (line.starts_with("GET ")) {
            *stream << "HTTP/1.0 200 OK\r\nContent-Type: text/plain\r\nContent-Length: 8\r\n\r\nkestrel\n";
            return false;
        }
        for (char& c : line) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        line += '\n';
        return stream->write(line.data(), line.size()) == line.size();
    }
};

void serve(KSTCPServer& server, const KSTime& end) {
    std::vector<Client> clients;
    while (!end.isPast()) {
        std::vector<KSWaitable> list{server.getWaitable(), KSWaitable(end)};
        for (const Client& client : clients) {
            list.push_back(client.stream->getWaitable());
            list.emplace_back(client.deadline);
        }
        KSWaitable::wait(list);

        std::erase_if(clients, [](Client& client) { return !client.serve(); });
        if (isReadable(server.getWaitable()))
            if (KSTCPStream* stream = server.accept())
                clients.push_back({std::unique_ptr<KSTCPStream>(stream)});
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return KSPrint("usage: tcp_service PORT SECONDS\n"), 2;
    auto port = static_cast<unsigned short>(std::atoi(argv[1]));
    KSTCPServer server;
    for (int tries = 1000; !server.bind(KSIPSocket(loopback, port)); ++port)
        if (--tries == 0) return KSPrint("no port is free\n"), 1;
    KSPrint("listening on 127.0.0.1:%d\n", port);
    std::fflush(stdout);
    serve(server, fromNow(static_cast<float>(std::atof(argv[2]))));
}
