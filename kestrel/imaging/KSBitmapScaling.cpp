#include <kestrel/imaging/KSBitmapScaling.h>

#include <kestrel/imaging/KSBitmap_t.h>
#include <kestrel/imaging/detail/BitmapRows.h>
#include <kestrel/imaging/detail/ByteKernels.h>
#include <kestrel/imaging/detail/DepthKernels.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <type_traits>

namespace {

using namespace kestrel::detail;

using PixelRGBA8 = KSBitmapRGBA8::Pixel;
using PixelARGB8 = KSBitmapARGB8::Pixel;
using PixelRGBA16 = KSBitmapRGBA16::Pixel;
using PixelHalf = KSBitmapRGBAHalfFloat::Pixel;
using PixelFloat = KSBitmapRGBAFloat::Pixel;

/// Where the rows or columns of a destination come from.
class Sampling {
public:
    Sampling(std::uint32_t source, std::uint32_t destination)
        : m_scale(static_cast<double>(source) / static_cast<double>(destination)), m_last(source - 1) {}

    std::uint32_t at(std::uint32_t position) const {
        const double place = std::floor(position * m_scale + 1e-7);
        return place < m_last ? static_cast<std::uint32_t>(place) : m_last;
    }

private:
    double m_scale;
    std::uint32_t m_last;
};

/// Rows from a source of one width to a destination of another, by a table of columns; half and double the
/// width need none.
class Columns {
public:
    Columns(std::uint32_t source, std::uint32_t destination)
        : m_halves(source == std::uint64_t{2} * destination),
          m_doubles(destination == std::uint64_t{2} * source),
          m_table(new (std::nothrow) std::uint32_t[destination]) {
        const Sampling columns(source, destination);
        for (std::uint32_t x = 0; m_table && x < destination; ++x) m_table[x] = columns.at(x);
    }

    bool exist() const { return m_table != nullptr; }

    /// How many of the first count columns lie below available.
    std::size_t inside(std::size_t count, std::size_t available) const {
        return static_cast<std::size_t>(std::lower_bound(&m_table[0], &m_table[0] + count, available) -
                                        &m_table[0]);
    }

