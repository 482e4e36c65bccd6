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
