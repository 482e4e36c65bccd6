#include <kestrel/geometry/KSAlgorithm.h>

#include <cmath>

KSVector2<double> KSAlgorithm::findProjectionOn45DegreesDirection(KSVector2<double> v,
                                                                  KSVector2<double> extra) {
    constexpr double k = 0.7071067811865476;  // the sine and the cosine of 45 degrees
    const double length = std::sqrt(v.x * v.x + v.y * v.y);
    const double extraLength = std::sqrt(extra.x * extra.x + extra.y * extra.y);
    const double scale = extraLength < 1e-7 ? 0 : length / extraLength;
    const KSVector2<double> candidates[] = {{length, 0},
                                            {0, length},
                                            {length * k, length * k},
                                            {length * k, -(length * k)},
                                            {extra.x * scale, extra.y * scale}};
    KSVector2<double> kept;
    double best = -1;
    bool negative = false;
    for (const KSVector2<double>& candidate : candidates) {
        const double dot = v.x * candidate.x + v.y * candidate.y;
        if (std::abs(dot) > best) {
            best = std::abs(dot);
            kept = candidate;
            negative = dot < 0;
        }
    }
    return negative ? KSVector2<double>(-kept.x, -kept.y) : kept;
}
