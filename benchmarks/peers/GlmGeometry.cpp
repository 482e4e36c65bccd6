// The matrix workloads on glm, whose matrices are stored by columns.
#include <glm/glm.hpp>
#include <glm/gtc/matrix_transform.hpp>
#include <glm/gtx/matrix_transform_2d.hpp>

#include "../geometry/GeometryWorkloads.h"

namespace {

template <int N>
using Matrix = glm::mat<N, N, double>;

struct Peer : workloads::ByColumns<Matrix> {
    template <int N>
    using M = Matrix<N>;
    using Point = glm::dvec2;

    template <class T>
    static T multiply(const T& a, const T& b) {
        return a * b;
    }
    template <class T>
    static T invert(const T& m) {
        return glm::inverse(m);
    }
    template <class T>
    static double determinant(const T& m) {
        return glm::determinant(m);
    }
    static Point map(const M<3>& m, const Point& p) { return Point(m * glm::dvec3(p, 1)); }
    static double x(const Point& p) { return p.x; }
    template <int N>
    static M<N> compose(const double* p) {
        if constexpr (N == 3) {
            return glm::scale(glm::rotate(glm::translate(M<3>(1), glm::dvec2(p[0], p[1])), p[3]),
                              glm::dvec2(p[4], p[5]));
        } else {
            return glm::scale(
                glm::rotate(glm::translate(M<4>(1), glm::dvec3(p[0], p[1], p[2])), p[3], glm::dvec3(0, 0, 1)),
                glm::dvec3(p[4], p[5], p[6]));
        }
    }
};

[[maybe_unused]] const bool registered = workloads::registerAll<Peer>("glm");

}  // namespace
