#include "AtomicFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <vector>

#include "Terminal.h"

namespace kestrel::tools {

namespace {

/// False, with errno, when not all bytes went out.
bool writeFully(int descriptor, const char* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t count = ::write(descriptor, bytes, size);
        if (count < 0 && errno == EINTR && !isInterrupted()) continue;
        if (count <= 0) return false;
        bytes += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

/// A new file of this folder, with a name of its own, readable and writable as the user's mask says.
int createIn(const std::filesystem::path& folder, const std::string& extension, std::string& path) {
    static std::atomic<unsigned> serial{0};
    int descriptor;
    do {
        path =
            folder / (".kestrel-" + std::to_string(::getpid()) + "-" + std::to_string(++serial) + extension);
        descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (descriptor < 0 && (errno == EEXIST || errno == EINTR));
    return descriptor;
}

}  // namespace

AtomicFile::AtomicFile(const std::string& target) : m_name(target) {
    struct stat status {};
    const bool exists = target != "-" && ::stat(target.c_str(), &status) == 0;
    if (exists && S_ISDIR(status.st_mode)) {
        errno = EISDIR;
        fail();
    }
    if (target == "-" || (exists && !S_ISREG(status.st_mode))) {
        const char* folder = std::getenv("TMPDIR");
        m_descriptor = createIn(folder && *folder ? folder : "/tmp", "", m_path);
    } else {
        const std::unique_ptr<char, decltype(&std::free)> resolved(
            exists ? ::realpath(target.c_str(), nullptr) : nullptr, &std::free);
        m_target = resolved ? resolved.get() : target;
        const std::filesystem::path path(m_target);
        m_descriptor =
            createIn(path.parent_path().empty() ? "." : path.parent_path(), path.extension(), m_path);
        if (m_descriptor >= 0 && exists) ::fchmod(m_descriptor, status.st_mode & 07777);
    }
    if (m_descriptor < 0) {
        m_path.clear();
        fail();
    }
}

AtomicFile::~AtomicFile() {
    if (m_descriptor >= 0) ::close(m_descriptor);
    if (!m_path.empty()) ::unlink(m_path.c_str());
}

void AtomicFile::write(const void* bytes, std::size_t size) {
    if (writeFully(m_descriptor, static_cast<const char*>(bytes), size)) return;
    const std::string reason = std::strerror(errno);
    throw std::runtime_error((m_target.empty() ? m_path : m_name) + ": " + reason);
}

void AtomicFile::commit() {
    if (m_target.empty())
        copyToTarget();
    else
        replaceTarget();
}

void AtomicFile::replaceTarget() {
    require(::fsync(m_descriptor) == 0);
    require(::rename(m_path.c_str(), m_target.c_str()) == 0);
    const std::filesystem::path folder = std::filesystem::path(m_target).parent_path();
    m_path.clear();
    const int descriptor = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;  // the file is in place; only a crash of the machine could still undo it
    ::fsync(descriptor);
    ::close(descriptor);
}

void AtomicFile::copyToTarget() {
    // By name: another writer may have put a file of its own where the temporary was.
    const int from = ::open(m_path.c_str(), O_RDONLY | O_CLOEXEC);
    require(from >= 0);
    const int to =
        m_name == "-" ? ::dup(STDOUT_FILENO) : ::open(m_name.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
    bool good = to >= 0;
    int reason = errno;
    std::vector<char> part(1 << 16);
    try {
        while (good) {
            const std::size_t count = readFully(from, part.data(), part.size(), m_name);
            if (count == 0) break;
            good = writeFully(to, part.data(), count);
            reason = errno;
        }
    } catch (...) {
        ::close(from);
        if (to >= 0) ::close(to);
        throw;
    }
    ::close(from);
    if (to >= 0) ::close(to);
    errno = reason;
    require(good);
}

void AtomicFile::fail() const {
    throw std::runtime_error((m_name == "-" ? "standard output" : m_name) + ": " + std::strerror(errno));
}

std::size_t readFully(int descriptor, void* bytes, std::size_t size, const std::string& name) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count = ::read(descriptor, static_cast<char*>(bytes) + done, size - done);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throw std::runtime_error(name + ": " + std::strerror(errno));
        if (count == 0) break;
        done += static_cast<std::size_t>(count);
    }
    return done;
}

}  // namespace kestrel::tools
