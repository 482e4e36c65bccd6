#include "SceneReader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "../Terminal.h"
#include "Text.h"

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
    /// The count read; 0 at the end.
    std::size_t read(char* bytes, std::size_t size) const {
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

std::string readAll(const Descriptor& file) {
    std::string bytes;
    for (;;) {
        const std::size_t before = bytes.size();
        bytes.resize(before + chunkSize);
        const std::size_t count = file.read(bytes.data() + before, chunkSize);
        bytes.resize(before + count);
        if (count == 0) return bytes;
    }
}

double countLines(const Descriptor& file) {
    std::string chunk(chunkSize, '\0');
    double lines = 0;
    while (const std::size_t count = file.read(chunk.data(), chunkSize)) {
        lines += static_cast<double>(std::count(chunk.data(), chunk.data() + count, '\n'));
    }
    return lines;
}

}  // namespace

std::unique_ptr<SceneReader> SceneReader::open(const std::string& path, SceneVisitor& visitor,
                                               FaultSink faults) {
    const Descriptor file(path);
    const struct stat status = file.status();
    if (S_ISDIR(status.st_mode)) throw std::runtime_error("it is a folder");
    const KSURL url(path == "-" ? "/dev/stdin" : path.c_str(), false);
    if (path != "-" && S_ISREG(status.st_mode)) {
        constexpr off_t longDocument = 16 << 20;  // shorter ones are done before a bar could show
        const double lines = status.st_size > longDocument && isatty(STDERR_FILENO) ? countLines(file) : 0;
        return std::unique_ptr<SceneReader>(new SceneReader(url, path, lines, visitor, std::move(faults)));
    }
    const std::string bytes = readAll(file);
    CFDataRef document = CFDataCreate(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes.data()),
                                      static_cast<CFIndex>(bytes.size()));
    std::unique_ptr<SceneReader> reader(new SceneReader(document, url, visitor, std::move(faults)));
    CFRelease(document);
    return reader;
}

SceneReader::SceneReader(CFDataRef document, const KSURL& url, SceneVisitor& visitor, FaultSink faults)
    : KSXMLReadStream(document, url), m_visitor(visitor), m_faults(std::move(faults)), m_progress("", 0) {}

SceneReader::SceneReader(const KSURL& url, const std::string& path, double lines, SceneVisitor& visitor,
                         FaultSink faults)
    : KSXMLReadStream(url), m_visitor(visitor), m_faults(std::move(faults)), m_progress(path, lines) {}

bool SceneReader::readDocument() {
    Document document;
    pushHandler(&document);
    const bool wellFormed = parse();
    m_progress.finish();
    if (!wellFormed) {
        const long line = getLineNumber();
        const std::string reason = utf8(getErrorDescription());
        fault(line, line ? reason.empty() ? "malformed" : reason : "it cannot be read");
        return false;
    }
    if (!document.hasProject() && !m_stopped) fault(0, "there is no project in it");
    return document.hasProject();
}

KSStreamElement* SceneReader::getElementInfo(const char* name) {
    if (isInterrupted() && !m_stopped) stop();
    if (++m_elementCount % 512 == 0) m_progress.update(static_cast<double>(getLineNumber()));
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
    m_faults(line, what);
}

void SceneReader::stop() {
    m_stopped = true;
    stopParse();
}

}  // namespace kestrel::tools::scene
