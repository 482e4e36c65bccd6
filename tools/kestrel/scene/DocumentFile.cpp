#include "DocumentFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace kestrel::tools::scene {
namespace {

[[noreturn]] void fail(int error) {
    throw std::runtime_error(error ? std::error_code(error, std::generic_category()).message()
                                   : "not all of it could be written");
}

void check(bool good) {
    if (!good) fail(errno);
}

/// An open descriptor.
class Descriptor {
public:
    explicit Descriptor(int fd) : m_fd(fd) { check(fd >= 0); }
    ~Descriptor() { close(m_fd); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    operator int() const { return m_fd; }

private:
    int m_fd;
};

std::string folderOf(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

mode_t creationMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

}  // namespace

/// The library's stream, with a count of what it was given: the end of a document leaves its buffer in the
/// destructor, which cannot say whether that worked.
class DocumentFile::Stream final : public KSFileWriteStream {
public:
    Stream(const KSURL& url, unsigned long long& size) : KSFileWriteStream(url), m_size(size) {}
    unsigned long long write(const void* bytes, unsigned long long length) override {
        m_size += length;
        return KSFileWriteStream::write(bytes, length);
    }

private:
    unsigned long long& m_size;
};

DocumentFile::DocumentFile(std::string path) : m_path(std::move(path)), m_replaces(m_path != "-") {
    mode_t mode = creationMode();
    struct stat status {};
    if (m_replaces && stat(m_path.c_str(), &status) == 0) {
        if (S_ISDIR(status.st_mode)) fail(EISDIR);
        check(access(m_path.c_str(), W_OK) == 0);
        m_replaces = S_ISREG(status.st_mode);
        if (m_replaces) {
            mode = status.st_mode & 07777;
            if (char* resolved = realpath(m_path.c_str(), nullptr)) {
                m_path = resolved;
                std::free(resolved);
            }
        }
    }
    std::string name = m_replaces ? folderOf(m_path) : std::filesystem::temp_directory_path().string();
    name += "/.kestrel-XXXXXX";
    const Descriptor file(mkostemp(name.data(), O_CLOEXEC));
    m_temporary = name;
    if (m_replaces) check(fchmod(file, mode) == 0);
    try {
        m_stream = std::make_unique<Stream>(KSURL(name.c_str(), false), m_size);
    } catch (const KSException&) {
        const int error = errno;
        unlink(name.c_str());
        fail(error);
    }
}

DocumentFile::~DocumentFile() {
    m_stream.reset();
    if (!m_temporary.empty()) unlink(m_temporary.c_str());
}

KSFileWriteStream& DocumentFile::stream() { return *m_stream; }
unsigned long long DocumentFile::size() const { return m_size; }

void DocumentFile::commit() {
    errno = 0;
    m_stream.reset();
    const int error = errno;
    struct stat status {};
    check(stat(m_temporary.c_str(), &status) == 0);
    if (static_cast<unsigned long long>(status.st_size) != m_size) fail(error);
    m_replaces ? replace() : send();
}

void DocumentFile::replace() {
    {
        const Descriptor file(open(m_temporary.c_str(), O_RDONLY | O_CLOEXEC));
        check(fsync(file) == 0);
    }
    check(rename(m_temporary.c_str(), m_path.c_str()) == 0);
    m_temporary.clear();
    const Descriptor folder(open(folderOf(m_path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    fsync(folder);  // some file systems cannot; the document itself is safe
}

void DocumentFile::send() {
    const Descriptor from(open(m_temporary.c_str(), O_RDONLY | O_CLOEXEC));
    const Descriptor to(m_path == "-" ? dup(STDOUT_FILENO)
                                      : open(m_path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY));
    std::string chunk(1 << 16, '\0');
    for (;;) {
        ssize_t count = read(from, chunk.data(), chunk.size());
        if (count < 0 && errno == EINTR) continue;
        check(count >= 0);
        if (count == 0) break;
        for (ssize_t done = 0; done < count;) {
            const ssize_t written = write(to, chunk.data() + done, static_cast<std::size_t>(count - done));
            if (written < 0 && errno == EINTR) continue;
            check(written >= 0);
            done += written;
        }
    }
}

}  // namespace kestrel::tools::scene
