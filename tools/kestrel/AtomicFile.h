// tools/kestrel/AtomicFile.h - a file that appears under its name only when it is complete and on disk.
#pragma once

#include <cstddef>
#include <string>

namespace kestrel::tools {

/// Takes output into a temporary file beside its target and moves it there at the end; without commit()
/// the target stays as it was. What is no regular file (a device, a pipe, "-" for standard output) gets a
/// copy of the finished temporary instead.
///
/// Names      the temporary keeps the target's extension, for writers that choose a format by it. A target
///            that is a symbolic link stays one: the file it points to is replaced.
/// Threads    one thread at a time; several objects may share a folder.
/// Errors     std::runtime_error of "TARGET: reason" (of the temporary's own path when that lies elsewhere
///            and cannot be written). Nothing is left behind.
/// Example
///     AtomicFile out("scene.xml");
///     out.write(text.data(), text.size());  // or let somebody else write the file out.getPath()
///     out.commit();
class AtomicFile {
public:
    explicit AtomicFile(const std::string& target);
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;
    ~AtomicFile();

    /// Where the output is collected.
    const std::string& getPath() const { return m_path; }
    /// Appends size bytes.
    void write(const void* bytes, std::size_t size);
    /// Brings the output to disk and to its name. Call it once, with nothing written afterwards.
    void commit();

private:
    [[noreturn]] void fail() const;
    void require(bool succeeded) const {
        if (!succeeded) fail();
    }
    void replaceTarget();
    void copyToTarget();

    std::string m_name;    // of the target, as it was given
    std::string m_target;  // with links resolved; empty for what gets a copy
    std::string m_path;    // of the temporary; empty when there is none
    int m_descriptor = -1;
};

/// Reads up to size bytes, all of them unless the input ends, whatever signals arrive. std::runtime_error of
/// "NAME: reason".
std::size_t readFully(int descriptor, void* bytes, std::size_t size, const std::string& name);

}  // namespace kestrel::tools