    /// to[x] = from[column of x]; the columns lie below available.
    template <typename Pixel>
    void sample(Pixel* to, const Pixel* from, std::size_t available, std::size_t count) const {
        if constexpr (sizeof(Pixel) == sizeof(std::uint32_t) || sizeof(Pixel) == sizeof(std::uint64_t)) {
            using Word = std::conditional_t<sizeof(Pixel) == 4, std::uint32_t, std::uint64_t>;
            auto* const out = reinterpret_cast<Word*>(to);
            const auto* const in = reinterpret_cast<const Word*>(from);
            if (m_halves) return halvePixels(out, in, count);
            if (m_doubles) return doublePixels(out, in, count);
            if constexpr (sizeof(Pixel) == 4) return samplePixels(out, in, available, m_table.get(), count);
        }
        for (std::size_t x = 0; x < count; ++x) to[x] = from[m_table[x]];
    }

private:
    bool m_halves, m_doubles;
    std::unique_ptr<std::uint32_t[]> m_table;
};

/// Walks the rows of a scaled image. convert(to, from, count, stores) turns pixels of one row, which come
/// from inside the source's region; where columns are picked and depth changes, picked pixels make a row of
/// their own.
template <typename To, typename From, typename Convert>
void scaleRows(KSBitmap& destination, const KSBitmap& source, Convert convert) {
    constexpr bool samePixels = std::is_same_v<To, From>;
    const std::uint32_t width = destination.getWidth(), height = destination.getHeight();
    const std::uint32_t sourceWidth = source.getWidth();
    if (!width || !height || !sourceWidth || !source.getHeight()) return;
    if (!destination.getData() || !source.getData()) return;

    if (width == sourceWidth && height == source.getHeight()) {  // one row of all pixels
        const std::size_t count =
            std::min(flatPixels(destination, sizeof(To)), flatPixels(source, sizeof(From)));
        convert(reinterpret_cast<To*>(destination.getData()), reinterpret_cast<const From*>(source.getData()),
                count, storesFor(destination.getSize()));
        return;
    }

    const Sampling ys(source.getHeight(), height);
    std::optional<Columns> columns;
    std::unique_ptr<From[]> picked;
    if (width != sourceWidth) {
        columns.emplace(sourceWidth, width);
        if constexpr (!samePixels) picked.reset(new (std::nothrow) From[width]);
        if (!columns->exist() || !(samePixels || picked)) return;
    }

    To* previous = nullptr;  // the row above, and where it came from
    std::uint32_t previousRow = 0;
    std::size_t previousCount = 0;
    for (std::uint32_t y = 0; y < height; ++y) {
        const std::size_t toStart = std::size_t{y} * width * sizeof(To);
        std::size_t count = itemsInside(destination, toStart, width, sizeof(To));
        if (count == 0) return;
        To* to = reinterpret_cast<To*>(destination.getData() + toStart);
        const std::uint32_t row = ys.at(y);
        if (previous && previousRow == row && count == width) {
            std::memcpy(to, previous, previousCount * sizeof(To));
            continue;
        }
        const std::size_t fromStart = std::size_t{row} * sourceWidth * sizeof(From);
        const std::size_t inside = itemsInside(source, fromStart, sourceWidth, sizeof(From));
        if (inside == 0) return;
        const auto* from = reinterpret_cast<const From*>(source.getData() + fromStart);
        if (!columns) {
            count = std::min(count, inside);
            convert(to, from, count, Stores::cached);  // rows that repeat are read again
        } else {
            if (inside < sourceWidth) count = columns->inside(count, inside);
            if constexpr (samePixels) {
                columns->sample(to, from, inside, count);
            } else {
                columns->sample(picked.get(), from, inside, count);
                convert(to, picked.get(), count, Stores::cached);
            }
        }
        previous = to;
        previousRow = row;
        previousCount = count;
    }
}

template <typename Pixel>
void copyPixels(Pixel* to, const Pixel* from, std::size_t count, Stores stores) {
    copyBytes(reinterpret_cast<std::uint8_t*>(to), reinterpret_cast<const std::uint8_t*>(from),
              count * sizeof(Pixel), stores);
}

template <typename Pixel>
void scale(KSBitmap& destination, const KSBitmap& source) {
    if (destination.getData() == source.getData()) return;  // every pixel onto itself
    scaleRows<Pixel, Pixel>(destination, source, copyPixels<Pixel>);
}

constexpr BytePattern toRGBAOrder = componentOrder<std::uint8_t, 4>({1, 2, 3, 0});
constexpr BytePattern toARGBOrder = componentOrder<std::uint8_t, 4>({3, 0, 1, 2});

/// Pixels of one layout into another, both with four components; ARGB is always of 8 bits.
template <typename To, typename From>
void convertPixels(To* to, const From* from, std::size_t count, Stores stores) {
    auto* target = to->components;
    if constexpr (std::is_same_v<To, From>) {
        if (to != from) copyPixels(to, from, count, stores);
    } else if constexpr (std::is_same_v<To, PixelARGB8> && std::is_same_v<From, PixelRGBA8>) {
        shuffleBytes(target, from->components, 4 * count, toARGBOrder, stores);
    } else if constexpr (std::is_same_v<To, PixelARGB8>) {
        convertToARGB(target, from->components, count, stores);
    } else if constexpr (std::is_same_v<From, PixelARGB8>) {  // reordered in pieces that stay in the cache
        constexpr std::size_t piece = 1024;
        std::uint8_t reordered[4 * piece];
        for (std::size_t done = 0; done < count; done += piece) {
            const std::size_t pixels = std::min(piece, count - done);
            shuffleBytes(reordered, from[done].components, 4 * pixels, toRGBAOrder);
            convertDepth(target + 4 * done, reordered, 4 * pixels, stores);
        }
    } else {
        convertDepth(target, from->components, 4 * count, stores);
    }
}

template <typename To, typename From>
void scaleAndConvert(KSBitmap& destination, const KSBitmap& source) {
    scaleRows<To, From>(destination, source, convertPixels<To, From>);
}

template <typename To>
void scaleAndConvertFrom(KSBitmap& destination, const KSBitmap& source) {
    switch (source.getPixelFormat()) {
        case 1:
            return scaleAndConvert<To, PixelARGB8>(destination, source);
        case 4:
            return scaleAndConvert<To, PixelRGBA16>(destination, source);
        case 8:
            return scaleAndConvert<To, PixelHalf>(destination, source);
        case 9:
            return scaleAndConvert<To, PixelFloat>(destination, source);
        default:
            return scaleAndConvert<To, PixelRGBA8>(destination, source);
    }
}

/// The source itself, or, for a 4:2:2 source, a temporary ARGB bitmap in its place.
class ScalingSource {
public:
    explicit ScalingSource(const KSBitmap& source) : m_source(&source) {
        if (source.getPixelFormat() != KSPixelInfoYUV8::format) return;
        m_argb.emplace(source.getWidth(), source.getHeight());
        m_argb->copy(source);
        m_source = &*m_argb;
    }
    const KSBitmap& get() const { return *m_source; }

private:
    std::optional<KSBitmapARGB8> m_argb;
    const KSBitmap* m_source;
};

}  // namespace

