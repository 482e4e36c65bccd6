// Curves, segments, clipping and erf, over arrays that fit the first cache.
#include <benchmark/benchmark.h>
#include <kestrel/geometry/KSAlgorithm.h>
#include <kestrel/geometry/KSMath.h>
#include <kestrel/geometry/KSRect.h>

#include <cmath>
#include <random>
#include <vector>

namespace {

constexpr std::size_t count = 256;

std::vector<double> randomValues(std::size_t n, double range) {
    std::mt19937 random(6);
    std::uniform_real_distribution<double> value(-range, range);
    std::vector<double> values(n);
    for (double& v : values) v = value(random);
    return values;
}

std::vector<KSVector2<double>> randomPoints(std::size_t n, double range) {
    const auto values = randomValues(2 * n, range);
    std::vector<KSVector2<double>> points;
    for (std::size_t i = 0; i < n; ++i) points.emplace_back(values[2 * i], values[2 * i + 1]);
    return points;
}

void finish(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations() * static_cast<long>(count));
}

void splitCurves(benchmark::State& state) {
    struct Curve {
        double x[4], y[4];
    };
    const auto values = randomValues(8 * count, 9);
    std::vector<Curve> curves(count), left(count), right(count);
    for (std::size_t i = 0; i < 8 * count; ++i)
        (i % 8 < 4 ? curves[i / 8].x : curves[i / 8].y)[i % 4] = values[i];
    const auto split = [&](std::size_t i) {
        KSAlgorithm::DeCasteljauSubdivide(0, 1, 0.25, curves[i].x, curves[i].y, left[i].x, left[i].y,
                                          right[i].x, right[i].y);
    };
    split(7);
    const double* p = curves[7].x;
    if (std::abs(left[7].x[3] - (27 * p[0] + 27 * p[1] + 9 * p[2] + p[3]) / 64) > 1e-12) {
        return state.SkipWithError("not on the curve");
    }
    for (auto _ : state) {
        for (std::size_t i = 0; i < count; ++i) split(i);
        benchmark::ClobberMemory();
    }
    finish(state);
}
BENCHMARK(splitCurves)->Name("curve split");

void clipLines(benchmark::State& state) {
    const auto from = randomPoints(count, 3), to = randomPoints(2 * count, 3);
    const KSRect<double> rect(-1, 1, 2, 2);
    std::vector<KSVector2<double>> p(count), q(count);
    std::size_t inside = 0;
    const auto clip = [&](std::size_t i) {
        p[i] = from[i], q[i] = to[count + i];
        return rect.clipLine(&p[i], &q[i]);
    };
    for (std::size_t i = 0; i < count; ++i) inside += clip(i) && std::abs(p[i].x) <= 1 + 1e-9;
    if (inside < count / 8 || inside > count) return state.SkipWithError("an unlikely number of lines");
    for (auto _ : state) {
        std::size_t seen = 0;
        for (std::size_t i = 0; i < count; ++i) seen += clip(i);
        benchmark::DoNotOptimize(seen);
        benchmark::ClobberMemory();
    }
    finish(state);
}
BENCHMARK(clipLines)->Name("line clip");

void crossSegments(benchmark::State& state) {
    const auto points = randomPoints(4 * count, 3);
    std::vector<KSVector2<double>> out(2 * count);
    const auto cross = [&](std::size_t i) {
        const KSVector2<double>* p = &points[4 * i];
        return KSAlgorithm::findIntersection(p[0], p[1], p[2], p[3], &out[2 * i]);
    };
    std::size_t found = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (cross(i) == 0) continue;
        ++found;
        const KSVector2<double>*p = &points[4 * i], &o = out[2 * i];
        if (std::abs((o.x - p[0].x) * p[1].y - (o.y - p[0].y) * p[1].x) > 1e-9) {
            return state.SkipWithError("not on the segment");
        }
    }
    if (found == 0) return state.SkipWithError("an unlikely number of points");
    for (auto _ : state) {
        int seen = 0;
        for (std::size_t i = 0; i < count; ++i) seen += cross(i);
        benchmark::DoNotOptimize(seen);
        benchmark::ClobberMemory();
    }
    finish(state);
}
BENCHMARK(crossSegments)->Name("segments crossed");

template <auto function>
void errorFunction(benchmark::State& state) {
    const auto x = randomValues(count, 3);
    std::vector<double> y(count);
    for (const double v : x) {
        if (std::abs(function(v) - std::erf(v)) > 4e-7) return state.SkipWithError("a wrong value");
    }
    for (auto _ : state) {
        for (std::size_t i = 0; i < count; ++i) y[i] = function(x[i]);
        benchmark::ClobberMemory();
    }
    finish(state);
}
double standardErf(double x) { return std::erf(x); }
BENCHMARK(errorFunction<KSMath::erf>)->Name("erf/Kestrel");
BENCHMARK(errorFunction<standardErf>)->Name("erf/standard library");

}  // namespace
