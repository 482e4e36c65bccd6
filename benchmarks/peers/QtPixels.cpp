// Division by alpha by Qt's QImage, in place as its own memory alone allows.
#include "../imaging/PixelOperations.h"

#include <sys/mman.h>
#include <QImage>
#include <QThreadPool>

#include <cstring>
#include <memory>

namespace {

/// Memory of more than a page, in large pages where the system has them, as those of our frames.
void preferLargePages(QImage& image) {
    auto start = reinterpret_cast<std::uintptr_t>(image.bits());
    const std::uintptr_t end = start + static_cast<std::uintptr_t>(image.sizeInBytes());
    start = (start + 4095) / 4096 * 4096;
    ::madvise(reinterpret_cast<void*>(start), end - start, MADV_HUGEPAGE);
}

void add(const char* operation, QImage::Format divided, QImage::Format multiplied) {
    addPixelPeer(operation, "Qt", [=](KSBitmap& to, KSBitmap&) {
        const auto image = std::make_shared<QImage>(static_cast<int>(to.getWidth()),
                                                    static_cast<int>(to.getHeight()), multiplied);
        preferLargePages(*image);
        QThreadPool::globalInstance()->setMaxThreadCount(1);
        std::memcpy(image->bits(), to.getData(), to.getSize());
        const PixelRun divide = [=] {
            image->reinterpretAsFormat(multiplied);
            image->convertTo(divided);
        };
        divide();
        std::memcpy(to.getData(), image->constBits(), to.getSize());
        return divide;
    });
}

[[maybe_unused]] const bool registered = [] {
    add("unpremultiply8", QImage::Format_RGBA8888, QImage::Format_RGBA8888_Premultiplied);
    add("unpremultiply16", QImage::Format_RGBA64, QImage::Format_RGBA64_Premultiplied);
    add("unpremultiplyHalf", QImage::Format_RGBA16FPx4, QImage::Format_RGBA16FPx4_Premultiplied);
    add("unpremultiplyFloat", QImage::Format_RGBA32FPx4, QImage::Format_RGBA32FPx4_Premultiplied);
    return true;
}();

}  // namespace
