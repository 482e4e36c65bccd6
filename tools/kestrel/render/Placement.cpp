#include "Placement.h"

#include <kestrel/geometry/KSVector2.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace kestrel::tools::render {
namespace {

/// A whole number from 0 to limit; NaN gives 0.
int toPixel(double value, int limit) {
    return value >= limit ? limit : value > 0 ? static_cast<int>(value) : 0;
}

/// Narrows the columns low to high to those for which column * step + start may lie in 0 to size.
void narrow(double step, double start, double size, double& low, double& high) {
    if (step == 0) {
        if (!(start >= 0 && start < size)) high = low;
        return;
    }
    const double a = -start / step, b = (size - start) / step;
    low = std::max(low, std::min(a, b));
    high = std::min(high, std::max(a, b));
}

}  // namespace

Placement::Placement(const KSMatrix33& toCanvas, int width, int height, int canvasWidth, int canvasHeight)
    : m_toSource(toCanvas), m_width(width), m_height(height), m_canvasWidth(canvasWidth) {
    if (!m_toSource.invert()) return;
    KSVector2<double> corners[] = {{0, 0},
                                   {static_cast<double>(width), 0},
                                   {0, static_cast<double>(height)},
                                   {static_cast<double>(width), static_cast<double>(height)}};
    toCanvas.transform(corners);
    double top = corners[0].y, bottom = top;
    for (const auto& corner : corners) top = std::min(top, corner.y), bottom = std::max(bottom, corner.y);
    m_rows = {toPixel(std::floor(top), canvasHeight), toPixel(std::ceil(bottom), canvasHeight)};
}

Placement::Line Placement::line(int row) const {
    KSVector2<double> start(0.5, row + 0.5);
    m_toSource.transform(start);
    return {m_toSource.m00, start.x, m_toSource.m10, start.y};
}

bool Placement::Line::isInside(int column, int width, int height) const {
    const double x = column * stepX + startX, y = column * stepY + startY;
    return x >= 0 && x < width && y >= 0 && y < height;
}

Placement::Span Placement::span(int row) const {
    const Line at = line(row);
    double low = 0, high = m_canvasWidth;
    narrow(at.stepX, at.startX, m_width, low, high);
    narrow(at.stepY, at.startY, m_height, low, high);
    if (!(low < high)) return {};
    Span span{toPixel(low - 1, m_canvasWidth), toPixel(high + 2, m_canvasWidth)};
    while (span.begin < span.end && !at.isInside(span.begin, m_width, m_height)) ++span.begin;
    while (span.begin < span.end && !at.isInside(span.end - 1, m_width, m_height)) --span.end;
    return span;
}

void Placement::sample(const float* source, int row, Span span, Row<float> target) const {
    constexpr std::size_t channels = 4;
    const Line at = line(row);
    for (int column = span.begin; column < span.end; ++column, ++target.data) {
        const auto x = static_cast<std::size_t>(column * at.stepX + at.startX);
        const auto y = static_cast<std::size_t>(column * at.stepY + at.startY);
        const float* const pixel = source + (y * static_cast<std::size_t>(m_width) + x) * channels;
        for (std::size_t c = 0; c < channels; ++c) target.channel(c)[0] = pixel[c];
    }
}

}  // namespace kestrel::tools::render
