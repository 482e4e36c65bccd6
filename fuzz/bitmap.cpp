// KSBitmap's operations on bitmaps of any shape: inside their regions, and the same on vectors as on the
// scalar target. The input is a byte for the operation, two shapes, and pixels.
#include <kestrel/color/KSColor.h>
#include <kestrel/imaging/KSBitmap.h>
#include <kestrel/imaging/KSBitmapMemory.h>
#include <tests/imaging/BitmapOperations.h>

#include <hwy/targets.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

struct Input {
    const std::uint8_t* bytes;
    std::size_t size;

    unsigned next() {
        if (size == 0) return 0;
        --size;
        return *bytes++;
    }
    float number() { return (static_cast<float>(next()) - 64) / 96; }
};

struct Shape {
    explicit Shape(Input& in)
        : width(in.next()),
          height(in.next() % 48),
          format(in.next() % 11),
          padding(in.next() % 4 ? 0 : in.next()) {
        static constexpr unsigned layouts[11][2] = {{8, 4},  {8, 4},  {8, 2},  {8, 1},  {16, 4}, {16, 3},
                                                    {16, 2}, {16, 1}, {16, 4}, {32, 4}, {8, 3}};
        bits = layouts[format][0];
        channels = layouts[format][1];
    }
    unsigned width, height, format, padding, bits, channels;
};

void fill(KSBitmap& bitmap, const Input& in) {
    for (std::size_t i = 0; in.size && i < bitmap.getAllocatedSize(); i += in.size)
        std::memcpy(bitmap.getData() + i, in.bytes,
                    std::min<std::size_t>(in.size, bitmap.getAllocatedSize() - i));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    KSBitmapMemory::setKeptLimit(0);  // so that a region's neighbours are unmapped as often as can be
    Input in{bytes, size};
    const BitmapOperation& operation = bitmapOperations[in.next() % bitmapOperations.size()];
    const Shape shape(in), sourceShape(in);
    const int number = static_cast<int>(in.next()) - 128;
    const float first = in.number(), second = in.number(), third = in.number();
    const KSColor color(static_cast<KSColor::Type>(in.next() % 8), first, second, third, 1);

    KSBitmap vector(shape.width, shape.height, shape.bits, shape.channels, shape.format, shape.padding);
    KSBitmap source(sourceShape.width, sourceShape.height, sourceShape.bits, sourceShape.channels,
                    sourceShape.format, sourceShape.padding);
    fill(vector, in);
    fill(source, in);
    KSBitmap scalar(vector);
    std::memcpy(scalar.getData(), vector.getData(), scalar.getAllocatedSize());

    operation.run(vector, source, color, number);
    hwy::SetSupportedTargetsForTest(HWY_SCALAR);
    operation.run(scalar, source, color, number);
    hwy::SetSupportedTargetsForTest(0);
    if (vector.getAllocatedSize() != scalar.getAllocatedSize() ||
        std::memcmp(vector.getData(), scalar.getData(), scalar.getAllocatedSize()) != 0)
        std::abort();
    return 0;
}
