// kestrel/geometry/KSAlgorithm.h - small numeric building blocks of curves, shapes and layout.
#pragma once

#include <kestrel/geometry/KSVector2.h>
#include <kestrel/geometry/detail/Pair.h>
#include <kestrel/platform/Export.h>

#include <algorithm>
#include <type_traits>

/// Curve subdivision, table search, intersections, and direction snapping.
///
/// Threads    every function depends on its arguments alone.
/// Errors     none is reported apart from the counts; NaN and infinities go through the arithmetic.
/// Source     de Casteljau's construction; the bracketing search of tables; the line tests compare the
///            squared sine of the angle between the directions with a threshold.
/// Example
///     KSVector2<double> points[2];
///     int count = KSAlgorithm::findIntersection(p, d, q, e, points);
class KESTREL_API KSAlgorithm {
public:
    /// Splits one cubic Bezier segment, whose parameter runs from t0 to t1, at t. All arrays have four
    /// entries; outputs may be the inputs. The left part ends and the right part starts at the split point.
    static constexpr void DeCasteljauSubdivide(double t0, double t1, double t, const double* x,
                                               const double* y, double* leftX, double* leftY, double* rightX,
                                               double* rightY) noexcept {
        const double u = (t - t0) / (t1 - t0);
        if (std::is_constant_evaluated()) {
            split<kestrel::detail::PlainPair>(u, x, y, leftX, leftY, rightX, rightY);
        } else {
            split<kestrel::detail::VectorPair>(u, x, y, leftX, leftY, rightX, rightY);
        }
    }

    /// Where value stands in a table that rises or falls throughout: the position i with value between
    /// table[i] and table[i + 1], -1 before the table, n - 1 after it (and -1 for n below 1). A value equal
    /// to an end is pulled inside, so 0 or n - 2. An exact hit inside gives its own position in a rising
    /// table and the position before it in a falling one. Stored through index too, unless that is null.
    static constexpr int bisect(const double* table, int n, double value, int* index) noexcept {
        const int found = n < 1 ? -1 : locate(table, n, value);
        if (index) *index = found;
        return found;
    }

    /// What the intervals [a0, a1] and [b0, b1] share: the number of values written to out, none, one where
    /// they only touch, or two (its ends).
    static constexpr int findIntersection(double a0, double a1, double b0, double b1, double* out) noexcept {
        if (b0 > a1 || a0 > b1) return 0;
        if (a1 <= b0) {
            out[0] = a1;
            return 1;
        }
        if (b1 <= a0) {
            out[0] = a0;
            return 1;
        }
        out[0] = std::max(b0, a0);
        out[1] = std::min(b1, a1);
        return 2;
    }

    /// Where the infinite lines from p along d and from q along e meet: 1 and the point in out, or 0 if they
    /// count as parallel, which is coarse on purpose: directions less than about 33 degrees apart do. The
    /// test and the parameter have single precision, so very long or very short directions count as parallel.
    /// Deliberate: after a hit d is scaled, to the way from p to the point.
    static constexpr int findIntersection(const KSVector2<double>& p, KSVector2<double>& d,
                                          const KSVector2<double>& q, const KSVector2<double>& e,
                                          KSVector2<double>& out) noexcept {
        const float cross = static_cast<float>(d.x * e.y - d.y * e.x);
        const float lengthE = static_cast<float>(e.x * e.x + e.y * e.y);
        const float lengthD = static_cast<float>(d.x * d.x + d.y * d.y);
        if (cross * cross <= lengthE * (lengthD * 0.3f)) return 0;
        const double across = (q.x - p.x) * e.y - (q.y - p.y) * e.x;
        const double s = static_cast<float>(across / cross);
        d = {d.x * s, d.y * s};
        out = {p.x + d.x, p.y + d.y};
        return 1;
    }

