// tools/kestrel/render/Placement.h - where a source lies on the canvas, and its pixels there.
#pragma once

#include <kestrel/geometry/KSMatrix33.h>

#include "BlendFormulas.h"

namespace kestrel::tools::render {

/// A source of some size under an affine transform, seen from the canvas: each canvas pixel takes the source
/// pixel under its centre (the inverse mapping, nearest sample).
///
/// Bounds     a span never names a pixel whose sample lies outside the source, whatever the matrix: mapping
///            along a row is monotonic, rounding included, and both ends of each span have been mapped.
class Placement {
public:
    /// Canvas pixels begin to end of a row, end excluded.
    struct Span {
        int begin = 0, end = 0;
    };

    /// @param toCanvas  maps points of the source, pixel corners being whole numbers, to the canvas
    Placement(const KSMatrix33& toCanvas, int width, int height, int canvasWidth, int canvasHeight);

    /// The rows that the source may touch, end excluded; none when it lies outside or has no area.
    Span rows() const { return m_rows; }
    /// The pixels of a row that lie on the source.
    Span span(int row) const;
    /// Fetches the samples of a span from a picture of four floats a pixel.
    void sample(const float* source, int row, Span span, Row<float> target) const;

private:
    /// The source coordinates of a pixel's centre are column * step + start.
    struct Line {
        double stepX, startX, stepY, startY;
        bool isInside(int column, int width, int height) const;
    };
    Line line(int row) const;

    KSMatrix33 m_toSource;
    int m_width, m_height, m_canvasWidth;
    Span m_rows;
};

}  // namespace kestrel::tools::render
