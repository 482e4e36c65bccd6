// kestrel/geometry/KSRect.h - the axis-aligned rectangle.
#pragma once

#include <kestrel/geometry/KSVector2.h>

#include <algorithm>
#include <cstdint>
#include <type_traits>

/// A rectangle with sides parallel to the axes.
///
/// Shape      covers [x, x + width] and [y - height, y]: y is the upper edge where y grows upwards, and the
///            lower edge is y - height. A rectangle whose width or height is exactly 0 is empty.
/// Units      the caller's own; T is int, float or double. Edges of int rectangles are formed in 64 bits, so
///            none overflows; those of float rectangles are rounded to float.
/// Ownership  a plain value.
/// Oddity     deliberately different by axis: rectangles that only touch left to right do not intersect,
///            rectangles that only touch top to bottom do (and leave a height of 0).
/// Source     own design; clipLine after Liang and Barsky, "A New Concept and Method for Line Clipping",
///            1984.
/// Example
///     KSRect<int> frame(0, 1080, 1920, 1080);
///     frame.intersect(layer);            // frame is now what both cover
///     if (frame.clipLine(&from, &to)) draw(from, to);
template <class T>
struct KSRect {
    static_assert(std::is_same_v<T, int> || std::is_same_v<T, float> || std::is_same_v<T, double>);

    T x{}, y{}, width{}, height{};

    constexpr KSRect() noexcept = default;  ///< all zero, and so empty
    constexpr KSRect(T left, T upper, T widthValue, T heightValue) noexcept
        : x(left), y(upper), width(widthValue), height(heightValue) {}

    /// Exact in all four fields.
    friend constexpr bool operator==(const KSRect&, const KSRect&) noexcept = default;

    constexpr bool isEmpty() const noexcept { return width == 0 || height == 0; }

    /// True if the two share some of the plane, or an edge from top to bottom. False if either is empty, and
    /// where a NaN leaves it open.
    constexpr bool intersects(const KSRect& other) const noexcept {
        return !isEmpty() && !other.isEmpty() && meetsHorizontally(other) && meetsVertically(other);
    }

    /// Reduces this rectangle to what it shares with the other. If they share nothing, width and height
    /// become 0 and the answer is false; x has then moved if they overlap horizontally, y never.
    constexpr bool intersect(const KSRect& other) noexcept {
        if (isEmpty() || other.isEmpty() || !meetsHorizontally(other)) return fail();
        const KSRect a = *this, b = other;  // other may be this very rectangle
        x = std::max(a.x, b.x);
        width = static_cast<T>(std::min(a.right(), b.right()) - Edge(x));
        if (!a.meetsVertically(b)) return fail();
        y = std::min(a.y, b.y);
        height = static_cast<T>(Edge(y) - std::max(a.lower(), b.lower()));
        return true;
    }

    /// Shortens the segment from *p1 to *p2 to its part inside the rectangle, edges included. If no part is
    /// inside, both points stay and the answer is false. Computes in double; an int coordinate that moves is
    /// truncated towards 0. A NaN coordinate rejects nothing.
    constexpr bool clipLine(KSVector2<T>* p1, KSVector2<T>* p2) const noexcept {
        const double x1 = p1->x, y1 = p1->y;
        const double dx = p2->x - x1, dy = p2->y - y1;
        const double left = x, upper = y;
        double t0 = 0, t1 = 1;
        if (!clip(-dx, x1 - left, t0, t1) || !clip(dx, left + width - x1, t0, t1) ||
            !clip(-dy, y1 - (upper - height), t0, t1) || !clip(dy, upper - y1, t0, t1)) {
            return false;
        }
        if (t1 < 1) *p2 = {static_cast<T>(x1 + t1 * dx), static_cast<T>(y1 + t1 * dy)};
        if (t0 > 0) *p1 = {static_cast<T>(x1 + t0 * dx), static_cast<T>(y1 + t0 * dy)};
        return true;
    }

private:
    using Edge = std::conditional_t<std::is_same_v<T, int>, std::int64_t, T>;

    constexpr Edge right() const noexcept { return Edge(x) + Edge(width); }
    constexpr Edge lower() const noexcept { return Edge(y) - Edge(height); }

    /// The one with the smaller x must reach strictly past the other's x.
    constexpr bool meetsHorizontally(const KSRect& other) const noexcept {
        return x < other.x ? right() > Edge(other.x) : other.right() > Edge(x);
    }
    /// The lower of the two upper edges must be at or above the other's lower edge.
    constexpr bool meetsVertically(const KSRect& other) const noexcept {
        return y < other.y ? Edge(y) >= other.lower() : Edge(other.y) >= lower();
    }
    constexpr bool fail() noexcept {
        width = height = 0;
        return false;
    }

    /// One edge: where p < 0 the segment enters at q / p, where p > 0 it leaves there.
    static constexpr bool clip(double p, double q, double& t0, double& t1) noexcept {
        if (p < 0) {
            const double r = q / p;
            if (r > t1) return false;
            if (r > t0) t0 = r;
        } else if (p > 0) {
            const double r = q / p;
            if (r < t0) return false;
            if (r < t1) t1 = r;
        } else if (p == 0) {
            return !(q < 0);
        }
        return true;
    }
};
