#include <kestrel/platform/CFBundle.h>

#include <kestrel/platform/detail/EmbeddedTables.h>
#include <kestrel/platform/detail/StringObject.h>
#include <kestrel/platform/detail/StringTable.h>
#include <kestrel/platform/detail/UserLocale.h>
#include <kestrel/platform/detail/Utf8.h>

#include <dlfcn.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

using namespace kestrel::detail;
namespace fs = std::filesystem;

struct __CFBundle final : PlatformObject {
    explicit __CFBundle(CFStringRef name) : identifier(static_cast<CFStringRef>(CFRetain(name))) {}
    ~__CFBundle() override { CFRelease(identifier); }
    std::string describe() const override { return "bundle " + identifier->describe(); }

    const CFStringRef identifier;
};

namespace {

bool isFolder(const fs::path& path) {
    std::error_code ignored;
    return fs::is_directory(path, ignored);
}

/// What a file holds; nothing when there is no such file. Other failures are reported.
std::string readFile(const fs::path& path) {
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    std::string bytes;
    const std::unique_ptr<std::FILE, Close> file(std::fopen(path.c_str(), "rbe"));
    char piece[4096];
    std::size_t count = 0;
    while (file && (count = std::fread(piece, 1, sizeof piece, file.get())) > 0) bytes.append(piece, count);
    if (file ? std::ferror(file.get()) != 0 : errno != ENOENT && errno != ENOTDIR)
        std::fprintf(stderr, "%s: cannot be read: %s\n", path.c_str(), std::strerror(errno));
    return bytes;
}

/// Everything that bundles share: the folders, the bundles that were asked for, the tables that were read.
class Library {
public:
    static Library& get() {
        static Library& library = *new Library;  // lives until the process ends, as the bundles do
        return library;
    }

    void addFolder(fs::path folder) {
        const std::lock_guard lock(m_mutex);
        m_folders.insert(m_folders.begin(), std::move(folder));
        m_tables.clear();
    }

    CFBundleRef findBundle(CFStringRef identifier) {
        const std::string name = utf8Of(unitsOf(identifier));
        if (name.empty() || name[0] == '.' ||
            name.find_first_of(std::string_view("/\0", 2)) != std::string::npos)
            return nullptr;
        const std::lock_guard lock(m_mutex);
        CFBundleRef& bundle = m_bundles[name];
        if (!bundle &&
            (name == KESTREL_BUNDLE_IDENTIFIER ||
             std::ranges::any_of(m_folders, [&](const fs::path& f) { return isFolder(f / name); })))
            bundle = new __CFBundle(identifier);
        return bundle;
    }

    /// The text of key with a reference for the caller, null when no table has it.
    CFStringRef copyText(CFBundleRef bundle, CFStringRef key, CFStringRef tableName) {
        const std::string identifier = utf8Of(unitsOf(bundle->identifier));
        const std::string name = utf8Of(unitsOf(key));
        const std::string file = (tableName ? utf8Of(unitsOf(tableName)) : "Localizable") + ".strings";
        if (file.find('/') != std::string::npos) return nullptr;
        const std::vector<std::string> locales = localeFallbacks(userLocale());
        const std::lock_guard lock(m_mutex);
        for (const std::string& locale : locales) {
            const std::string path = locale + ".lproj/" + file;
            for (const fs::path& folder : m_folders)
                if (CFStringRef text = tableAt(folder / identifier / path).find(name)) return copy(text);
            if (identifier != KESTREL_BUNDLE_IDENTIFIER) continue;
            for (const EmbeddedTable& table : embeddedTables())
                if (table.path == path)
                    if (CFStringRef text = tableOf(path, table.bytes).find(name)) return copy(text);
        }
        return nullptr;
    }

    /// The folders that hold tables of the bundle, a line each.
    std::string listFolders(CFBundleRef bundle) {
        const std::string name = utf8Of(unitsOf(bundle->identifier));
        const std::lock_guard lock(m_mutex);
        std::string lines;
        for (const fs::path& folder : m_folders)
            if (isFolder(folder / name))
                lines += (lines.empty() ? "" : "\n") + (folder / name).lexically_normal().string();
        return lines;
    }

private:
    Library() {
        // Beside the library's own folder, where an installation and the build tree both keep them, also
        // after a move; then where this version was configured to be installed.
        Dl_info info{};
        std::error_code ignored;
        if (dladdr(&anchor, &info) && info.dli_fname)
            m_folders.push_back(fs::absolute(info.dli_fname, ignored).parent_path() / "../share/kestrel");
        m_folders.emplace_back(KESTREL_RESOURCE_DIR);
    }

    static CFStringRef copy(CFStringRef text) { return CFStringCreateCopy(kCFAllocatorDefault, text); }

    /// The table in a file; an empty one when there is no such file.
    const StringTable& tableAt(const fs::path& path) {
        if (const auto known = m_tables.find(path); known != m_tables.end()) return *known->second;
        return tableOf(path, readFile(path));
    }
    const StringTable& tableOf(const fs::path& path, std::string_view bytes) {
        std::unique_ptr<StringTable>& table = m_tables[path];
        if (!table) {
            table = std::make_unique<StringTable>(bytes, path.native());
            if (!table->getError().empty()) std::fprintf(stderr, "%s\n", table->getError().c_str());
        }
        return *table;
    }

    static constexpr char anchor = 0;  // an address within the library

    std::mutex m_mutex;
    std::vector<fs::path> m_folders;
    std::map<std::string, CFBundleRef> m_bundles;
    std::map<fs::path, std::unique_ptr<StringTable>> m_tables;
};

}  // namespace

bool CFBundleAddSearchFolder(const char* path) {
    if (!path || !isFolder(path)) return false;
    std::error_code failure;
    fs::path whole = fs::absolute(path, failure);  // whatever the current folder is later
    if (failure) return false;
    Library::get().addFolder(std::move(whole));
    return true;
}

CFBundleRef CFBundleGetBundleWithIdentifier(CFStringRef identifier) {
    return Library::get().findBundle(identifier);
}

CFStringRef CFBundleGetIdentifier(CFBundleRef bundle) { return bundle ? bundle->identifier : nullptr; }

CFStringRef CFBundleCopyTableFolders(CFBundleRef bundle) {
    if (!bundle) return nullptr;
    const std::string folders = Library::get().listFolders(bundle);
    return CFStringCreateWithCString(nullptr, folders.c_str(), kCFStringEncodingUTF8);
}

CFStringRef CFBundleCopyLocalizedString(CFBundleRef bundle, CFStringRef key, CFStringRef value,
                                        CFStringRef tableName) {
    if (bundle && key)
        if (CFStringRef text = Library::get().copyText(bundle, key, tableName)) return text;
    const bool hasValue = CFStringGetLength(value) > 0;
    return CFStringCreateCopy(kCFAllocatorDefault, hasValue || !key ? value : key);
}
