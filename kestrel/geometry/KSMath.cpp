#include <kestrel/geometry/KSMath.h>

#include <cmath>

namespace {

constexpr double epsilon = 3e-7;
constexpr double gammalnOfHalf = 0.57236494292474305;  // KSMath::gammaln(0.5)

/// e^(-z + ln(z) / 2 - gammalnOfHalf), the factor that both expansions share.
double factor(double z) {
    static const double scale = std::exp(-gammalnOfHalf);
    return std::exp(-z) * std::sqrt(z) * scale;
}

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

/// P(1/2, z) by its continued fraction, for z >= 1.5. The rounds and their end are those of Lentz's method,
/// which divides twice a round to get the ratio of one convergent to the one before; here numerators a and
/// denominators b stay apart, and the ratio is compared without a division.
double continuedFraction(double z) {
    if (z > 40)
        return std::isinf(z) ? std::nan("") : 1;  // 1 less what a double cannot show; infinity - infinity
    double step = z + 0.5;
    double a0 = 0, a1 = 1, b0 = 1, b1 = step;
    for (int i = 1; i <= 100; ++i) {
        const double an = -i * (i - 0.5);
        step += 2;
        const double a2 = step * a1 + an * a0, b2 = step * b1 + an * b0;
        const bool ended = std::abs(a2 * b1 - a1 * b2) < epsilon * (a1 * b2);
        a0 = a1, a1 = a2, b0 = b1, b1 = b2;
        if (ended) break;
    }
    return 1 - a1 / b1 * factor(z);
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
