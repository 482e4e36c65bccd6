#include "ImageFile.h"

#include <Imath/half.h>
#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <filesystem>
#include <string_view>
#include <vector>

#include "../AtomicFile.h"

namespace kestrel::tools {

namespace {

namespace fs = std::filesystem;

struct Depth {
    const char* name;
    unsigned int format;  // of the bitmap, RGBA
    OIIO::TypeDesc::BASETYPE type;
};
// In the order of KSBitDepth::Type.
constexpr Depth depths[] = {
    {"8 bits", 0, OIIO::TypeDesc::UINT8},
    {"16 bits", 4, OIIO::TypeDesc::UINT16},
    {"half", 8, OIIO::TypeDesc::HALF},
    {"float", 9, OIIO::TypeDesc::FLOAT},
};

struct FileFormat {
    std::string_view extension;
    std::array<bool, 4> holds;  // by KSBitDepth::Type
    bool hasAlpha;
};
constexpr FileFormat fileFormats[] = {
    {"exr", {false, false, true, true}, true},   {"png", {true, true, false, false}, true},
    {"tif", {true, true, true, true}, true},     {"tiff", {true, true, true, true}, true},
    {"dpx", {true, true, false, false}, true},   {"tga", {true, false, false, false}, true},
    {"jpg", {true, false, false, false}, false}, {"jpeg", {true, false, false, false}, false},
};

const FileFormat& fileFormatOf(const std::string& path) {
    std::string extension = fs::path(path).extension().string();
    for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    for (const FileFormat& format : fileFormats)
        if (!extension.empty() && format.extension == std::string_view(extension).substr(1)) return format;
    throw ImageError(path +
                     ": no image format that can be written; use .exr, .png, .tif, .dpx, .tga or .jpg");
}

KSBitDepth::Type depthOfType(OIIO::TypeDesc type) {
    switch (type.basetype) {
        case OIIO::TypeDesc::UINT8:
        case OIIO::TypeDesc::INT8:
            return KSBitDepth::INTEGER_8;
        case OIIO::TypeDesc::UINT16:
        case OIIO::TypeDesc::INT16:
            return KSBitDepth::INTEGER_16;
        case OIIO::TypeDesc::HALF:
            return KSBitDepth::HALF;
        default:
            return KSBitDepth::FLOAT;
    }
}

std::string lastError() {
    std::string error = OIIO::geterror();
    while (!error.empty() && std::isspace(static_cast<unsigned char>(error.back()))) error.pop_back();
    return error.empty() ? "not an image that can be read" : error;
}

std::unique_ptr<OIIO::ImageInput> openImage(const std::string& path) {
    if (std::error_code error; !fs::exists(path, error)) throw ImageError(path + ": no such file");
    OIIO::ImageSpec wishes;
    wishes.attribute("oiio:UnassociatedAlpha", 1);  // pixels as they stand in the file
    wishes.attribute("oiio:RawColor", 1);
    auto input = OIIO::ImageInput::open(path, &wishes);
    if (!input) throw ImageError(path + ": " + lastError());
    const OIIO::ImageSpec& spec = input->spec();
    if (spec.width < 1 || spec.height < 1 || spec.nchannels < 1 || spec.depth > 1)
        throw ImageError(path + ": no flat picture");
    if (spec.width > 65536 || spec.height > 65536)
        throw ImageError(path + ": larger than 65536 pixels a side");
    return input;
}

/// Where each of R, G, B and A comes from in the file; -1 for an alpha that it does not have.
std::array<int, 4> channelSources(const OIIO::ImageSpec& spec) {
    const auto named = [&](const char* name) {
        for (int i = 0; i < spec.nchannels; ++i)
            if (spec.channelnames[static_cast<std::size_t>(i)] == name) return i;
        return -1;
    };
    if (named("R") >= 0 && named("G") >= 0 && named("B") >= 0)
        return {named("R"), named("G"), named("B"), named("A")};
    if (spec.nchannels < 3) return {0, 0, 0, spec.nchannels == 2 ? 1 : -1};
    return {0, 1, 2, spec.nchannels > 3 ? 3 : -1};
}

/// Sorts the file's channels into the RGBA pixels of one row.
template <class Component>
void spreadRow(const Component* source, int channels, const std::array<int, 4>& from, Component opaque,
               Component* target, int pixels) {
    for (int x = 0; x < pixels; ++x, source += channels)
        for (const int channel : from) *target++ = channel < 0 ? opaque : source[channel];
}

/// Reads all rows, each placed where the file's data window lies within its display window.
template <class Component>
void readRows(OIIO::ImageInput& input, KSBitmap& bitmap, OIIO::TypeDesc type, Component opaque,
              const std::string& path) {
    const OIIO::ImageSpec spec = input.spec();
    const std::array<int, 4> from = channelSources(spec);
    std::vector<Component> pixels(static_cast<std::size_t>(spec.width) *
                                  static_cast<std::size_t>(spec.height) *
                                  static_cast<std::size_t>(spec.nchannels));
    const bool isRead = input.read_image(0, 0, 0, spec.nchannels, type, pixels.data());
    if (!isRead || input.has_error()) {
        const std::string error = input.geterror();
        throw ImageError(path + ": " + (error.empty() ? "damaged" : error));
    }
    const int width = static_cast<int>(bitmap.getWidth());
    const int height = static_cast<int>(bitmap.getHeight());
    const int left = spec.x - spec.full_x;
    const int top = spec.y - spec.full_y;
    const int skip = std::clamp(-left, 0, spec.width);
    const int start = std::clamp(left, 0, width);
    const int count = std::min(spec.width - skip, width - start);
    auto* const target = reinterpret_cast<Component*>(bitmap.getData());
    for (int y = 0; y < spec.height && count > 0; ++y) {
        if (y + top < 0 || y + top >= height) continue;
        const auto row = static_cast<std::size_t>(y) * static_cast<std::size_t>(spec.width) +
                         static_cast<std::size_t>(skip);
        const auto place = static_cast<std::size_t>(y + top) * static_cast<std::size_t>(width) +
                           static_cast<std::size_t>(start);
        spreadRow(pixels.data() + row * static_cast<std::size_t>(spec.nchannels), spec.nchannels, from,
                  opaque, target + place * 4, count);
    }
}

/// The bytes of the file; collected in memory, because not every writer notices that the disk is full.
std::vector<unsigned char> encode(const std::string& path, const KSBitmap& bitmap) {
    const Depth& depth = depths[depthOfFormat(bitmap.getPixelFormat())];
    const int channels = fileFormatOf(path).hasAlpha ? 4 : 3;
    std::vector<unsigned char> bytes;
    OIIO::Filesystem::IOVecOutput memory(bytes);
    auto output = OIIO::ImageOutput::create(path);
    if (!output || !output->set_ioproxy(&memory)) throw ImageError(path + ": " + lastError());
    OIIO::ImageSpec spec(static_cast<int>(bitmap.getWidth()), static_cast<int>(bitmap.getHeight()), channels,
                         depth.type);
    if (channels == 4) spec.alpha_channel = 3;
    spec.attribute("oiio:UnassociatedAlpha", 1);
    spec.attribute("oiio:RawColor", 1);
    spec.attribute("Software", "kestrel");
    // Otherwise writers put the present time there, and equal pictures would be files that differ.
    spec.attribute("DateTime", "1970:01:01 00:00:00");
    const auto stride = static_cast<OIIO::stride_t>(4 * bitmap.getBitsPerChannel() / 8);
    if (!output->open(path, spec) || !output->write_image(depth.type, bitmap.getData(), stride) ||
        !output->close())
        throw ImageError(path + ": " + output->geterror());
    return bytes;
}

}  // namespace

BitmapPointer makeBitmap(unsigned int width, unsigned int height, unsigned int pixelFormat,
                         const std::string& what) {
    BitmapPointer bitmap(KSCreateBitmap(width, height, pixelFormat));
    if (!bitmap || !bitmap->getData())
        throw ImageError(what + ": no memory for " + std::to_string(width) + "x" + std::to_string(height) +
                         " pixels");
    return bitmap;
}

std::string ImageInfo::describe() const {
    return std::to_string(width) + "x" + std::to_string(height) + ", " + std::to_string(channels) +
           (channels == 1 ? " channel, " : " channels, ") + depthName(depth) + ", " + format;
}

ImageInfo readImageInfo(const std::string& path) {
    const auto input = openImage(path);
    const OIIO::ImageSpec& spec = input->spec();
    return {static_cast<unsigned>(spec.full_width), static_cast<unsigned>(spec.full_height),
            static_cast<unsigned>(spec.nchannels), depthOfType(spec.format), input->format_name()};
}

BitmapPointer readImage(const std::string& path) {
    const auto input = openImage(path);
    const OIIO::ImageSpec& spec = input->spec();
    const KSBitDepth::Type depth = depthOfType(spec.format);
    const auto width = static_cast<unsigned>(spec.full_width > 0 ? spec.full_width : spec.width);
    const auto height = static_cast<unsigned>(spec.full_height > 0 ? spec.full_height : spec.height);
    BitmapPointer bitmap = makeBitmap(width, height, formatOfDepth(depth), path);
    switch (depth) {
        case KSBitDepth::INTEGER_8:
            readRows<std::uint8_t>(*input, *bitmap, OIIO::TypeDesc::UINT8, 255, path);
            break;
        case KSBitDepth::INTEGER_16:
            readRows<std::uint16_t>(*input, *bitmap, OIIO::TypeDesc::UINT16, 65535, path);
            break;
        case KSBitDepth::HALF:
            readRows<half>(*input, *bitmap, OIIO::TypeDesc::HALF, half(1), path);
            break;
        case KSBitDepth::FLOAT:
            readRows<float>(*input, *bitmap, OIIO::TypeDesc::FLOAT, 1, path);
            break;
    }
    return bitmap;
}

void writeImage(const std::string& path, const KSBitmap& bitmap) {
    AtomicFile file(path);
    const std::vector<unsigned char> bytes = encode(path, bitmap);
    file.write(bytes.data(), bytes.size());
    file.commit();
}

KSBitDepth::Type depthFor(const std::string& path, std::optional<KSBitDepth::Type> wanted,
                          KSBitDepth::Type usual) {
    const FileFormat& format = fileFormatOf(path);
    const auto holds = [&](int depth) { return format.holds[static_cast<std::size_t>(depth)]; };
    if (wanted) {
        if (!holds(*wanted)) throw ImageError(path + ": this format cannot hold " + depthName(*wanted));
        return *wanted;
    }
    for (int depth = usual; depth < 4; ++depth)  // more rather than less
        if (holds(depth)) return static_cast<KSBitDepth::Type>(depth);
    for (int depth = usual; depth > 0; --depth)
        if (holds(depth)) return static_cast<KSBitDepth::Type>(depth);
    return KSBitDepth::INTEGER_8;
}

const char* depthName(KSBitDepth::Type depth) { return depths[depth].name; }

unsigned int formatOfDepth(KSBitDepth::Type depth) { return depths[depth].format; }

KSBitDepth::Type depthOfFormat(unsigned int pixelFormat) {
    for (int depth = 0; depth < 4; ++depth)
        if (depths[depth].format == pixelFormat) return static_cast<KSBitDepth::Type>(depth);
    return KSBitDepth::INTEGER_8;
}

}  // namespace kestrel::tools
