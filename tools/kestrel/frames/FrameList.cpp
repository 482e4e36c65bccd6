#include "FrameList.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "../Text.h"

namespace kestrel::tools {

namespace {

namespace fs = std::filesystem;

constexpr long long longestRange = 10'000'000;

/// The text of one member of a sequence without a range, taken apart at its number.
struct Pattern {
    explicit Pattern(const std::string& text) {
        const std::size_t close = text.rfind(']');
        const std::size_t open = text.rfind('[', close);
        const fs::path before(text.substr(0, open));
        folder = before.parent_path();
        prefix = before.filename().string();
        width = text.find('@', open) < close ? 0 : close - open - 1;
        suffix = text.substr(close + 1);
    }

    /// The number in a file's name; -1 when the name is not one that the pattern makes.
    int numberOf(std::string_view name) const {
        if (!name.starts_with(prefix) || !name.ends_with(suffix) ||
            name.size() <= prefix.size() + suffix.size())
            return -1;
        const std::string_view digits =
            name.substr(prefix.size(), name.size() - prefix.size() - suffix.size());
        const auto number = parseNumber<int>(digits);
        if (!number || *number < 0 || digits[0] == '-') return -1;
        const bool padded = digits.size() == width;
        const bool natural = digits == std::to_string(*number);
        return padded || (natural && digits.size() > width) ? *number : -1;
    }

    fs::path folder;
    std::string prefix, suffix;
    std::size_t width;  // of a padded number; 0 for an unpadded one
};

std::vector<int> numbersOnDisk(const std::string& text) {
    const Pattern pattern(text);
    std::vector<int> numbers;
    std::error_code error;
    for (fs::directory_iterator entry(pattern.folder.empty() ? "." : pattern.folder, error), end;
         !error && entry != end; entry.increment(error))
        if (const int number = pattern.numberOf(entry->path().filename().string()); number >= 0)
            numbers.push_back(number);
    if (error) throw std::runtime_error(text + ": " + error.message());
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

}  // namespace

FrameList FrameList::read(const std::string& text) {
    FrameList list;
    list.m_text = text;
    const KSURL url(text.c_str(), false);
    list.m_isSequence = url.isSequence();
    if (!list.m_isSequence) {
        list.m_frames.push_back({0, text});
        return list;
    }

    int first = url.getSequenceStart();
    int last = url.getSequenceEnd();
    const bool hasRange = first >= 0 && last >= 0;
    if (!hasRange) {
        const std::vector<int> numbers = numbersOnDisk(text);
        if (numbers.empty()) throw std::runtime_error(text + ": no frames of this sequence");
        first = numbers.front();
        last = numbers.back();
    }
    if (last < first || static_cast<long long>(last) - first >= longestRange)
        throw std::runtime_error(text + ": no range of frames");
    for (int number = first; number <= last; ++number) {
        // Without a range, members are numbered from 0.
        const auto index = static_cast<unsigned>(hasRange ? number - first : number);
        list.m_frames.push_back({number, filePath(url.getURLforIndex(index))});
        if (number == last) break;  // the largest int
    }
    return list;
}

void FrameList::restrictTo(int first, int last) {
    std::erase_if(m_frames, [&](const Frame& frame) { return frame.number < first || frame.number > last; });
}

std::string FrameList::outputPath(const std::string& text, std::size_t index, int number) {
    const KSURL url(text.c_str(), false);
    if (!url.isSequence()) return text;
    const bool hasRange = url.getSequenceStart() >= 0 && url.getSequenceEnd() >= 0;
    const KSURL member =
        url.getURLforIndex(hasRange ? static_cast<unsigned>(index) : static_cast<unsigned>(number));
    if (member.empty()) throw std::runtime_error(text + ": the range is shorter than the number of frames");
    return filePath(member);
}

std::string identity(const std::string& path) {
    std::error_code error;
    const fs::path known = fs::weakly_canonical(path, error);
    return error ? path : known.string();
}

std::string formatRanges(const std::vector<int>& numbers) {
    std::string text;
    for (std::size_t i = 0; i < numbers.size();) {
        std::size_t end = i + 1;
        while (end < numbers.size() && numbers[end] == numbers[end - 1] + 1) ++end;
        text += (text.empty() ? "" : ", ") + std::to_string(numbers[i]);
        if (end - i > 1) text += "-" + std::to_string(numbers[end - 1]);
        i = end;
    }
    return text;
}

}  // namespace kestrel::tools
