// tools/kestrel/render/Pictures.h - decoded sources, kept while they are wanted.
#pragma once

#include <kestrel/concurrency/KSMutex.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "../frames/ImageFile.h"
#include "../scene/Scene.h"

namespace kestrel::tools::render {

/// What the alpha of a file means.
enum class AlphaKind { straight, premultiplied, ignore };

/// Premultiplied RGBA floats with alphas in 0 to 1.
using Picture = std::shared_ptr<const KSBitmap>;

/// The pictures of a run, each decoded once however many layers, frames and threads want it. Those that nobody
/// uses leave, the least recent first, when all together hold more than a limit.
///
/// Threads    any number.
/// Errors     ImageError of "path: reason".
class Pictures {
public:
    /// @param limit  bytes of pixels
    explicit Pictures(std::size_t limit) : m_limit(limit) {}

    Picture file(const std::string& path, AlphaKind alpha);
    Picture checker(const scene::Checker& checker);

private:
    struct Entry {
        KSMutex mutex;  // held while the picture is made
        Picture picture;
        std::uint64_t lastUse = 0;
    };
    Picture get(const std::string& key, const std::function<BitmapPointer()>& make);
    void makeRoom();

    const std::size_t m_limit;
    KSMutex m_mutex;  // of all that follows
    std::map<std::string, std::shared_ptr<Entry>> m_entries;
    std::uint64_t m_uses = 0;
};

}  // namespace kestrel::tools::render
