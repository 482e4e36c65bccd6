// benchmarks/geometry/GeometryWorkloads.h - the matrix workloads, the same for every library.
//
// A library takes part by a struct with the types M3, M4 and the static functions used below; entries are
// row by row and points are columns. Each workload goes through an array of matrices that fits the first
// cache, one matrix a time, and checks the results first.
#pragma once

#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <random>
#include <string>
#include <vector>

namespace workloads {

inline constexpr std::size_t matrices = 64;
using Entries = std::array<double, 16>;

inline std::vector<Entries> randomEntries(unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> entry(-3, 3);
    std::vector<Entries> all(matrices);
    for (Entries& e : all)
        for (double& v : e) v = entry(random);
    return all;
}

/// make and entries for matrices whose first index is the column.
template <template <int> class Matrix>
struct ByColumns {
    template <int N>
    static Matrix<N> make(const double* e) {
        Matrix<N> m;
        for (int i = 0; i < N * N; ++i) m[i % N][i / N] = e[i];
        return m;
    }
    template <int N>
    static void entries(const Matrix<N>& m, double* e) {
        for (int i = 0; i < N * N; ++i) e[i] = m[i % N][i / N];
    }
};

/// Runs step(i) for every i, over and over; items are matrices, points and so on.
template <class Step>
void run(benchmark::State& state, Step step) {
    for (auto _ : state) {
        for (std::size_t i = 0; i < matrices; ++i) step(i);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long>(matrices));
}

inline bool near(double a, double b) { return std::abs(a - b) <= 1e-6 * (1 + std::abs(b)); }

/// Whether a * b (order N, row by row) gives c.
template <int N>
bool isProduct(const double* a, const double* b, const double* c) {
    for (int i = 0; i < N; ++i)
        for (int j = 0; j < N; ++j) {
            double sum = 0;
            for (int k = 0; k < N; ++k) sum += a[N * i + k] * b[N * k + j];
            if (!near(c[N * i + j], sum)) return false;
        }
    return true;
}

template <class L, int N>
void multiply(benchmark::State& state) {
    using M = typename L::template M<N>;
    std::vector<M> a, b, c(matrices);
    for (const Entries& e : randomEntries(1)) a.push_back(L::template make<N>(e.data()));
    for (const Entries& e : randomEntries(2)) b.push_back(L::template make<N>(e.data()));
    for (std::size_t i = 0; i < matrices; ++i) {
        c[i] = L::multiply(a[i], b[i]);
        Entries ea, eb, ec;
        L::template entries<N>(a[i], ea.data());
        L::template entries<N>(b[i], eb.data());
        L::template entries<N>(c[i], ec.data());
        if (!isProduct<N>(ea.data(), eb.data(), ec.data())) return state.SkipWithError("a wrong product");
    }
    benchmark::DoNotOptimize(c.data());
    run(state, [&](std::size_t i) { c[i] = L::multiply(a[i], b[i]); });
}

template <class L, int N>
void invert(benchmark::State& state) {
    using M = typename L::template M<N>;
    std::vector<M> a, c(matrices);
    Entries identity{};
    for (int i = 0; i < N; ++i) identity[(N + 1) * i] = 1;
    for (const Entries& e : randomEntries(1)) a.push_back(L::template make<N>(e.data()));
    for (std::size_t i = 0; i < matrices; ++i) {
        Entries ea, ec;
        L::template entries<N>(a[i], ea.data());
        L::template entries<N>(L::invert(a[i]), ec.data());
        if (!isProduct<N>(ea.data(), ec.data(), identity.data()))
            return state.SkipWithError("a wrong inverse");
    }
    benchmark::DoNotOptimize(c.data());
    run(state, [&](std::size_t i) { c[i] = L::invert(a[i]); });
}

template <class L, int N>
void determinant(benchmark::State& state) {
    std::vector<typename L::template M<N>> a;
    for (const Entries& e : randomEntries(1)) a.push_back(L::template make<N>(e.data()));
    std::vector<double> c(matrices);
    for (const auto& m : a) {
        const double whole = L::determinant(m), inverse = L::determinant(L::invert(m));
        if (!near(whole * inverse, 1)) return state.SkipWithError("a wrong determinant");
    }
    benchmark::DoNotOptimize(c.data());
    run(state, [&](std::size_t i) { c[i] = L::determinant(a[i]); });
}

/// One affine point of the plane through one matrix after the other.
template <class L>
void point(benchmark::State& state) {
    const auto m = L::template make<3>(randomEntries(1)[0].data());
    std::vector<typename L::Point> points(matrices, typename L::Point(3, 4)), c(matrices);
    Entries e;
    L::template entries<3>(m, e.data());
    c[0] = L::map(m, points[0]);
    if (!near(L::x(c[0]), e[0] * 3 + e[1] * 4 + e[2])) return state.SkipWithError("a wrong point");
    benchmark::DoNotOptimize(points.data());
    benchmark::DoNotOptimize(c.data());
    run(state, [&](std::size_t i) { c[i] = L::map(m, points[i]); });
}

/// Scale, then turn (about z), then move.
template <class L, int N>
void compose(benchmark::State& state) {
    const auto parameters = randomEntries(3);
    std::vector<typename L::template M<N>> c(matrices);
    for (const Entries& p : parameters) {
        Entries e;
        L::template entries<N>(L::template compose<N>(p.data()), e.data());
        if (!near(e[0], std::cos(p[3]) * p[4]) || !near(e[N], std::sin(p[3]) * p[4]) ||
            !near(e[N - 1], p[0])) {
            return state.SkipWithError("a wrong composition");
        }
    }
    benchmark::DoNotOptimize(c.data());
    run(state, [&](std::size_t i) { c[i] = L::template compose<N>(parameters[i].data()); });
}

template <class L>
bool registerAll(const char* library) {
    const auto add = [library](const char* name, void (*function)(benchmark::State&)) {
        benchmark::RegisterBenchmark((std::string(name) + "/" + library).c_str(), function);
    };
    add("multiply 3x3", multiply<L, 3>);
    add("multiply 4x4", multiply<L, 4>);
    add("invert 3x3", invert<L, 3>);
    add("invert 4x4", invert<L, 4>);
    add("determinant 3x3", determinant<L, 3>);
    add("determinant 4x4", determinant<L, 4>);
    add("affine point", point<L>);
    add("compose 3x3", compose<L, 3>);
    add("compose 4x4", compose<L, 4>);
    return true;
}

}  // namespace workloads
