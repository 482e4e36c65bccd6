// Identities that hold for every matrix, against naive arithmetic in long double; and entries of every kind.
#include <gtest/gtest.h>
#include <kestrel/geometry/KSMatrix33.h>
#include <kestrel/geometry/KSMatrix44.h>
#include <kestrel/geometry/detail/GuardedTangent.h>

#include <cmath>
#include <limits>
#include <random>

#include "Reference.h"

template <class M>
class MatrixIdentity : public testing::Test {};
using Matrices = testing::Types<KSMatrix33, KSMatrix44>;
TYPED_TEST_SUITE(MatrixIdentity, Matrices);

TYPED_TEST(MatrixIdentity, ProductsEqualTheReference) {
    std::mt19937 random(1);
    for (int i = 0; i < 2000; ++i) {
        const auto a = randomMatrix<TypeParam>(random), b = randomMatrix<TypeParam>(random);
        ASSERT_LE(toReference(a * b).distance(toReference(a) * toReference(b)), 3e-14L);
        TypeParam c = a;
        c *= b;
        ASSERT_TRUE(sameBits(c, a * b));
        c = a;
        c *= c;  // by itself
        ASSERT_TRUE(sameBits(c, a * a));
    }
}

TYPED_TEST(MatrixIdentity, DeterminantsAndInversesEqualTheReference) {
    std::mt19937 random(2);
    int inverted = 0;
    for (int i = 0; i < 2000; ++i) {
        const auto a = randomMatrix<TypeParam>(random);
        const long double det = toReference(a).determinant();
        ASSERT_NEAR(static_cast<double>(det), a.determinant(), 1e-12);
        if (std::fabs(det) < 0.1L) continue;
        auto inverse = a;
        ASSERT_TRUE(inverse.invert());
        const auto identity = Reference<order<TypeParam>>::identity();
        ASSERT_LE((toReference(a) * toReference(inverse)).distance(identity), 1e-11L);
        ASSERT_LE((toReference(inverse) * toReference(a)).distance(identity), 1e-11L);
        ++inverted;
    }
    EXPECT_GT(inverted, 1000);
}

namespace {

using limits = std::numeric_limits<double>;
const double oddValues[] = {
    0, -0.0, 1, -1, 1e-160, 1e308, limits::denorm_min(), 3e-310, limits::infinity(), limits::quiet_NaN()};

/// Random entries; in every other matrix some are zeros, denormal, huge or no numbers at all.
template <class M>
M anyMatrix(std::mt19937& random, int i) {
    auto entries = entriesOf(randomMatrix<M>(random));
    if (i % 2)
        for (double& entry : entries)
            if (random() % 3 == 0) entry = oddValues[random() % (i % 4 == 1 ? 4 : std::size(oddValues))];
    return std::bit_cast<M>(entries);
}

/// The determinant of m without a row and a column: KSMatrix33's formula, or by the row's neighbour and the 2x2 minors
/// of the two other rows.
template <class M>
double minorOf(const M& matrix, int row, int column) {
    constexpr int n = order<M>;
    const auto entries = entriesOf(matrix);
    const auto at = [&](int i, int j) { return entries[n * i + j]; };
    const auto minor2 = [&](int p, int q, int a, int b) { return at(p, a) * at(q, b) - at(p, b) * at(q, a); };
    int k[n - 1], found = 0;
    for (int c = 0; c < n; ++c)
        if (c != column) k[found++] = c;
    if constexpr (n == 3) {
        return minor2(row == 0 ? 1 : 0, row == 2 ? 1 : 2, k[0], k[1]);
    } else {
        const int near = row ^ 1, p = row < 2 ? 2 : 0;
        return at(near, k[0]) * minor2(p, p + 1, k[1], k[2]) - at(near, k[1]) * minor2(p, p + 1, k[0], k[2]) +
               at(near, k[2]) * minor2(p, p + 1, k[0], k[1]);
    }
}

template <class M>
double determinantOf(const M& m) {
    if constexpr (order<M> == 3) {
        return m.m00 * (m.m11 * m.m22 - m.m12 * m.m21) + m.m01 * (m.m12 * m.m20 - m.m22 * m.m10) +
               m.m02 * (m.m21 * m.m10 - m.m11 * m.m20);
    } else {
        return (m.m00 * minorOf(m, 0, 0) - m.m01 * minorOf(m, 0, 1)) +
               (m.m02 * minorOf(m, 0, 2) - m.m03 * minorOf(m, 0, 3));
    }
}

}  // namespace

