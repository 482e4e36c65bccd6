#include "Pictures.h"

#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

namespace kestrel::tools::render {
namespace {

constexpr unsigned int floatFormat = 9;

/// RGBA floats of the same size, by the library's own conversion of depths.
BitmapPointer toFloat(BitmapPointer source, const std::string& what) {
    if (source->getPixelFormat() == floatFormat) return source;
    BitmapPointer result = makeBitmap(source->getWidth(), source->getHeight(), floatFormat, what);
    result->copyWithScalingAndDepthConversion(*source);
    return result;
}

BitmapPointer makeSmaller(const KSBitmap& source, unsigned int side, const std::string& what) {
    BitmapPointer result = makeBitmap(side, side, source.getPixelFormat(), what);
    result->copyWithScaling(source);
    return result;
}

void premultiply(KSBitmap& bitmap, AlphaKind kind) {
    auto* pixel = reinterpret_cast<float*>(bitmap.getData());
    const std::size_t count = std::size_t{bitmap.getWidth()} * bitmap.getHeight();
    for (std::size_t i = 0; i < count; ++i, pixel += 4) {
        const float alpha = kind == AlphaKind::ignore ? 1 : pixel[3] > 0 ? std::min(pixel[3], 1.0f) : 0;
        if (kind == AlphaKind::straight)
            for (int c = 0; c < 3; ++c) pixel[c] *= alpha;
        pixel[3] = alpha;
    }
}

std::size_t bytesOf(const Picture& picture) { return picture ? picture->getAllocatedSize() : 0; }

}  // namespace

Picture Pictures::file(const std::string& path, AlphaKind alpha) {
    return get(std::to_string(static_cast<int>(alpha)) + path, [&] {
        BitmapPointer bitmap = toFloat(readImage(path), path);
        premultiply(*bitmap, alpha);
        return bitmap;
    });
}

Picture Pictures::checker(const scene::Checker& checker) {
    const std::string key = "checker " + std::to_string(checker.width) + ' ' +
                            std::to_string(checker.height) + ' ' + std::to_string(checker.square);
    return get(key, [&] {
        // Four squares of the library's board, of eight pixels a side, repeated at the wanted size.
        constexpr unsigned int side = 8, argb = 1;
        const BitmapPointer board = makeBitmap(2 * side, 2 * side, argb, key);
        KSMakeCheckerImage(board->getData(), 2 * side, 2 * side);
        board->convertToRGBA();
        const BitmapPointer squares = toFloat(makeSmaller(*board, 2, key), key);
        const auto* colors = reinterpret_cast<const float*>(squares->getData());

        const auto width = static_cast<unsigned>(checker.width),
                   height = static_cast<unsigned>(checker.height),
                   square = static_cast<unsigned>(checker.square);
        BitmapPointer result = makeBitmap(width, height, floatFormat, key);
        auto* pixel = reinterpret_cast<float*>(result->getData());
        for (unsigned int y = 0; y < height; ++y)
            for (unsigned int x = 0; x < width; ++x, pixel += 4)
                std::copy_n(colors + (y / square % 2 * 2 + x / square % 2) * 4, 4, pixel);
        return result;
    });
}

Picture Pictures::get(const std::string& key, const std::function<BitmapPointer()>& make) {
    std::shared_ptr<Entry> entry;
    {
        const std::lock_guard guard(m_mutex);
        std::shared_ptr<Entry>& known = m_entries[key];
        if (!known) known = std::make_shared<Entry>();
        known->lastUse = ++m_uses;
        entry = known;
    }
    Picture picture;
    bool isNew = false;
    {
        const std::lock_guard guard(entry->mutex);
        isNew = !entry->picture;
        if (isNew) entry->picture = make();
        picture = entry->picture;
    }
    if (isNew) makeRoom();
    return picture;
}

void Pictures::makeRoom() {
    const std::lock_guard guard(m_mutex);
    std::vector<std::pair<std::uint64_t, std::string>> idle;  // nobody else holds them
    std::size_t total = 0;
    for (const auto& [key, entry] : m_entries) {
        if (entry.use_count() > 1) continue;  // in the making, or being fetched
        const std::lock_guard entryGuard(entry->mutex);
        total += bytesOf(entry->picture);
        if (entry->picture.use_count() == 1) idle.emplace_back(entry->lastUse, key);
    }
    std::sort(idle.begin(), idle.end());
    for (const auto& [use, key] : idle) {
        if (total <= m_limit) break;
        total -= bytesOf(m_entries[key]->picture);
        m_entries.erase(key);
    }
}

}  // namespace kestrel::tools::render
