// kestrel/geometry/detail/Rotation.h - the cosine and the sine of one angle.
#pragma once

#include <cmath>

namespace kestrel::detail {

/// An angle of exactly 0 gives 1 and 0 without a call.
struct Rotation {
    double c = 1, s = 0;

    explicit Rotation(double angle) {
        if (angle != 0) {
            c = std::cos(angle);  // compilers make one call of the two
            s = std::sin(angle);
        }
    }
};

}  // namespace kestrel::detail
