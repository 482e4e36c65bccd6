// The matrix workloads on Eigen.
#include <Eigen/Dense>

#include "../geometry/GeometryWorkloads.h"

namespace {

struct Peer {
    template <int N>
    using M = Eigen::Matrix<double, N, N>;
    using Point = Eigen::Vector2d;

    template <int N>
    static M<N> make(const double* e) {
        return Eigen::Map<const Eigen::Matrix<double, N, N, Eigen::RowMajor>>(e);
    }
    template <int N>
    static void entries(const M<N>& m, double* e) {
        Eigen::Map<Eigen::Matrix<double, N, N, Eigen::RowMajor>> to(e);
        to = m;
    }
    template <class T>
    static T multiply(const T& a, const T& b) {
        return a * b;
    }
    template <class T>
    static T invert(const T& m) {
        return m.inverse();
    }
    template <class T>
    static double determinant(const T& m) {
        return m.determinant();
    }
    static Point map(const M<3>& m, const Point& p) {
        return m.topLeftCorner<2, 2>() * p + m.topRightCorner<2, 1>();
    }
    static double x(const Point& p) { return p.x(); }
    template <int N>
    static M<N> compose(const double* p) {
        if constexpr (N == 3) {
            return (Eigen::Translation2d(p[0], p[1]) * Eigen::Rotation2Dd(p[3]) *
                    Eigen::Scaling(Eigen::Vector2d(p[4], p[5])))
                .matrix();
        } else {
            return (Eigen::Translation3d(p[0], p[1], p[2]) *
                    Eigen::AngleAxisd(p[3], Eigen::Vector3d::UnitZ()) *
                    Eigen::Scaling(Eigen::Vector3d(p[4], p[5], p[6])))
                .matrix();
        }
    }
};

[[maybe_unused]] const bool registered = workloads::registerAll<Peer>("Eigen");

}  // namespace
