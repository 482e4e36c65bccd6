// The matrices on the workloads that other libraries run too, and whole arrays of points beside memcpy.
#include <kestrel/geometry/KSMatrix33.h>
#include <kestrel/geometry/KSMatrix44.h>

#include <cstring>
#include <type_traits>

#include "GeometryWorkloads.h"

namespace {

struct Kestrel {
    template <int N>
    using M = std::conditional_t<N == 3, KSMatrix33, KSMatrix44>;
    using Point = KSVector2<double>;

    template <int N>
    static M<N> make(const double* e) {
        M<N> m;
        std::memcpy(&m.m00, e, sizeof m);
        return m;
    }
    template <int N>
    static void entries(const M<N>& m, double* e) {
        std::memcpy(e, &m, sizeof m);
    }
    template <class T>
    static T multiply(const T& a, const T& b) {
        return a * b;
    }
    template <class T>
    static T invert(T m) {
        m.invert();
        return m;
    }
    template <class T>
    static double determinant(const T& m) {
        return m.determinant();
    }
    static Point map(const KSMatrix33& m, Point p) {
        m.transform(p);
        return p;
    }
    static double x(const Point& p) { return p.x; }
    template <int N>
    static M<N> compose(const double* p) {
        M<N> m;
        if constexpr (N == 3) {
            m.setTransformation(p[0], p[1], p[3], p[4], p[5], 0, 0, 0, 0, 1);
        } else {
            m.setTransformation(p[0], p[1], p[2], 0, 0, p[3], p[4], p[5], p[6], 0, 0, 0, 0, 0, 1);
        }
        return m;
    }
};

[[maybe_unused]] const bool registered = workloads::registerAll<Kestrel>("Kestrel");

/// Many points by one matrix; bytes are those read and written.
template <class Matrix, class Point>
void mapArray(benchmark::State& state) {
    const Matrix m = Kestrel::make < sizeof(Matrix) == sizeof(KSMatrix33)
                         ? 3
                         : 4 > (workloads::randomEntries(1)[0].data());
    const std::size_t count = state.range(0) / sizeof(Point);
    std::vector<Point> from(count), to(count);
    for (std::size_t i = 0; i < count; ++i) from[i].x = static_cast<double>(i), from[i].y = 2;
    m.transform(from, to);
    for (std::size_t i = 0; i < count; i += 97) {
        Point want = from[i];
        m.transform(want);
        if (!(want == to[i])) return state.SkipWithError("differs from the one-point form");
    }
    for (auto _ : state) {
        m.transform(from, to);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long>(count));
    state.SetBytesProcessed(state.iterations() * 2 * static_cast<long>(count * sizeof(Point)));
}

template <class Matrix, class Point>
void mapInPlace(benchmark::State& state) {
    Matrix m;
    m.m00 = m.m11 = -1;  // stays in range, however often it is applied
    std::vector<Point> points(state.range(0) / sizeof(Point), Point());
    points[0].x = 3;
    m.transform(points);
    if (points[0].x != -3) return state.SkipWithError("a wrong point");
    for (auto _ : state) {
        m.transform(points);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long>(points.size()));
    state.SetBytesProcessed(state.iterations() * 2 * static_cast<long>(points.size() * sizeof(Point)));
}

void copyArray(benchmark::State& state) {
    const std::size_t size = state.range(0);
    std::vector<char> from(size, 1), to(size, 2);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), size);
        benchmark::ClobberMemory();
    }
    if (to != from) return state.SkipWithError("not copied");
    state.SetBytesProcessed(state.iterations() * 2 * static_cast<long>(size));
}

constexpr long cached = 16 << 10, large = 96 << 20;
BENCHMARK(copyArray)->Name("array/memcpy")->Arg(cached)->Arg(large);
BENCHMARK(mapArray<KSMatrix33, KSVector2<double>>)->Name("array/3x3 2-vectors")->Arg(cached)->Arg(large);
BENCHMARK(mapArray<KSMatrix33, KSVector3<double>>)->Name("array/3x3 3-vectors")->Arg(cached)->Arg(large);
BENCHMARK(mapArray<KSMatrix44, KSVector3<double>>)->Name("array/4x4 3-vectors")->Arg(cached)->Arg(large);
BENCHMARK(mapArray<KSMatrix44, KSVector4<double>>)->Name("array/4x4 4-vectors")->Arg(cached)->Arg(large);
BENCHMARK(mapInPlace<KSMatrix33, KSVector2<double>>)
    ->Name("array in place/3x3 2-vectors")
    ->Arg(cached)
    ->Arg(large);
BENCHMARK(mapInPlace<KSMatrix44, KSVector4<double>>)
    ->Name("array in place/4x4 4-vectors")
    ->Arg(cached)
    ->Arg(large);

}  // namespace
