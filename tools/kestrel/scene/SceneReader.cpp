#include "SceneReader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <system_error>

#include "../Text.h"

namespace kestrel::tools::scene {
namespace {

constexpr std::size_t chunkSize = 1 << 20;

class Descriptor {
public:
    explicit Descriptor(const std::string& path)
        : m_fd(path == "-" ? dup(STDIN_FILENO) : ::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
        if (m_fd < 0) fail();
    }
    ~Descriptor() { close(m_fd); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    struct stat status() const {
        struct stat status {};
        if (fstat(m_fd, &status) != 0) fail();
        return status;
    }
    bool isTerminal() const { return isatty(m_fd) != 0; }
    /// The count read; 0 at the end.
    std::size_t read(UInt8* bytes, std::size_t size) const {
        ssize_t count;
        do count = ::read(m_fd, bytes, size);
        while (count < 0 && errno == EINTR && !isInterrupted());
        if (count < 0) fail();
        return static_cast<std::size_t>(count);
    }

private:
    [[noreturn]] static void fail() {
        throw std::runtime_error(std::error_code(errno, std::generic_category()).message());
    }

    int m_fd;
};

/// All that file gives, with the progress of that unless a person types it.
CFDataRef readAll(const Descriptor& file, std::size_t expectedSize) {
    struct Free {
        void operator()(UInt8* block) const { std::free(block); }
    };
    Progress progress = Progress::ofBytes(expectedSize);
    std::unique_ptr<UInt8, Free> block;
    std::size_t size = 0, capacity = 0;
    for (;;) {
        if (size == capacity) {
            // One byte more than is expected, so that the end shows without growing.
            capacity = std::max({chunkSize, expectedSize + 1, 2 * capacity});
            auto* larger = static_cast<UInt8*>(std::realloc(block.get(), capacity));
            if (!larger) throw std::runtime_error("it is too large for the memory");
            static_cast<void>(block.release());  // realloc has taken it
            block.reset(larger);
        }
        const std::size_t count = file.read(block.get() + size, std::min(chunkSize, capacity - size));
        if (count == 0) break;
        size += count;
        if (!file.isTerminal()) progress.moveTo(size);
    }
    CFDataRef data = CFDataCreateWithBytesNoCopy(kCFAllocatorDefault, block.get(), static_cast<CFIndex>(size),
                                                 kCFAllocatorMalloc);
    if (data) static_cast<void>(block.release());
    return data;
}

}  // namespace

std::unique_ptr<SceneReader> SceneReader::open(const std::string& path, SceneVisitor& visitor,
                                               FaultSink faults) {
    const Descriptor file(path);
    const struct stat status = file.status();
    if (S_ISDIR(status.st_mode)) throw std::runtime_error("it is a folder");
    const bool hasSize = S_ISREG(status.st_mode) && status.st_size > 0;
    CFDataRef document = readAll(file, hasSize ? static_cast<std::size_t>(status.st_size) : 0);
    const KSURL url(path == "-" ? "/dev/stdin" : path.c_str(), false);
    std::unique_ptr<SceneReader> reader(new SceneReader(document, url, visitor, std::move(faults)));
    CFRelease(document);
    return reader;
}

SceneReader::SceneReader(CFDataRef document, const KSURL& url, SceneVisitor& visitor, FaultSink faults)
    : KSXMLReadStream(document, url),
      m_visitor(visitor),
      m_faults(std::move(faults)),
      m_progress(Progress::ofBytes(getSize())) {}

bool SceneReader::readDocument() {
    Document document;
    pushHandler(&document);
    const bool wellFormed = parse();
    m_progress.hide();
    if (!wellFormed) {
        const long line = getLineNumber();
        const std::string reason = utf8(getErrorDescription());
        fault(line, line ? reason.empty() ? "malformed" : reason : "it cannot be read");
        return false;
    }
    if (!document.hasProject() && !m_stopped) fault(m_rootLine, "there is no project in it");
    return document.hasProject();
}

KSStreamElement* SceneReader::getElementInfo(const char* name) {
    if (isInterrupted() && !m_stopped) stop();
    if (m_elementCount == 0) m_rootLine = getLineNumber();
    if (++m_elementCount % 512 == 0 && m_showsProgress) m_progress.moveTo(getOffset());
    KSStreamElement* element = KSXMLReadStream::getElementInfo(name);
    while (!m_lines.empty() && m_lines.back().element != currentElement()) m_lines.pop_back();
    if (element) {
        m_lines.push_back({element, getLineNumber()});
    } else if (currentHandler() != &KSIgnoreElement::ignoreHandler) {
        ++m_unknownCount;
        if (m_strict) fault(getLineNumber(), "unknown element <" + printable(name ? name : "") + '>');
    }
    return element;
}

long SceneReader::lineOf(const KSStreamElement& element) const {
    const auto found = std::find_if(m_lines.rbegin(), m_lines.rend(),
                                    [&](const Line& line) { return line.element == &element; });
    return found == m_lines.rend() ? getLineNumber() : found->line;
}

void SceneReader::fault(long line, const std::string& what) {
    ++m_faultCount;
    m_progress.hide();
    m_faults(line, what);
}

void SceneReader::stop() {
    m_stopped = true;
    stopParse();
}

}  // namespace kestrel::tools::scene