template <typename Bitmap, typename Pixel>
void scaleBitmap(Bitmap* destination, const KSBitmap* source) {
    scale<Pixel>(*destination, *source);
}

template <typename Bitmap, typename Pixel>
void scaleAndDepthConvertBitmaptoRGBAFloat(Bitmap* source, KSBitmap* destination) {
    scaleAndConvert<PixelFloat, Pixel>(*destination, *source);
}

template <typename Bitmap, typename Pixel>
void scaleAndDepthConvertBitmaptoRGBA16(Bitmap* source, KSBitmap* destination) {
    scaleAndConvert<PixelRGBA16, Pixel>(*destination, *source);
}

template <typename Bitmap, typename Pixel>
void scaleAndDepthConvertBitmapToARGB8(Bitmap* source, KSBitmap* destination) {
    scaleAndConvert<PixelARGB8, Pixel>(*destination, *source);
}

#define KESTREL_SCALE(B) template KESTREL_API void scaleBitmap<B, B::Pixel>(B*, const KSBitmap*);
KESTREL_SCALE(KSBitmapRGBA8)
KESTREL_SCALE(KSBitmapARGB8)
KESTREL_SCALE(KSBitmapYUV8)
KESTREL_SCALE(KSBitmapRGBA16)
KESTREL_SCALE(KSBitmapRGB16)
KESTREL_SCALE(KSBitmapLuminanceAlpha16)
KESTREL_SCALE(KSBitmapLuminance16)
KESTREL_SCALE(KSBitmapRGBAHalfFloat)
KESTREL_SCALE(KSBitmapRGBAFloat)
#undef KESTREL_SCALE

#define KESTREL_CONVERT(B)                                                                       \
    template KESTREL_API void scaleAndDepthConvertBitmaptoRGBAFloat<B, B::Pixel>(B*, KSBitmap*); \
    template KESTREL_API void scaleAndDepthConvertBitmaptoRGBA16<B, B::Pixel>(B*, KSBitmap*);    \
    template KESTREL_API void scaleAndDepthConvertBitmapToARGB8<B, B::Pixel>(B*, KSBitmap*);
KESTREL_CONVERT(KSBitmapRGBA8)
KESTREL_CONVERT(KSBitmapARGB8)
KESTREL_CONVERT(KSBitmapRGBA16)
KESTREL_CONVERT(KSBitmapRGBAHalfFloat)
KESTREL_CONVERT(KSBitmapRGBAFloat)
#undef KESTREL_CONVERT

void KSBitmap::copyWithScaling(const KSBitmap& source) {
    const ScalingSource from(source);
    switch (m_pixelFormat) {
        case 1:
            return scale<PixelARGB8>(*this, from.get());
        case 2:
            return scale<KSBitmapYUV8::Pixel>(*this, from.get());
        case 4:
            return scale<PixelRGBA16>(*this, from.get());
        case 5:
            return scale<KSBitmapRGB16::Pixel>(*this, from.get());
        case 6:
            return scale<KSBitmapLuminanceAlpha16::Pixel>(*this, from.get());
        case 7:
            return scale<KSBitmapLuminance16::Pixel>(*this, from.get());
        case 8:
            return scale<PixelHalf>(*this, from.get());
        case 9:
            return scale<PixelFloat>(*this, from.get());
        default:
            return scale<PixelRGBA8>(*this, from.get());
    }
}

void KSBitmap::copyWithScalingAndDepthConversion(const KSBitmap& source) {
    const ScalingSource from(source);
    switch (m_pixelFormat) {
        case 1:
            return scaleAndConvertFrom<PixelARGB8>(*this, from.get());
        case 4:
            return scaleAndConvertFrom<PixelRGBA16>(*this, from.get());
        case 9:
            return scaleAndConvertFrom<PixelFloat>(*this, from.get());
        default:
            return;
    }
}
