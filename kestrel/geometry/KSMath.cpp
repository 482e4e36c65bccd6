#include <kestrel/geometry/KSMath.h>

#include <cmath>

namespace {

constexpr double epsilon = 3e-7;
constexpr double tiny = 1e-30;
constexpr double gammalnOfHalf = 0.57236494292474305;  // KSMath::gammaln(0.5)

/// e^-z * sqrt(z) / gamma(1/2), the factor that both expansions share.
double factor(double z) { return std::exp(-z + 0.5 * std::log(z) - gammalnOfHalf); }

/// P(1/2, z) by its series.
double series(double z) {
    double ap = 0.5, term = 2, sum = 2;
    for (int i = 0; i < 100; ++i) {
        ap += 1;
        term *= z / ap;
        sum += term;
        if (std::abs(term) < std::abs(sum) * epsilon) return sum * factor(z);
    }
    return 0;
}

/// P(1/2, z) by its continued fraction.
double continuedFraction(double z) {
    double b = z + 0.5, c = 1 / tiny, d = 1 / b, h = d;
    for (int i = 1; i <= 100; ++i) {
        const double an = -i * (i - 0.5);
        b += 2;
        d = an * d + b;
        d = std::abs(d) < tiny ? 1 / tiny : 1 / d;
        c = b + an / c;
        if (std::abs(c) < tiny) c = tiny;
        const double change = d * c;
        h *= change;
        if (std::abs(change - 1) < epsilon) break;
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
