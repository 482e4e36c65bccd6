// tools/kestrel/frames/FrameList.h - single files and numbered sequences as lists of frames.
#pragma once

#include <kestrel/files/KSURL.h>

#include <string>
#include <vector>

namespace kestrel::tools {

/// One file and its number; a single file has the number 0.
struct Frame {
    int number;
    std::string path;
};

/// A file, or a numbered sequence such as "shot.[####].exr:1:250" or, with the range taken from the files
/// that are there, "shot.[####].exr".
class FrameList {
public:
    /// Looks at the folder for a sequence without a range. Throws std::runtime_error with the text and the
    /// reason when there is nothing.
    static FrameList read(const std::string& text);

    bool isSequence() const { return m_isSequence; }
    const std::string& getText() const { return m_text; }
    /// Every number of the range, also those whose files are missing.
    const std::vector<Frame>& getFrames() const { return m_frames; }

    /// Keeps the numbers from first to last only.
    void restrictTo(int first, int last);
    /// Where frame `index` with this number goes, when this text names outputs: a sequence with a range
    /// counts from its start, one without takes the number itself.
    static std::string outputPath(const std::string& text, std::size_t index, int number);

private:
    std::string m_text;
    bool m_isSequence = false;
    std::vector<Frame> m_frames;
};

/// The name of a file whatever it is called, so that an output is known for an input.
std::string identity(const std::string& path);

/// "1-5, 9, 12-20".
std::string formatRanges(const std::vector<int>& numbers);

}  // namespace kestrel::tools
