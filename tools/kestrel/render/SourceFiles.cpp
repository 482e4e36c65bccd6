#include "SourceFiles.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

namespace kestrel::tools::render {

SourceFiles::SourceFiles(const std::string& path, MissingPolicy missing)
    : m_list(FrameList::read(path)), m_missing(missing) {
    if (!isSequence()) member(0);
}

const SourceFile& SourceFiles::member(int number) {
    const int last = m_list.getFrames().back().number;
    const auto index = static_cast<std::size_t>(std::clamp(number, first(), last) - first());
    if (const auto& file = look(index)) return *file;
    const SourceFile* const other =
        isSequence() && m_missing != MissingPolicy::stop ? nearest(index) : nullptr;
    m_nearest[index] = other;
    if (!other) throw std::runtime_error(m_list.getFrames()[index].path + ": no such file");
    if (m_missing == MissingPolicy::hold) return *other;
    auto& black = m_black[index];
    if (!black) {
        black = *other;
        black->isBlack = true;
    }
    return *black;
}

const std::optional<SourceFile>& SourceFiles::look(std::size_t index) {
    const auto [entry, isNew] = m_looked.try_emplace(index);
    if (isNew) {
        namespace fs = std::filesystem;
        const std::string& path = m_list.getFrames()[index].path;
        std::error_code error;
        const bool isFile = fs::is_regular_file(path, error);
        const auto size = isFile ? fs::file_size(path, error) : 0;
        const auto modified = isFile && !error ? fs::last_write_time(path, error) : fs::file_time_type();
        if (isFile && !error)
            entry->second =
                SourceFile{path, size, static_cast<std::int64_t>(modified.time_since_epoch().count()), false};
    }
    return entry->second;
}

const SourceFile* SourceFiles::nearest(std::size_t index) {
    for (std::size_t i = index; i-- > 0;) {
        if (const auto& file = look(i)) return &*file;
        const auto known = m_nearest.find(i);  // there is nothing between it and index
        if (known != m_nearest.end()) return known->second;
    }
    for (std::size_t i = index + 1; i < m_list.getFrames().size(); ++i)
        if (const auto& file = look(i)) return &*file;
    return nullptr;
}

}  // namespace kestrel::tools::render
