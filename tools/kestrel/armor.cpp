// kestrel armor: files of any size to printable text and back, a piece at a time.
#include <kestrel/files/KSAsciiStream.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "AtomicFile.h"
#include "Commands.h"

namespace kestrel::tools {

namespace {

constexpr std::size_t headerCharacters = 12;
constexpr std::size_t groupsAtOnce = 1 << 16;

/// The characters of bytes, without a header: what a stream of their own makes of them, behind its header.
std::string charactersOf(const void* bytes, std::size_t size) {
    KSAsciiStream stream;
    stream.write(bytes, size);
    stream.close();
    const std::unique_ptr<char, decltype(&std::free)> text(stream.getString().createCStr(), &std::free);
    if (!text) throw std::runtime_error("out of memory");
    return size ? text.get() + headerCharacters : "";
}

/// The header of a payload of length bytes: the length, big-endian, and the magic byte, armoured.
std::string headerOf(std::uint64_t length) {
    std::uint8_t bytes[9];
    for (int i = 0; i < 8; ++i) bytes[i] = static_cast<std::uint8_t>(length >> (56 - 8 * i));
    bytes[8] = '*';
    return charactersOf(bytes, sizeof bytes);
}

/// The bytes of whole groups of characters.
std::vector<std::uint8_t> bytesOf(const std::string& characters) {
    std::vector<std::uint8_t> bytes(characters.size() / 4 * 3);
    const std::string text = headerOf(bytes.size()) + characters;
    KSAsciiStream stream;
    stream.open(text.data(), text.size());
    stream.read(bytes.data(), bytes.size());
    return bytes;
}

/// One input; "-" is standard input.
class Input {
public:
    explicit Input(const std::string& path)
        : m_name(path == "-" ? "standard input" : path),
          m_descriptor(path == "-" ? ::dup(STDIN_FILENO) : ::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
        if (m_descriptor < 0) fail(std::strerror(errno));
    }
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;
    ~Input() { ::close(m_descriptor); }

    [[noreturn]] void fail(const std::string& reason) const {
        throw std::runtime_error(m_name + ": " + reason);
    }
    std::size_t read(void* bytes, std::size_t size) { return readFully(m_descriptor, bytes, size, m_name); }
    /// How many bytes are left. What cannot tell (a pipe) is first copied to a temporary file.
    std::uint64_t measure() {
        struct stat status {};
        off_t at = ::lseek(m_descriptor, 0, SEEK_CUR);
        if (::fstat(m_descriptor, &status) != 0) fail(std::strerror(errno));
        if (S_ISDIR(status.st_mode)) fail(std::strerror(EISDIR));
        if (!S_ISREG(status.st_mode) || at < 0) {
            spool();
            at = 0;
            if (::fstat(m_descriptor, &status) != 0) fail(std::strerror(errno));
        }
        return at < status.st_size ? static_cast<std::uint64_t>(status.st_size - at) : 0;
    }

private:
    void spool() {
        AtomicFile copy("-");  // never committed: its temporary goes with it
        std::vector<char> part(1 << 16);
        while (const std::size_t count = read(part.data(), part.size())) copy.write(part.data(), count);
        const int descriptor = ::open(copy.getPath().c_str(), O_RDONLY | O_CLOEXEC);
        if (descriptor < 0) fail(std::strerror(errno));
        ::close(m_descriptor);
        m_descriptor = descriptor;
    }

    std::string m_name;
    int m_descriptor;
};

void encode(const std::string& from, const std::string& to) {
    Input in(from);
    AtomicFile out(to);
    std::uint64_t left = in.measure();
    if (left > 0) {  // an empty payload has an empty text
        const std::string header = headerOf(left);
        out.write(header.data(), header.size());
    }
    std::vector<std::uint8_t> bytes(groupsAtOnce * 3);
    while (left > 0) {
        const auto want = static_cast<std::size_t>(std::min<std::uint64_t>(left, bytes.size()));
        if (in.read(bytes.data(), want) != want) in.fail("became shorter while it was read");
        const std::string text = charactersOf(bytes.data(), want);
        out.write(text.data(), text.size());
        left -= want;
    }
    out.commit();
}

void requireAlphabet(const Input& in, const std::string& text, std::uint64_t position) {
    const auto foreign = std::find_if_not(text.begin(), text.end(), [](char c) {
        return KSAsciiStream::validChar(static_cast<unsigned char>(c));
    });
    if (foreign == text.end()) return;
    position += static_cast<std::uint64_t>(foreign - text.begin()) + 1;
    in.fail("character " + std::to_string(position) + " is not part of the alphabet");
}

void decode(const std::string& from, const std::string& to) {
    Input in(from);
    AtomicFile out(to);
    std::string header(headerCharacters, '\0');
    header.resize(in.read(header.data(), header.size()));
    if (header.empty()) return out.commit();

    KSAsciiStream check;
    if (!check.open(header.data(), header.size())) {
        const std::unique_ptr<char, decltype(&std::free)> reason(check.getError().createUTF8Str(),
                                                                 &std::free);
        in.fail(reason ? reason.get() : "no armour");
    }
    requireAlphabet(in, header, 0);
    const std::vector<std::uint8_t> told = bytesOf(header);
    std::uint64_t length = 0;
    for (int i = 0; i < 8; ++i) length = length << 8 | told[static_cast<std::size_t>(i)];

    std::uint64_t position = headerCharacters;
    for (std::uint64_t done = 0; done < length;) {
        const std::uint64_t left = length - done;
        const auto groups =
            static_cast<std::size_t>(std::min<std::uint64_t>(left / 3 + (left % 3 != 0), groupsAtOnce));
        std::string text(groups * 4, '\0');
        text.resize(in.read(text.data(), text.size()));
        requireAlphabet(in, text, position);
        if (text.size() < groups * 4)
            in.fail("ends at character " + std::to_string(position + text.size()) + ", before its " +
                    std::to_string(length) + " bytes are complete");
        const std::vector<std::uint8_t> bytes = bytesOf(text);
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(left, bytes.size()));
        out.write(bytes.data(), count);
        done += count;
        position += text.size();
    }
    char c;
    for (; in.read(&c, 1) == 1; ++position)  // an editor's line end does no harm
        if (c != '\n' && c != '\r') in.fail("more text after character " + std::to_string(position));
    out.commit();
}

void add(CLI::App& armor, const char* name, const char* help,
         void (*run)(const std::string&, const std::string&)) {
    struct Paths {
        std::string in = "-", out = "-";
    };
    const auto paths = std::make_shared<Paths>();
    CLI::App* const command = armor.add_subcommand(name, help);
    command->add_option("IN", paths->in, "the input; - is standard input");
    command->add_option("OUT", paths->out, "the output; - is standard output");
    command->callback([paths, run] {
        try {
            run(paths->in, paths->out);
        } catch (const std::exception& error) {
            std::fprintf(stderr, "kestrel armor: %s\n", error.what());
            throw Exit{2};
        }
    });
}

}  // namespace

void addArmor(CLI::App& app) {
    CLI::App* const armor = app.add_subcommand("armor", "Turn files into printable text, and back");
    armor->require_subcommand(1);
    armor->footer(
        "The output appears only when it is complete.\n"
        "Examples:\n"
        "  kestrel armor encode thumbnail.png thumbnail.txt\n"
        "  tar c shots | kestrel armor encode > shots.txt\n"
        "  kestrel armor decode thumbnail.txt copy.png");
    add(*armor, "encode", "Write IN as text to OUT", encode);
    add(*armor, "decode", "Write the bytes of the text IN to OUT", decode);
}

}  // namespace kestrel::tools
