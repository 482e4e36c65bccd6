#include <kestrel/time/KSTimeValue.h>

#include <cmath>

void KSTimeValue::setRate(double framesPerSecond, bool isNtsc) noexcept {
    rate = framesPerSecond;
    ntsc = isNtsc;
    const double nearest = std::floor(framesPerSecond + 0.5 + 1e-7);
    const double difference = framesPerSecond - nearest;
    if ((nearest == 30 || nearest == 24 || nearest == 60) && difference < 0 && difference > -0.1) {
        rate = nearest;
        ntsc = true;
    }
}

double KSTimeValue::getDisplayRate() const noexcept {
    return ntsc ? std::floor(0.999000999000999 * rate * 100 + 0.5 + 1e-7) * 0.01 : rate;
}
