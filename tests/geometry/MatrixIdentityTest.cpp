// Identities that hold for every matrix, against naive arithmetic in long double; and entries of every kind.
#include <gtest/gtest.h>
#include <kestrel/geometry/KSMatrix33.h>
#include <kestrel/geometry/KSMatrix44.h>

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

TEST(MatrixInverse, EveryEntryIsItsCofactorDividedByTheDeterminant) {
    std::mt19937 random(5);
    for (int i = 0; i < 2000; ++i) {
        const auto m = randomMatrix<KSMatrix33>(random);
        const double det = m.determinant();
        const KSMatrix33 divided((m.m11 * m.m22 - m.m21 * m.m12) / det, (m.m02 * m.m21 - m.m01 * m.m22) / det,
                                 (m.m01 * m.m12 - m.m02 * m.m11) / det, (m.m12 * m.m20 - m.m22 * m.m10) / det,
                                 (m.m00 * m.m22 - m.m02 * m.m20) / det, (m.m02 * m.m10 - m.m00 * m.m12) / det,
                                 (m.m21 * m.m10 - m.m11 * m.m20) / det, (m.m01 * m.m20 - m.m00 * m.m21) / det,
                                 (m.m00 * m.m11 - m.m01 * m.m10) / det);
        auto inverse = m;
        ASSERT_TRUE(inverse.invert());
        ASSERT_TRUE(sameBits(inverse, divided));

        // A diagonal makes a cofactor that is easy to write down in space, too.
        const KSMatrix44 diagonal(m.m00, 0, 0, 0, 0, m.m11, 0, 0, 0, 0, m.m22, 0, 0, 0, 0, 1);
        auto reciprocals = diagonal;
        ASSERT_TRUE(reciprocals.invert());
        EXPECT_EQ(reciprocals.m00, m.m11 * m.m22 / diagonal.determinant());
        EXPECT_EQ(reciprocals.m33, m.m00 * m.m11 * m.m22 / diagonal.determinant());
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
    const double odd[] = {0,
                          -0.0,
                          1,
                          -1,
                          1e-160,
                          1e308,
                          std::numeric_limits<double>::denorm_min(),
                          std::numeric_limits<double>::infinity(),
                          std::numeric_limits<double>::quiet_NaN()};
    int singular = 0;
    for (int i = 0; i < 20000; ++i) {
        TypeParam m;
        for (int k = 0; k < order<TypeParam> * order<TypeParam>; ++k)
            (&m.m00)[k] = odd[random() % (i % 2 ? 4 : std::size(odd))];
        const TypeParam before = m;
        const bool zero = m.determinant() == 0;
        ASSERT_EQ(m.invert(), !zero);
        if (zero) {
            ASSERT_TRUE(sameBits(m, before));
        }
        singular += zero;
    }
    EXPECT_GT(singular, 100);
}
