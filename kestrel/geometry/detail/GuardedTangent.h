// kestrel/geometry/detail/GuardedTangent.h - the tangent that shears use.
#pragma once

#include <kestrel/platform/Export.h>

namespace kestrel::detail {

/// guardedTangent of an angle that is not 0.
KESTREL_API double guardedTangentOf(double angle);

/// The tangent of an angle in radians, finite even at a right angle.
///
/// An angle of exactly 0 gives 0. Otherwise pi is added while the angle is negative and subtracted while it
/// is above pi, each step rounded, and within 0.3 degrees of a right angle the lower end of that gap is
/// taken. Large angles take the same steps, a whole binade at a time. An angle so large that a step no longer
/// changes it (from about 1.8e16 on) is reduced by the exact remainder instead; an infinite one gives NaN.
inline double guardedTangent(double angle) { return angle == 0 ? 0 : guardedTangentOf(angle); }

}  // namespace kestrel::detail
