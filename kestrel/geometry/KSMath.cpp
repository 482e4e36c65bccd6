#include <kestrel/geometry/KSMath.h>

#include <cmath>

namespace {

constexpr double epsilon = 3e-7;
constexpr double floorOfTerms = 1e-30;
constexpr double gammalnOfHalf = 0.57236494292474305;  // KSMath::gammaln(0.5)

/// The factor that both expansions share.
double factor(double z) { return std::exp(-z + 0.5 * std::log(z) - gammalnOfHalf); }

/// P(1/2, z) by its series, for 0 < z < 1.5. It ends long before its limit of 100 terms.
double series(double z) {
    double ap = 0.5, term = 2, sum = 2;
    do {
        ap += 1;
        term *= z / ap;
        sum += term;
    } while (term >= sum * epsilon);
    return sum * factor(z);
}

/// P(1/2, z) by its continued fraction (Lentz's method as modified by Thompson and Barnett), for z >= 1.5.
double continuedFraction(double z) {
    if (z > 40)
        return std::isinf(z) ? std::nan("") : 1;  // 1 less what a double cannot show; infinity - infinity
    double b = z + 0.5;
    double c = 1e30, d = 1 / b, h = d;
    for (int i = 1; i <= 100; ++i) {
        const double an = -i * (i - 0.5);
        b += 2;
        d = an * d + b;
        d = std::abs(d) < floorOfTerms ? 1e30 : 1 / d;
        c = b + an / c;
        if (std::abs(c) < floorOfTerms) c = floorOfTerms;
        const double ratio = d * c;
        h *= ratio;
        if (std::abs(ratio - 1) < epsilon) break;
    }
    return 1 - h * factor(z);
}

}  // namespace

double KSMath::gammaln(double x) {
    const double ser = 1.000000000190015 + 76.18009172947146 / (x + 1) - 86.50532032941678 / (x + 2) +
                       24.01409824083091 / (x + 3) - 1.231739572450155 / (x + 4) +
                       0.001208650973866179 / (x + 5) - 5.395239384953e-6 / (x + 6);
    const double tmp = (x + 5.5) - (x + 0.5) * std::log(x + 5.5);
    return std::log(2.5066282746310007 * ser / x) - tmp;
}

double KSMath::erf(double x) {
    const double z = x * x;
    const double magnitude = z < 1.5 ? (z <= 0 ? 0 : series(z)) : continuedFraction(z);
    return std::signbit(x) ? -magnitude : magnitude;
}
