// The matrix workloads on Imath, whose points are rows: matrices go in transposed, factors in the other
// order.
#include <Imath/ImathMatrix.h>
#include <Imath/ImathVec.h>

#include <type_traits>

#include "../geometry/GeometryWorkloads.h"

namespace {

template <int N>
using Matrix = std::conditional_t<N == 3, Imath::M33d, Imath::M44d>;

struct Peer : workloads::ByColumns<Matrix> {
    template <int N>
    using M = Matrix<N>;
    using Point = Imath::V2d;

    template <class T>
    static T multiply(const T& a, const T& b) {
        return b * a;
    }
    template <class T>
    static T invert(const T& m) {
        return m.inverse();
    }
    template <class T>
    static double determinant(const T& m) {
        return m.determinant();
    }
    static Point map(const Imath::M33d& m, const Point& p) {
        return Point(p.x * m[0][0] + p.y * m[1][0] + m[2][0], p.x * m[0][1] + p.y * m[1][1] + m[2][1]);
    }
    static double x(const Point& p) { return p.x; }
    template <int N>
    static M<N> compose(const double* p) {
        M<N> m;
        if constexpr (N == 3) {
            M<N> turn;
            turn.setRotation(p[3]);
            m.setScale(Imath::V2d(p[4], p[5]));
            m *= turn;
            m[2][0] = p[0], m[2][1] = p[1];
        } else {
            m.translate(Imath::V3d(p[0], p[1], p[2]));
            m.rotate(Imath::V3d(0, 0, p[3]));
            m.scale(Imath::V3d(p[4], p[5], p[6]));
        }
        return m;
    }
};

[[maybe_unused]] const bool registered = workloads::registerAll<Peer>("Imath");

}  // namespace
