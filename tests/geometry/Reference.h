// tests/geometry/Reference.h - matrices in long double, in the plainest loops, and random ones to compare.
#pragma once

#include <kestrel/geometry/KSMatrix33.h>
#include <kestrel/geometry/KSMatrix44.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <random>

/// An N x N matrix in long double; every operation is its definition.
template <int N>
struct Reference {
    std::array<std::array<long double, N>, N> m{};

    static Reference identity() {
        Reference r;
        for (int i = 0; i < N; ++i) r.m[i][i] = 1;
        return r;
    }
    Reference operator*(const Reference& b) const {
        Reference r;
        for (int i = 0; i < N; ++i)
            for (int j = 0; j < N; ++j)
                for (int k = 0; k < N; ++k) r.m[i][j] += m[i][k] * b.m[k][j];
        return r;
    }
    /// By elimination with pivots: another way than the cofactors that are tested.
    long double determinant() const {
        Reference r = *this;
        long double det = 1;
        for (int k = 0; k < N; ++k) {
            int pivot = k;
            for (int i = k + 1; i < N; ++i)
                if (std::fabs(r.m[i][k]) > std::fabs(r.m[pivot][k])) pivot = i;
            if (r.m[pivot][k] == 0) return 0;
            if (pivot != k) std::swap(r.m[pivot], r.m[k]), det = -det;
            det *= r.m[k][k];
            for (int i = k + 1; i < N; ++i)
                for (int j = N - 1; j >= k; --j) r.m[i][j] -= r.m[i][k] / r.m[k][k] * r.m[k][j];
        }
        return det;
    }
    /// The largest difference of an entry.
    long double distance(const Reference& b) const {
        long double largest = 0;
        for (int i = 0; i < N; ++i)
            for (int j = 0; j < N; ++j) {
                const long double d = std::fabs(m[i][j] - b.m[i][j]);
                if (!(d <= largest)) largest = d;  // a NaN stays
            }
        return largest;
    }
};

template <class M>
inline constexpr int order = sizeof(M) == sizeof(KSMatrix33) ? 3 : 4;

/// The entries of a matrix, row by row. The matrix of given entries is std::bit_cast<M>(entries).
template <class M>
using Entries = std::array<double, order<M> * order<M>>;
template <class M>
Entries<M> entriesOf(const M& matrix) {
    return std::bit_cast<Entries<M>>(matrix);
}

template <class M>
Reference<order<M>> toReference(const M& matrix) {
    const auto values = entriesOf(matrix);
    Reference<order<M>> r;
    for (int i = 0; i < order<M> * order<M>; ++i) r.m[i / order<M>][i % order<M>] = values[i];
    return r;
}

template <class M>
M randomMatrix(std::mt19937& random, double range = 3) {
    std::uniform_real_distribution<double> entry(-range, range);
    Entries<M> values;
    for (double& v : values) v = entry(random);
    return std::bit_cast<M>(values);
}

/// The bits of a value, with one pattern for every NaN: which NaN a sum of two gives is the processor's.
inline std::uint64_t bitsOf(double v) { return v != v ? ~0ull : std::bit_cast<std::uint64_t>(v); }

template <class M>
bool sameBits(const M& a, const M& b) {
    using Bits = std::array<std::uint64_t, sizeof(M) / 8>;
    return std::bit_cast<Bits>(a) == std::bit_cast<Bits>(b);
}
