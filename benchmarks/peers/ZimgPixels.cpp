// Operations on pixels by zimg, which works on planes: a frame is one plane of all its components.
#include "../imaging/PixelOperations.h"

#include <zimg.h>

#include <cstdlib>
#include <memory>
#include <stdexcept>

namespace {

zimg_image_format formatOf(const KSBitmap& bitmap) {
    const unsigned depth = bitmap.getPixelFormat();
    zimg_image_format format;
    zimg_image_format_default(&format, ZIMG_API_VERSION);
    format.width = 4 * bitmap.getWidth();
    format.height = bitmap.getHeight();
    format.pixel_type = depth == 9   ? ZIMG_PIXEL_FLOAT
                        : depth == 8 ? ZIMG_PIXEL_HALF
                        : depth == 4 ? ZIMG_PIXEL_WORD
                                     : ZIMG_PIXEL_BYTE;
    format.depth = bitmap.getBitsPerChannel();
    format.pixel_range = ZIMG_RANGE_FULL;
    return format;
}

template <typename Buffer>
Buffer bufferOf(KSBitmap& bitmap) {
    Buffer buffer{};
    buffer.version = ZIMG_API_VERSION;
    buffer.plane[0] = {bitmap.getData(), static_cast<std::ptrdiff_t>(bitmap.getSize() / bitmap.getHeight()),
                       ZIMG_BUFFER_MAX};
    return buffer;
}

PixelRun convert(KSBitmap& to, KSBitmap& from) {
    const zimg_image_format source = formatOf(from), target = formatOf(to);
    const std::shared_ptr<zimg_filter_graph> graph(zimg_filter_graph_build(&source, &target, nullptr),
                                                   zimg_filter_graph_free);
    std::size_t size = 0;
    if (!graph || zimg_filter_graph_get_tmp_size(graph.get(), &size) != 0)
        throw std::runtime_error("zimg has no way between these formats");
    const std::shared_ptr<void> scratch(std::aligned_alloc(64, (size + 63) / 64 * 64), std::free);
    return [graph, scratch, in = bufferOf<zimg_image_buffer_const>(from),
            out = bufferOf<zimg_image_buffer>(to)] {
        zimg_filter_graph_process(graph.get(), &in, &out, scratch.get(), nullptr, nullptr, nullptr, nullptr);
    };
}

[[maybe_unused]] const bool registered = [] {
    for (const char* operation :
         {"from8To16", "from16To8", "from8ToFloat", "from16ToFloat", "fromHalfToFloat", "fromHalfTo8",
          "fromHalfTo16", "fromFloatTo8", "fromFloatTo16"})
        addPixelPeer(operation, "zimg", convert);
    return true;
}();

}  // namespace
