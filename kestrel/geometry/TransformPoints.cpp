// A matrix applied to an array of points; detail/TransformPoints.h gives the formulas.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kestrel/geometry/TransformPoints.cpp"  // compiled once per vector target
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <kestrel/geometry/detail/Arithmetic.h>
#include <kestrel/geometry/detail/TransformPoints.h>

HWY_BEFORE_NAMESPACE();
namespace kestrel::detail {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// A point lies in pairs of lanes (x, y), so that memory is read and written as it is.
void affine2(const double* rows, const Point2* from, Point2* to, std::size_t count) {
    std::size_t i = 0;
#if HWY_TARGET != HWY_SCALAR  // which has a single lane
    const hn::ScalableTag<double> d;
    const std::size_t points = hn::Lanes(d) / 2;
    const auto pair = [&](double even, double odd)
                          HWY_ATTR { return hn::OddEven(hn::Set(d, odd), hn::Set(d, even)); };
    const auto columnX = pair(rows[0], rows[3]), columnY = pair(rows[1], rows[4]);
    const auto translation = pair(rows[2], rows[5]);
    for (; i + points <= count; i += points) {
        const auto v = hn::LoadU(d, &from[i].x);
        const auto sum = hn::Add(hn::Mul(columnX, hn::DupEven(v)), hn::Mul(columnY, hn::DupOdd(v)));
        hn::StoreU(hn::Add(sum, translation), d, &to[i].x);
    }
#endif
    transformAffine2Reference(rows, from + i, to + i, count - i);
}

template <bool translated>
HWY_INLINE void map3(const double* rows, const Point3* from, Point3* to, std::size_t count) {
    const hn::ScalableTag<double> d;
    constexpr std::size_t stride = translated ? 4 : 3;
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
        hn::Vec<decltype(d)> x, y, z;
        hn::LoadInterleaved3(d, &from[i].x, x, y, z);
        const auto row = [&](const double* r) HWY_ATTR {
            const auto plane = hn::Add(hn::Mul(hn::Set(d, r[0]), x), hn::Mul(hn::Set(d, r[1]), y));
            const auto sum = hn::Add(plane, hn::Mul(hn::Set(d, r[2]), z));
            if constexpr (translated) return hn::Add(sum, hn::Set(d, r[3]));
            return sum;
        };
        hn::StoreInterleaved3(row(rows), row(rows + stride), row(rows + 2 * stride), d, &to[i].x);
    }
    const auto reference = translated ? transformAffine3Reference : transformLinear3Reference;
    reference(rows, from + i, to + i, count - i);
}

void affine3(const double* rows, const Point3* from, Point3* to, std::size_t count) {
    map3<true>(rows, from, to, count);
}

void linear3(const double* rows, const Point3* from, Point3* to, std::size_t count) {
    map3<false>(rows, from, to, count);
}

void linear4(const double* rows, const Point4* from, Point4* to, std::size_t count) {
    const hn::ScalableTag<double> d;
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
        hn::Vec<decltype(d)> x, y, z, w;
        hn::LoadInterleaved4(d, &from[i].x, x, y, z, w);
        const auto row = [&](const double* r) HWY_ATTR {
            const auto plane = hn::Add(hn::Mul(hn::Set(d, r[0]), x), hn::Mul(hn::Set(d, r[1]), y));
            return hn::Add(hn::Add(plane, hn::Mul(hn::Set(d, r[2]), z)), hn::Mul(hn::Set(d, r[3]), w));
        };
        hn::StoreInterleaved4(row(rows), row(rows + 4), row(rows + 8), row(rows + 12), d, &to[i].x);
    }
    transformLinear4Reference(rows, from + i, to + i, count - i);
}

}  // namespace HWY_NAMESPACE
}  // namespace kestrel::detail
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kestrel::detail {

void transformAffine2Reference(const double* r, const Point2* from, Point2* to, std::size_t count) noexcept {
    for (std::size_t i = 0; i < count; ++i) {
        const Point2 p = from[i];
        to[i] = {dot(r[0], r[1], p.x, p.y) + r[2], dot(r[3], r[4], p.x, p.y) + r[5]};
    }
}

void transformAffine3Reference(const double* r, const Point3* from, Point3* to, std::size_t count) noexcept {
    for (std::size_t i = 0; i < count; ++i) {
        const Point3 p = from[i];
        to[i] = {dot(r[0], r[1], r[2], p.x, p.y, p.z) + r[3], dot(r[4], r[5], r[6], p.x, p.y, p.z) + r[7],
                 dot(r[8], r[9], r[10], p.x, p.y, p.z) + r[11]};
    }
}

void transformLinear3Reference(const double* r, const Point3* from, Point3* to, std::size_t count) noexcept {
    for (std::size_t i = 0; i < count; ++i) {
        const Point3 p = from[i];
        to[i] = {dot(r[0], r[1], r[2], p.x, p.y, p.z), dot(r[3], r[4], r[5], p.x, p.y, p.z),
                 dot(r[6], r[7], r[8], p.x, p.y, p.z)};
    }
}

void transformLinear4Reference(const double* r, const Point4* from, Point4* to, std::size_t count) noexcept {
    for (std::size_t i = 0; i < count; ++i) {
        const auto [x, y, z, w] = from[i];
        to[i] = {dot(r[0], r[1], r[2], r[3], x, y, z, w), dot(r[4], r[5], r[6], r[7], x, y, z, w),
                 dot(r[8], r[9], r[10], r[11], x, y, z, w), dot(r[12], r[13], r[14], r[15], x, y, z, w)};
    }
}

HWY_EXPORT(affine2);
HWY_EXPORT(affine3);
HWY_EXPORT(linear3);
HWY_EXPORT(linear4);

void transformAffine2(const double* rows, const Point2* from, Point2* to, std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(affine2)(rows, from, to, count);
}
void transformAffine3(const double* rows, const Point3* from, Point3* to, std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(affine3)(rows, from, to, count);
}
void transformLinear3(const double* rows, const Point3* from, Point3* to, std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(linear3)(rows, from, to, count);
}
void transformLinear4(const double* rows, const Point4* from, Point4* to, std::size_t count) noexcept {
    HWY_DYNAMIC_DISPATCH(linear4)(rows, from, to, count);
}

}  // namespace kestrel::detail
#endif