TYPED_TEST(MatrixIdentity, TakesEveryFormulaToTheBit) {
    constexpr int n = order<TypeParam>;
    const auto isNormal = [](double v) { return std::fpclassify(v) == FP_NORMAL; };
    std::mt19937 random(5);
    for (int i = 0; i < 20000; ++i) {
        const auto a = anyMatrix<TypeParam>(random, i), b = anyMatrix<TypeParam>(random, i / 2), c = a * b;
        const double det = determinantOf(a);
        ASSERT_EQ(bitsOf(a.determinant()), bitsOf(det));
        auto inverse = a;
        ASSERT_EQ(inverse.invert(), det != 0);
        const auto left = entriesOf(a), right = entriesOf(b), product = entriesOf(c),
                   inverted = entriesOf(inverse);
        for (int row = 0; row < n; ++row)
            for (int column = 0; column < n; ++column) {
                const int k = n * row + column;
                double sum = left[n * row] * right[column];
                for (int t = 1; t < n; ++t) sum += left[n * row + t] * right[n * t + column];
                ASSERT_EQ(bitsOf(product[k]), bitsOf(sum)) << row << ' ' << column;
                const double sign = (row + column) % 2 ? -1 : 1;
                const double minor = minorOf(a, column, row);
                const double entry = det == 0                      ? left[k]
                                     : n == 4 && isNormal(1 / det) ? minor * (sign / det)
                                                                   : minor / (sign * det);
                ASSERT_EQ(bitsOf(inverted[k] + 0.0), bitsOf(entry + 0.0)) << row << ' ' << column;
            }
    }
}

TEST(LayerTransform, TakesEveryFormulaToTheBit) {
    std::mt19937 random(6);
    std::uniform_real_distribution<double> u(-4, 4);
    const auto value = [&](int i) {
        return i % 2 && random() % 3 == 0 ? oddValues[random() % std::size(oddValues)] : u(random);
    };
    for (int i = 0; i < 20000; ++i) {
        const double tx = value(i), ty = value(i), angle = value(i), sx = value(i), sy = value(i),
                     px = value(i), py = value(i), aspect = i % 3 ? 1 : value(i);
        const double ax = i % 4 ? 0 : u(random), ay = i % 5 ? 0 : u(random);
        const double c = angle == 0 ? 1 : std::cos(angle), s = angle == 0 ? 0 : std::sin(angle);
        const double kx = kestrel::detail::guardedTangent(ax), ky = kestrel::detail::guardedTangent(ay);
        const double m00 = (c - s * ky) * sx, m01 = (c * kx - s) * sy / aspect;
        const double m10 = aspect * (c * ky + s) * sx, m11 = (c + s * kx) * sy;
        const double want[] = {m00, m01, tx - px * m00 - py * m01, m10, m11, ty - px * m10 - py * m11, 0,
                               0,   1};
        KSMatrix33 got;
        got.setTransformation(tx, ty, angle, sx, sy, ax, ay, px, py, aspect);
        const auto entries = entriesOf(got);
        for (int k = 0; k < 9; ++k) ASSERT_EQ(bitsOf(entries[k]), bitsOf(want[k])) << "entry " << k;
    }
}

TEST(MatrixInverse, ConstantExpressionsGiveTheBitsOfTheVectorCode) {
    constexpr KSMatrix44 matrix(0.1, 2.3, -0.7, 4, 1.9, -0.3, 0.8, 5, -2.2, 0.6, 1.7, -6, 0.01, 0.02, 0.3,
                                1.1);
    constexpr KSMatrix44 constant = [](KSMatrix44 m) {
        m.invert();
        return m;
    }(matrix);
    auto inverse = matrix;
    ASSERT_TRUE(inverse.invert());
    EXPECT_TRUE(sameBits(inverse, constant));
}

TYPED_TEST(MatrixIdentity, TransposesSwapEveryPair) {
    std::mt19937 random(3);
    const auto a = randomMatrix<TypeParam>(random);
    auto t = a;
    t.transpose();
    const auto ra = toReference(a), rt = toReference(t);
    for (int i = 0; i < order<TypeParam>; ++i)
        for (int j = 0; j < order<TypeParam>; ++j) EXPECT_EQ(ra.m[i][j], rt.m[j][i]);
}

TYPED_TEST(MatrixIdentity, SingularExactlyWhereTheDeterminantIsZero) {
    std::mt19937 random(4);
    int singular = 0;
    for (int i = 0; i < 20000; ++i) {
        Entries<TypeParam> entries;
        for (double& entry : entries) entry = oddValues[random() % (i % 2 ? 4 : std::size(oddValues))];
        const auto before = std::bit_cast<TypeParam>(entries);
        auto m = before;
        const bool zero = m.determinant() == 0;
        ASSERT_EQ(m.invert(), !zero);
        if (zero) {
            ASSERT_TRUE(sameBits(m, before));
        }
        singular += zero;
    }
    EXPECT_GT(singular, 100);
}
