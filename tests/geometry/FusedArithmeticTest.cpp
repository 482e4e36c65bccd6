// The inline functions in a program whose compiler fuses each multiply with an add, where the processor can: they
// give the bits that the formulas give when every product is rounded.
#include <gtest/gtest.h>
#include <kestrel/geometry/KSAlgorithm.h>
#include <kestrel/geometry/KSMatrix33.h>
#include <kestrel/geometry/KSMatrix44.h>
#include <kestrel/geometry/KSRect.h>

#include <algorithm>
#include <bit>
#include <random>
#include <vector>

#include "Reference.h"

namespace {

double rounded(double value) {
    volatile double stored = value;
    return stored;
}

/// Entry (i, j) of the product of two matrices of order n.
template <int n, class Entries>
double entryOfProduct(const Entries& a, const Entries& b, int i, int j) {
    double sum = rounded(a[n * i] * b[j]);
    for (int k = 1; k < n; ++k) sum += rounded(a[n * i + k] * b[n * k + j]);
    return sum;
}

template <class M>
class FusedArithmetic : public testing::Test {};
using Matrices = testing::Types<KSMatrix33, KSMatrix44>;
TYPED_TEST_SUITE(FusedArithmetic, Matrices);

TYPED_TEST(FusedArithmetic, EqualRowsStaySingular) {
    constexpr int n = order<TypeParam>;
    std::mt19937 random(1);
    for (int i = 0; i < 200; ++i) {
        auto entries = entriesOf(randomMatrix<TypeParam>(random));
        std::copy_n(entries.end() - 2 * n, n, entries.end() - n);
        auto m = std::bit_cast<TypeParam>(entries);
        ASSERT_EQ(m.determinant(), 0);
        ASSERT_FALSE(m.invert());
    }
}

TYPED_TEST(FusedArithmetic, ProductsRoundEveryTerm) {
    constexpr int n = order<TypeParam>;
    std::mt19937 random(2);
    for (int i = 0; i < 200; ++i) {
        const auto a = randomMatrix<TypeParam>(random), b = randomMatrix<TypeParam>(random);
        const auto left = entriesOf(a), right = entriesOf(b), product = entriesOf(a * b);
        for (int k = 0; k < n * n; ++k) ASSERT_EQ(product[k], entryOfProduct<n>(left, right, k / n, k % n));
    }
}

TEST(FusedArithmeticOfPoints, OneByOneAndInArraysAreTheSame) {
    std::mt19937 random(3);
    const auto m = randomMatrix<KSMatrix44>(random);
    std::uniform_real_distribution<double> u(-9, 9);
    std::vector<KSVector3<double>> points;
    for (int i = 0; i < 200; ++i) points.emplace_back(u(random), u(random), u(random));
    auto all = points;
    m.transform(all);
    for (auto& point : points) m.transform(point);
    EXPECT_EQ(points, all);
}

TEST(FusedArithmeticOfLayers, RoundsEveryTerm) {
    std::mt19937 random(4);
    std::uniform_real_distribution<double> u(0.1, 9);
    for (int i = 0; i < 200; ++i) {
        const double tx = u(random), px = u(random), py = u(random), pz = u(random);
        KSMatrix33 plane;
        plane.setTransformation(tx, 0, u(random), u(random), u(random), u(random), u(random), px, py, 2);
        ASSERT_EQ(plane.m02, tx - rounded(px * plane.m00) - rounded(py * plane.m01));
        const KSMatrix44 space(tx, 0, 0, u(random), u(random), u(random), 1, 2, 3, 0, 0, px, py, pz, 1);
        ASSERT_EQ(space.m03,
                  tx - rounded(px * space.m00) - rounded(py * space.m01) - rounded(pz * space.m02));
    }
}

TEST(FusedArithmeticOfLines, RoundsEveryTerm) {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> u(-0.9, 0.9);
    const KSRect<double> square(-1, 1, 2, 2);
    for (int i = 0; i < 200; ++i) {
        const KSVector2<double> from(u(random), u(random)), to(3 + u(random), u(random) / 9);
        KSVector2<double> start = from, end = to;
        ASSERT_TRUE(square.clipLine(&start, &end));
        const double dx = to.x - from.x, t = (1 - from.x) / dx;
        ASSERT_EQ(end.y, from.y + rounded(t * (to.y - from.y)));

        // Along one line, so that the cross product is 0 but for the rounding of its terms.
        const double slope = u(random);
        const KSVector2<double> d(u(random), slope), e = d;
        const double x = from.x + 0.5 * d.x, y = from.y + 0.5 * d.y;
        KSVector2<double> points[2];
        ASSERT_EQ(KSAlgorithm::findIntersection(from, d, KSVector2<double>(x, y), e, points), 2);
        const double across = rounded((x - from.x) * d.x) + rounded((y - from.y) * d.y);
        const double s = across / (rounded(d.x * d.x) + rounded(d.y * d.y));
        ASSERT_EQ(points[0].x, from.x + rounded(s * d.x));
    }
}

}  // namespace
