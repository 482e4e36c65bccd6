// kestrel/geometry/detail/TransformPoints.h - a matrix applied to an array of points.
//
// Every function reads count points at from and writes as many at to, which may be the same array. rows are
// the rows of the matrix that matter, one after the other:
//     Affine2   2 x 3   x' = (r0 x + r1 y) + r2                   each product and sum rounded by itself, in
//     Affine3   3 x 4   x' = ((r0 x + r1 y) + r2 z) + r3          exactly this order
//     Linear3   3 x 3   x' = (r0 x + r1 y) + r2 z
//     Linear4   4 x 4   x' = ((r0 x + r1 y) + r2 z) + r3 w
// The ...Reference functions are the definition; the others do the same in vectors and give the same bits.
#pragma once

#include <kestrel/geometry/KSVector2.h>
#include <kestrel/geometry/KSVector3.h>
#include <kestrel/geometry/KSVector4.h>

#include <cstddef>

namespace kestrel::detail {

using Point2 = KSVector2<double>;
using Point3 = KSVector3<double>;
using Point4 = KSVector4<double>;

void transformAffine2(const double* rows, const Point2* from, Point2* to, std::size_t count) noexcept;
void transformAffine3(const double* rows, const Point3* from, Point3* to, std::size_t count) noexcept;
void transformLinear3(const double* rows, const Point3* from, Point3* to, std::size_t count) noexcept;
void transformLinear4(const double* rows, const Point4* from, Point4* to, std::size_t count) noexcept;

void transformAffine2Reference(const double* rows, const Point2* from, Point2* to,
                               std::size_t count) noexcept;
void transformAffine3Reference(const double* rows, const Point3* from, Point3* to,
                               std::size_t count) noexcept;
void transformLinear3Reference(const double* rows, const Point3* from, Point3* to,
                               std::size_t count) noexcept;
void transformLinear4Reference(const double* rows, const Point4* from, Point4* to,
                               std::size_t count) noexcept;

}  // namespace kestrel::detail
