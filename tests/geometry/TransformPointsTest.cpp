#include <gtest/gtest.h>
#include <hwy/targets.h>
#include <kestrel/geometry/KSMatrix33.h>
#include <kestrel/geometry/KSMatrix44.h>
#include <kestrel/geometry/detail/TransformPoints.h>

#include <limits>
#include <random>
#include <vector>

#include "Reference.h"

using namespace kestrel::detail;

namespace {

/// Mostly ordinary numbers, and now and then one that breaks shortcuts.
double wild(std::mt19937& random) {
    using limits = std::numeric_limits<double>;
    static constexpr double odd[] = {0.0,
                                     -0.0,
                                     limits::infinity(),
                                     -limits::infinity(),
                                     limits::quiet_NaN(),
                                     limits::denorm_min(),
                                     limits::max(),
                                     1e-300,
                                     1,
                                     -1};
    if (random() % 8 == 0) return odd[random() % std::size(odd)];
    return std::uniform_real_distribution<double>(-1000, 1000)(random);
}

template <class Point>
void expectSame(const Point* got, const Point* want, std::size_t count, const char* what) {
    const auto *g = reinterpret_cast<const double*>(got), *w = reinterpret_cast<const double*>(want);
    for (std::size_t i = 0; i < count * sizeof(Point) / sizeof(double); ++i)
        ASSERT_EQ(bitsOf(g[i]), bitsOf(w[i]))
            << what << ", coordinate " << i << " of " << count << " points: " << g[i] << " for " << w[i];
}

using Kernel2 = decltype(&transformAffine2);
using Kernel3 = decltype(&transformAffine3);
using Kernel4 = decltype(&transformLinear4);

/// Every count up to several vectors, every start within a vector, in place and copying, on this target.
template <class Point, class Kernel>
void compare(Kernel kernel, Kernel reference, const char* what) {
    std::mt19937 random(61);
    for (std::size_t count = 0; count <= 19; ++count) {
        for (std::size_t shift = 0; shift < 4; ++shift) {
            double rows[16];
            for (double& r : rows) r = wild(random);
            std::vector<Point> from(count + shift + 5);
            for (Point& p : from)
                for (std::size_t k = 0; k < sizeof(Point) / sizeof(double); ++k)
                    reinterpret_cast<double*>(&p)[k] = wild(random);
            std::vector<Point> want = from, copied = from, inPlace = from;
            reference(rows, &from[shift], &want[shift], count);
            kernel(rows, &from[shift], &copied[shift], count);
            kernel(rows, &inPlace[shift], &inPlace[shift], count);
            expectSame(copied.data(), want.data(), want.size(), what);  // whole buffers: a stray write shows
            expectSame(inPlace.data(), want.data(), want.size(), what);
        }
    }
}

}  // namespace

TEST(TransformPoints, EveryTargetEqualsTheReference) {
    for (const auto target : hwy::SupportedAndGeneratedTargets()) {
        hwy::SetSupportedTargetsForTest(target);
        const char* name = hwy::TargetName(target);
        compare<Point2, Kernel2>(transformAffine2, transformAffine2Reference, name);
        compare<Point3, Kernel3>(transformAffine3, transformAffine3Reference, name);
        compare<Point3, Kernel3>(transformLinear3, transformLinear3Reference, name);
        compare<Point4, Kernel4>(transformLinear4, transformLinear4Reference, name);
    }
    hwy::SetSupportedTargetsForTest(0);  // all targets again
}

namespace {

/// The span forms of a matrix against its one-point form.
template <class Point, class M>
void compareWithOnePoint(const char* what) {
    std::mt19937 random(7);
    for (int round = 0; round < 50; ++round) {
        const M matrix = randomMatrix<M>(random);
        std::vector<Point> points(round);
        for (Point& p : points)
            for (std::size_t k = 0; k < sizeof(Point) / sizeof(double); ++k)
                reinterpret_cast<double*>(&p)[k] = wild(random);
        std::vector<Point> want = points, copied(points.size() + 2), shorter(points.size() / 2);
        for (Point& p : want) matrix.transform(p);
        matrix.transform(points, copied);
        matrix.transform(points, shorter);  // as many as both hold
        expectSame(copied.data(), want.data(), want.size(), what);
        expectSame(shorter.data(), want.data(), shorter.size(), what);
        EXPECT_EQ(copied.back(), Point()) << what;
        matrix.transform(points);
        expectSame(points.data(), want.data(), want.size(), what);
    }
}

}  // namespace

TEST(TransformPoints, SpansEqualTheOnePointForms) {
    compareWithOnePoint<Point2, KSMatrix33>("3x3, 2-vectors");
    compareWithOnePoint<Point3, KSMatrix33>("3x3, 3-vectors");
    compareWithOnePoint<Point2, KSMatrix44>("4x4, 2-vectors");
    compareWithOnePoint<Point3, KSMatrix44>("4x4, 3-vectors");
    compareWithOnePoint<Point4, KSMatrix44>("4x4, 4-vectors");
}
