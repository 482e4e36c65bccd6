#include "DocumentFile.h"

#include <sys/stat.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace kestrel::tools::scene {

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

DocumentFile::DocumentFile(const std::string& path) : m_file(path), m_path(path) {
    try {
        m_stream = std::make_unique<Stream>(KSURL(m_file.getPath().c_str(), false), m_size);
    } catch (const KSException&) {
        fail(errno);
    }
}

DocumentFile::~DocumentFile() = default;

KSFileWriteStream& DocumentFile::stream() { return *m_stream; }

void DocumentFile::commit() {
    errno = 0;
    m_stream.reset();
    const int error = errno;
    struct stat status {};
    if (stat(m_file.getPath().c_str(), &status) != 0) fail(errno);
    if (static_cast<unsigned long long>(status.st_size) != m_size) fail(error);
    m_file.commit();
}

void DocumentFile::fail(int error) const {
    throw std::runtime_error((m_path == "-" ? "standard output" : m_path) + ": " +
                             (error ? std::error_code(error, std::generic_category()).message()
                                    : "not all of it could be written"));
}

}  // namespace kestrel::tools::scene