    /// Where the segments from p to p + d and from q to q + e meet: the number of points written to out, 0,
    /// 1, or 2 (the ends of what collinear segments share). A first segment of no length gives one point, p.
    static constexpr int findIntersection(const KSVector2<double>& p, const KSVector2<double>& d,
                                          const KSVector2<double>& q, const KSVector2<double>& e,
                                          KSVector2<double>* out) noexcept {
        const double x = q.x - p.x, y = q.y - p.y;
        const double cross = d.x * e.y - d.y * e.x;
        const double lengthD = d.x * d.x + d.y * d.y;
        const double tolerance = lengthD * 0.0001;
        if (cross * cross > (e.x * e.x + e.y * e.y) * tolerance) {
            const double s = (x * e.y - y * e.x) / cross;
            if (s < 0 || s > 1) return 0;
            const double t = (x * d.y - y * d.x) / cross;
            if (t < 0 || t > 1) return 0;
            out[0] = {p.x + s * d.x, p.y + s * d.y};
            return 1;
        }
        return findCollinear(p, d, e, x, y, lengthD, tolerance, out);
    }

    /// The direction nearest to v among the axes, the two diagonals and extra, with v's length and turned
    /// v's way; of equally near ones the first in this order. An extra shorter than 1e-7 does not count.
    static KSVector2<double> findProjectionOn45DegreesDirection(KSVector2<double> v, KSVector2<double> extra);

private:
    /// The construction on x and y side by side. All is read before anything is stored.
    template <class Pair>
    static constexpr void split(double fraction, const double* x, const double* y, double* leftX,
                                double* leftY, double* rightX, double* rightY) noexcept {
        const Pair u(fraction, fraction), v(1 - fraction, 1 - fraction);
        const Pair p0(x[0], y[0]), p1(x[1], y[1]), p2(x[2], y[2]), p3(x[3], y[3]);
        const Pair middle = p1 + u * (p2 - p1);
        const Pair left1 = p0 + u * (p1 - p0), right2 = p2 + u * (p3 - p2);
        const Pair left2 = v * left1 + u * middle, right1 = v * middle + u * right2;
        const Pair center = v * left2 + u * right1;
        const auto put = [](double* toX, double* toY, const Pair& a, const Pair& b, const Pair& c,
                            const Pair& d) {
            toX[0] = a.first(), toX[1] = b.first(), toX[2] = c.first(), toX[3] = d.first();
            toY[0] = a.second(), toY[1] = b.second(), toY[2] = c.second(), toY[3] = d.second();
        };
        put(leftX, leftY, p0, left1, left2, center);
        put(rightX, rightY, center, right1, right2, p3);
    }

    static constexpr int locate(const double* table, int n, double value) noexcept {
        if (value == table[0]) return 0;
        if (value == table[n - 1]) return n - 2;
        const bool ascending = table[n - 1] >= table[0];
        long lo = 0, hi = n + 1L;
        while (hi - lo > 1) {
            const long mid = (hi + lo) / 2;
            ((value >= table[mid - 1]) == ascending ? lo : hi) = mid;
        }
        return static_cast<int>(lo - 1);
    }

    /// The parallel case; (x, y) is the way from p to q.
    static constexpr int findCollinear(const KSVector2<double>& p, const KSVector2<double>& d,
                                       const KSVector2<double>& e, double x, double y, double lengthD,
                                       double tolerance, KSVector2<double>* out) noexcept {
        const double apart = x * d.y - y * d.x;
        if (apart * apart > tolerance * (x * x + y * y)) return 0;
        const double s0 = (x * d.x + y * d.y) / lengthD;
        const double s1 = s0 + (d.x * e.x + d.y * e.y) / lengthD;
        const double lo = std::min(s0, s1), hi = std::max(s0, s1);
        if (lo > 1 || hi < 0) return 0;
        const KSVector2<double> start = p, way = d;  // out may be one of the arguments
        const auto at = [&](double s) { return KSVector2<double>(start.x + s * way.x, start.y + s * way.y); };
        if (lo >= 1) {
            out[0] = at(1);
            return 1;
        }
        if (hi > 0) {
            out[0] = at(std::max(lo, 0.0));
            out[1] = at(std::min(hi, 1.0));
            return 2;
        }
        out[0] = at(0);
        return 1;
    }
};
