// tools/kestrel/render/SourceFiles.h - the files behind a layer.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "../frames/FrameList.h"

namespace kestrel::tools::render {

/// What becomes of a sequence's member that is not there.
enum class MissingPolicy {
    stop,   ///< a fault, before the first frame
    hold,   ///< the nearest member before it, or else after it
    black,  ///< black of the size of that one
};

/// A file as it was when it was looked at: another size or time makes another picture of it.
struct SourceFile {
    std::string path;
    std::uintmax_t size = 0;
    std::int64_t modified = 0;  ///< in the file system's own clock
    bool isBlack = false;       ///< its place is taken by black
};

/// An image file or a numbered sequence. Looks at the disk for members that are asked for, once for each.
///
/// Threads    one at a time.
class SourceFiles {
public:
    /// @param path  with a placeholder for a sequence. std::runtime_error of "path: reason" without any file.
    SourceFiles(const std::string& path, MissingPolicy missing);

    /// The member that stands for a number; for a number outside the range the first or the last one. The
    /// answer lives as long as this. std::runtime_error of "path: reason" where the policy gives none.
    const SourceFile& member(int number);
    int first() const { return m_list.getFrames().front().number; }
    bool isSequence() const { return m_list.isSequence(); }
    /// The file, or every member of the sequence, whether it is there, has been asked for, or not.
    const std::vector<Frame>& getFrames() const { return m_list.getFrames(); }

private:
    const std::optional<SourceFile>& look(std::size_t index);
    const SourceFile* nearest(std::size_t index);

    FrameList m_list;
    MissingPolicy m_missing;
    std::map<std::size_t, std::optional<SourceFile>> m_looked, m_black;
    std::map<std::size_t, const SourceFile*> m_nearest;  // of missing members
};

}  // namespace kestrel::tools::render
