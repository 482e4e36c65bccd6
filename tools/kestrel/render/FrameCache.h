// tools/kestrel/render/FrameCache.h - finished frames of earlier runs, found by what they show.
#pragma once

#include <kestrel/concurrency/KSMutex.h>

#include <string>

namespace kestrel::tools::render {

/// A folder of finished files, each under the digest of the text that describes it. An entry carries the
/// cache's version, that text and a digest of its bytes; one that does not match in all of them is as good as
/// none, and is replaced. Entries of other versions lie in folders of their own and are left alone.
///
/// Threads    any number, and any number of processes on one folder: entries appear complete.
/// Errors     none after the constructor: a cache that cannot be written is said once, and then only read.
class FrameCache {
public:
    /// @param folder  made if needed; empty for no cache. std::runtime_error when it cannot be made.
    explicit FrameCache(const std::string& folder);

    /// Writes the file of a description to path, atomically; false when there is none. std::runtime_error when
    /// it cannot be written.
    bool fetch(const std::string& description, const std::string& path);
    /// Keeps the file at path for a description.
    void store(const std::string& description, const std::string& path);
    /// What was wrong, to be told once; empty otherwise.
    std::string takeComplaint();

private:
    std::string entryPath(const std::string& description) const;
    void complain(const std::string& what);

    std::string m_folder;  // of this version
    KSMutex m_mutex;       // of the complaint
    std::string m_complaint;
    bool m_hasComplained = false;
};

}  // namespace kestrel::tools::render
