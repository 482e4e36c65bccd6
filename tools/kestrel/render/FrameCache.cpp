#include "FrameCache.h"

#include <kestrel/serialization/KSHash128.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "../AtomicFile.h"
#include "../Text.h"
#include "FrameState.h"

namespace kestrel::tools::render {
namespace {

namespace fs = std::filesystem;

constexpr const char* version = "v1";

/// What stands before a file's bytes.
std::string headerOf(const std::string& description, std::string_view bytes) {
    const KSHash128 digest(reinterpret_cast<const unsigned char*>(bytes.data()),
                           static_cast<unsigned int>(bytes.size()));
    return std::string("kestrel frame ") + version + '\n' + std::to_string(bytes.size()) + ' ' +
           utf8(digest.getString()) + '\n' + description + '\n';
}

bool read(const std::string& path, std::string& bytes) {
    std::ifstream file(path, std::ios::binary);
    try {
        bytes.assign(std::istreambuf_iterator<char>(file), {});
    } catch (const std::ios_base::failure&) {  // such as a folder, or a bad disk
        return false;
    }
    return file.good() || file.eof();
}

}  // namespace

FrameCache::FrameCache(const std::string& folder) {
    if (folder.empty()) return;
    m_folder = (fs::path(folder) / version).string();
    std::error_code error;
    fs::create_directories(m_folder, error);
    if (error) throw std::runtime_error(folder + ": " + error.message());
}

std::string FrameCache::entryPath(const std::string& description) const {
    return m_folder + '/' + utf8(digestOf(description).getString());
}

bool FrameCache::fetch(const std::string& description, const std::string& path) {
    if (m_folder.empty()) return false;
    const std::string entry = entryPath(description);
    std::string content;
    if (!read(entry, content) || content.empty()) return false;
    // The header is made again from what follows it, and must be the one that stands there.
    const std::size_t size = headerOf(description, {}).size();  // less the digits of the true length
    const std::size_t mark = content.find('\n');
    const auto length = mark == std::string::npos ? std::nullopt
                                                  : parseNumber<std::size_t>(std::string_view(content).substr(
                                                        mark + 1, content.find(' ', mark) - mark - 1));
    const std::size_t header = length ? size - 1 + std::to_string(*length).size() : 0;
    if (!length || *length == 0 || content.size() != header + *length ||
        !content.starts_with(headerOf(description, std::string_view(content).substr(header)))) {
        complain(entry + ": damaged, so the frame is drawn again");
        return false;
    }
    AtomicFile file(path);
    file.write(content.data() + header, *length);
    file.commit();
    return true;
}

void FrameCache::store(const std::string& description, const std::string& path) {
    if (m_folder.empty()) return;
    try {
        std::string bytes;
        if (!read(path, bytes) || bytes.empty()) return;
        const std::string header = headerOf(description, bytes);
        AtomicFile entry(entryPath(description));
        entry.write(header.data(), header.size());
        entry.write(bytes.data(), bytes.size());
        entry.commit();
    } catch (const std::runtime_error& error) {
        complain(std::string("the cache does not grow: ") + error.what());
    }
}

void FrameCache::complain(const std::string& what) {
    const std::lock_guard guard(m_mutex);
    if (!m_hasComplained) m_complaint = what;
    m_hasComplained = true;
}

std::string FrameCache::takeComplaint() {
    const std::lock_guard guard(m_mutex);
    return std::move(m_complaint);
}

}  // namespace kestrel::tools::render
