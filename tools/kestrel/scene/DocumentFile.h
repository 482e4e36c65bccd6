// tools/kestrel/scene/DocumentFile.h - a document on its way to the disk.
#pragma once

#include <kestrel/Kestrel.h>

#include <memory>
#include <string>

#include "../AtomicFile.h"

namespace kestrel::tools::scene {

/// A scene document that takes the place of path only when all of it is safely on disk; see AtomicFile.
///
/// Errors     std::runtime_error of "PATH: reason".
class DocumentFile {
public:
    explicit DocumentFile(const std::string& path);
    ~DocumentFile();  ///< without commit, nothing has happened
    DocumentFile(const DocumentFile&) = delete;
    DocumentFile& operator=(const DocumentFile&) = delete;

    KSFileWriteStream& stream();
    unsigned long long size() const { return m_size; }  ///< bytes handed to the stream so far
    void commit();
    /// Throws the error of errno, or a general one when that is 0.
    [[noreturn]] void fail(int error) const;

private:
    class Stream;

    AtomicFile m_file;
    std::string m_path;
    std::unique_ptr<Stream> m_stream;
    unsigned long long m_size = 0;
};

}  // namespace kestrel::tools::scene
