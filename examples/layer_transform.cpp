// Places a layer in a frame: composes its transform, finds the corners, clips them, and takes it apart again.
//
// It prints
//     [1.732051] [-1.000000] [585.743742]
//     [1.000000] [1.732051] [-91.769145]
//     [0.000000] [0.000000] [1.000000]
//     edge 0 in the frame     (744.7, 0.0) to (1694.3, 548.2)
//     edge 1 in the frame     (1694.3, 548.2) to (1387.2, 1080.0)
//     edge 2 in the frame     (1175.3, 1080.0) to (225.7, 531.8)
//     edge 3 in the frame     (225.7, 531.8) to (532.8, 0.0)
//     under the frame's middle (320, 180)
//     turned by 30.0 degrees, scaled by 2 and 2
//     a corner of it seen at   (0.992, 0.394)
#include <kestrel/Kestrel.h>

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <vector>

namespace {

constexpr double degrees = 3.141592653589793 / 180;
constexpr double width = 640, height = 360;  // of the layer

}  // namespace

int main() {
    // Twice the size, turned by 30 degrees, its middle on the middle of a 1920 x 1080 frame.
    KSMatrix33 layer;
    layer.setTransformation(960, 540, 30 * degrees, 2, 2, 0, 0, width / 2, height / 2, 1);
    layer.print();

    // Any number of points at once; the last one is the first again, to close the outline.
    const std::vector<KSVector2<double>> corners{{0, 0}, {width, 0}, {width, height}, {0, height}, {0, 0}};
    std::vector<KSVector2<double>> outline(corners.size());
    layer.transform(corners, outline);

    const KSRect<double> frame(0, 1080, 1920, 1080);  // y is the upper edge
    for (std::size_t i = 0; i + 1 < outline.size(); ++i) {
        KSVector2<double> from = outline[i], to = outline[i + 1];
        if (frame.clipLine(&from, &to)) {
            std::printf("edge %zu in the frame     (%.1f, %.1f) to (%.1f, %.1f)\n", i, from.x, from.y, to.x,
                        to.y);
        } else {
            std::printf("edge %zu outside the frame\n", i);
        }
    }

    // Which pixel of the layer lies under the pointer?
    KSMatrix33 toLayer = layer;
    if (!toLayer.invert()) return 1;  // a scale of 0
    int x = 0, y = 0;
    toLayer.transform(960.0, 540.0, &x, &y);
    std::printf("under the frame's middle (%d, %d)\n", x, y);

    double rotation = 0, scaleX = 0, scaleY = 0;
    layer.decompose(nullptr, nullptr, &rotation, &scaleX, &scaleY, nullptr);
    std::printf("turned by %.1f degrees, scaled by %g and %g\n", rotation / degrees, scaleX, scaleY);

    // In space: the same layer tilted away from the viewer, seen through a frustum.
    KSMatrix44 view;
    view.setFrustum(-1, 1, -1, 1, 1, 5000);
    const KSMatrix44 tilted(0, 0, -900, 45 * degrees, 0, 0, 2, 2, 1, 0, 0, width / 2, height / 2, 0, 1);
    const KSVector4<double> seen = view * tilted * KSVector4<double>(width, height, 0, 1);
    std::printf("a corner of it seen at   (%.3f, %.3f)\n", seen.x / seen.w, seen.y / seen.w);

    const bool isInverse = (layer * toLayer).isIdentity();
    return isInverse && x == 320 && y == 180 && std::abs(rotation - 30 * degrees) < 1e-9 ? 0 : 1;
}
