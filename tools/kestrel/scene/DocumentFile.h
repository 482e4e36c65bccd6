// tools/kestrel/scene/DocumentFile.h - a document on its way to the disk.
#pragma once

#include <kestrel/Kestrel.h>

#include <memory>
#include <string>

namespace kestrel::tools::scene {

/// A document is written to a file of its own first, and takes the place of path only when all of it is
/// safely on disk: until commit() has returned, whatever stood there stands. For "-" and for what is no
/// regular file (a pipe, a device) the finished document is sent there instead.
///
/// Errors     std::runtime_error with the reason.
class DocumentFile {
public:
    explicit DocumentFile(std::string path);
    ~DocumentFile();  ///< without commit, nothing has happened
    DocumentFile(const DocumentFile&) = delete;
    DocumentFile& operator=(const DocumentFile&) = delete;

    KSFileWriteStream& stream();
    unsigned long long size() const;  ///< bytes handed to the stream so far
    void commit();

private:
    class Stream;

    void replace();
    void send();

    std::string m_path;       // where the document goes in the end, links resolved
    std::string m_temporary;  // where it is; empty once it has gone
    bool m_replaces;
    std::unique_ptr<Stream> m_stream;
    unsigned long long m_size = 0;
};

}  // namespace kestrel::tools::scene
