// kestrel/color/KSColor-inl.h - the bodies of KSColor, here so that they serve in constant expressions.
//
// Sources: A. R. Smith, "Color Gamut Transform Pairs", 1978 (HSV, HSL); A. R. Smith and E. R. Lyons, "HWB - A
// More Intuitive Hue-Based Color Model", 1996 (its hue starts at a different place, as RGBtoHWB says); the
// NTSC and PAL encoding matrices, rounded to three digits (YIQ, YUV).
#pragma once

#include <kestrel/color/KSColor.h>

#include <limits>

inline constexpr KSColor KSColor::RED{RGB, 1, 0, 0, 1};
inline constexpr KSColor KSColor::GREEN{RGB, 0, 1, 0, 1};
inline constexpr KSColor KSColor::BLUE{RGB, 0, 0, 1, 1};
inline constexpr KSColor KSColor::BLACK{RGB, 0, 0, 0, 1};
inline constexpr KSColor KSColor::WHITE{RGB, 1, 1, 1, 1};
inline constexpr KSColor KSColor::CLEAR{RGB, 0, 0, 0, 0};
inline constexpr KSColor KSColor::YELLOW{RGB, 1, 1, 0, 1};

namespace kestrel::detail {

inline constexpr float colorTolerance = 1e-5f;

/// |value| < tolerance, false for NaN.
constexpr bool isWithin(float value, float tolerance) { return value < tolerance && value > -tolerance; }
constexpr bool isNearZero(float value) { return isWithin(value, colorTolerance); }

constexpr float clampTo(float value, float low, float high) {
    return value < low ? low : value > high ? high : value;  // NaN stays
}

/// fmod(hue, 360) in double: the long division below is exact, and serves in constant expressions too.
constexpr double hueRemainder(double hue) {
    double rest = hue < 0 ? -hue : hue;
    if (!(rest <= std::numeric_limits<double>::max())) return std::numeric_limits<double>::quiet_NaN();
    double step = 360;
    while (step * 2 <= rest) step *= 2;
    for (; step >= 360; step /= 2)
        if (rest >= step) rest -= step;
    return hue < 0 ? -rest : rest;
}

/// The hue in 0..360, 360 itself included; far hues are folded at once, near ones step by step.
constexpr float foldedHue(float hue) {
    if (hue > 3600 || hue < -3600) hue = static_cast<float>(hueRemainder(hue));
    while (hue > 360) hue -= 360;
    while (hue < 0) hue += 360;
    return hue;
}

struct Extremes {
    constexpr Extremes(float r, float g, float b) : max(r > g ? r : g), min(r < g ? r : g) {
        max = max > b ? max : b;
        min = min < b ? min : b;
    }
    float max, min;
};

/// The hue of HSL and HSV in degrees, -60..300. On a tie red comes first, then green. The sector is an index
/// rather than a branch, which no processor can foresee.
constexpr float hexagonHue(float r, float g, float b, float max, float d) {
    const float differences[3] = {g - b, b - r, r - g};
    const int sector = max == r ? 0 : 1 + (max != g);
    return 60 * (static_cast<float>(2 * sector) + differences[sector] / d);
}

}  // namespace kestrel::detail

// ---- Reading

constexpr void KSColor::getRGBA(float* r, float* g, float* b, float* a) const {
    KSColor rgb = *this;
    rgb.convertToRGB();
    *r = rgb.c0;
    *g = rgb.c1;
    *b = rgb.c2;
    *a = alpha;
}

constexpr float KSColor::getRed() const {
    KSColor rgb = *this;
    rgb.convertToRGB();
    return rgb.c0;
}

constexpr float KSColor::getGreen() const {
    KSColor rgb = *this;
    rgb.convertToRGB();
    return rgb.c1;
}

constexpr float KSColor::getBlue() const {
    KSColor rgb = *this;
    rgb.convertToRGB();
    return rgb.c2;
}

// ---- Arithmetic

template <typename Change>
constexpr void KSColor::changeIntensity(Change change) {
    switch (type) {
        case HSL:
        case HSV:
            c2 = change(c2);
            break;
        case HWB:
            c1 = change(c1);
            break;
        case RGB:
        case YIQ:
        case YUV:
            changeAll(change);
            break;
        case CLU:
            c0 = change(c0);
            break;
    }
}

template <typename Change>
constexpr KSColor& KSColor::changeAll(Change change) {
    c0 = change(c0);
    c1 = change(c1);
    c2 = change(c2);
    return *this;
}

constexpr void KSColor::operator+=(float value) {
    changeIntensity([value](float c) { return c + value; });
}

constexpr void KSColor::operator-=(float value) {
    changeIntensity([value](float c) { return c - value; });
}

constexpr void KSColor::operator*=(float value) {
    changeIntensity([value](float c) { return c * value; });
}

constexpr void KSColor::operator/=(float value) {
    if (value != 0) changeIntensity([value](float c) { return c / value; });
}

constexpr KSColor& KSColor::add(float value) {
    return changeAll([value](float c) { return c + value; });
}

constexpr KSColor& KSColor::sub(float value) {
    return changeAll([value](float c) { return c - value; });
}

constexpr KSColor& KSColor::mul(float value) {
    return changeAll([value](float c) { return c * value; });
}

constexpr KSColor& KSColor::div(float value) {
    return value == 0 ? *this : changeAll([value](float c) { return c / value; });
}

constexpr KSColor& KSColor::mix(const KSColor& other, float t) {
    c0 = (1 - t) * c0 + t * other.c0;
    c1 = (1 - t) * c1 + t * other.c1;
    c2 = (1 - t) * c2 + t * other.c2;
    return *this;
}

/// Whether the hue means nothing. Only HSL, HSV and HWB have a hue; other types answer false.
constexpr bool KSColor::isGrey() const {
    if (type == HSL || type == HSV) return kestrel::detail::isNearZero(c1);
    return type == HWB && kestrel::detail::isNearZero(1 - c2 - c1);
}

constexpr KSColor& KSColor::operator+=(const KSColor& other) {
    KSColor term = other;
    term.convert(type);
    if (!isGrey()) {
        c0 += term.c0;
        c1 += term.c1;
    } else if (type == HWB) {
        c1 += term.c1;
    }
    c2 += term.c2;
    return *this;
}

constexpr KSColor& KSColor::operator-=(const KSColor& other) {
    KSColor term;
    if (other.type < CLU) {
        const bool grey = other.isGrey();
        term = {other.type, grey ? other.c0 : -other.c0, -other.c1, -other.c2, 1};
        if (grey && other.type != HWB) term.c1 = other.c1;
    }
    return *this += term;
}

constexpr void KSColor::clamp() {
    using kestrel::detail::clampTo;
    alpha = clampTo(alpha, 0, 1);
    switch (type) {
        case HSL:
        case HSV:
        case HWB:
            c1 = clampTo(c1, 0, 1);
            c2 = clampTo(c2, 0, 1);
            foldHue();
            break;
        case RGB:
            changeAll([](float c) { return clampTo(c, 0, 1); });
            break;
        case YIQ:  // the limits of a component differ by one unit in the last place, deliberately
            c0 = clampTo(c0, 0, 1);
            c1 = clampTo(c1, -0x1.3126e8p-1f, 0x1.3126eap-1f);  // -0.59599996, 0.596
            c2 = clampTo(c2, -0x1.189374p-2f, 0x1.189376p-2f);  // -0.274, 0.27400002
            break;
        case YUV:
            c0 = clampTo(c0, 0, 1);
            c1 = clampTo(c1, -0.436f, 0.436f);
            c2 = clampTo(c2, -0.615f, 0.615f);
            break;
        case CLU:
            c0 = clampTo(c0, 0, 1);
            break;
    }
}

constexpr void KSColor::foldHue() { c0 = isGrey() ? 0 : kestrel::detail::foldedHue(c0); }

constexpr void KSColor::invert() {
    clamp();
    changeAll([](float c) { return 1 - c; });
}

// ---- Comparison

constexpr bool KSColor::operator==(const KSColor& other) const {
    KSColor a = *this, b = other;
    if (a.type != b.type) {
        a.convertToRGB();
        b.convertToRGB();
    }
    using kestrel::detail::isNearZero;
    return isNearZero(a.c0 - b.c0) && isNearZero(a.c1 - b.c1) && isNearZero(a.c2 - b.c2) &&
           isNearZero(a.alpha - b.alpha);
}

constexpr bool KSColor::colorCompare(const KSColor& other, float tolerance) const {
    KSColor same = other;
    same.convert(type);
    using kestrel::detail::isWithin;
    return isWithin(c0 - same.c0, tolerance) || isWithin(c1 - same.c1, tolerance) ||
           isWithin(c2 - same.c2, tolerance);
}

// ---- Conversion in place

constexpr void KSColor::convertToRGB() {
    switch (type) {
        case HSL:
            HSLtoRGB(c0, c1, c2, &c0, &c1, &c2);
            break;
        case HSV:
            HSVtoRGB(c0, c1, c2, &c0, &c1, &c2);
            break;
        case HWB:
            HWBtoRGB(c0, c1, c2, &c0, &c1, &c2);
            break;
        case RGB:
            break;
        case YIQ:
            YIQtoRGB(c0, c1, c2, &c0, &c1, &c2);
            break;
        case YUV:
            YUVtoRGB(c0, c1, c2, &c0, &c1, &c2);
            break;
        case CLU:
            CLUtoRGB(c0, c1, c2, &c0, &c1, &c2);
            break;
    }
    type = RGB;
}

constexpr void KSColor::convertThroughRGB(PairFunction& fromRGB, Type t) {
    if (type == t) return;
    convertToRGB();
    fromRGB(c0, c1, c2, &c0, &c1, &c2);
    type = t;
}

constexpr void KSColor::convertToHSL() { convertThroughRGB(RGBtoHSL, HSL); }

constexpr void KSColor::convertToHSV() { convertThroughRGB(RGBtoHSV, HSV); }

constexpr void KSColor::convertToHWB() { convertThroughRGB(RGBtoHWB, HWB); }

constexpr void KSColor::convertToYIQ() { convertThroughRGB(RGBtoYIQ, YIQ); }

constexpr void KSColor::convertToYUV() { convertThroughRGB(RGBtoYUV, YUV); }

constexpr void KSColor::convertToCLU() { convertThroughRGB(RGBtoCLU, CLU); }

constexpr void KSColor::convert(Type t) {
    if (t == type) return;
    switch (t) {
        case HSL:
            convertToHSL();
            break;
        case HSV:
            convertToHSV();
            break;
        case HWB:
            convertToHWB();
            break;
        case RGB:
            convertToRGB();
            break;
        case YIQ:
            convertToYIQ();
            break;
        case YUV:
            convertToYUV();
            break;
        case CLU:
            convertToCLU();
            break;
    }
}

// ---- Hue models. Outputs are written last: they may be the memory that the inputs came from.

constexpr void KSColor::RGBtoHSV(float red, float green, float blue, float* h, float* s, float* v) {
    const kestrel::detail::Extremes e(red, green, blue);
    float hue = 0, saturation = 0;
    if (!kestrel::detail::isNearZero(e.max) && e.max != e.min) {
        const float d = e.max - e.min;
        saturation = d / e.max;
        hue = kestrel::detail::hexagonHue(red, green, blue, e.max, d);
        if (hue < 0) hue += 360;
    }
    *h = hue;
    *s = saturation;
    *v = e.max;
}

constexpr void KSColor::HSVtoRGB(float h, float s, float v, float* red, float* green, float* blue) {
    if (kestrel::detail::isNearZero(s)) {
        *red = *green = *blue = v;
        return;
    }
    h = kestrel::detail::foldedHue(h) / 60;
    if (!(h < 6)) return;  // there is no sector for a hue of exactly 360, nor for NaN
    const int sector = static_cast<int>(h);
    const float f = h - static_cast<float>(sector);
    if (s > 1) s = 1;
    const float p = v * (1 - s);
    const float q = v * (1 - s * f);
    const float t = v * (1 - s * (1 - f));
    // By sector: (v t p), (q v p), (p v t), (p q v), (t p v), (v p q); picked by index, not by branch.
    enum : unsigned char { V, P, Q, T };
    constexpr unsigned char order[6][3] = {{V, T, P}, {Q, V, P}, {P, V, T}, {P, Q, V}, {T, P, V}, {V, P, Q}};
    const float values[4] = {v, p, q, t};
    *red = values[order[sector][0]];
    *green = values[order[sector][1]];
    *blue = values[order[sector][2]];
}

constexpr void KSColor::RGBtoHSL(float red, float green, float blue, float* h, float* s, float* l) {
    const kestrel::detail::Extremes e(red, green, blue);
    const float lightness = (e.max + e.min) * 0.5f;
    float hue = 0, saturation = 0;
    if (e.max != e.min) {
        const float d = e.max - e.min;
        const double range = lightness <= 0.5f ? e.max + e.min : 2 - e.max - e.min;
        saturation = static_cast<float>(d / range);  // in double
        hue = kestrel::detail::hexagonHue(red, green, blue, e.max, d);
        if (hue < 0)
            hue += 360;
        else if (hue == 360)
            hue = 0;
    }
    *h = hue;
    *s = saturation;
    *l = lightness;
}

constexpr void KSColor::HSLtoRGB(float h, float s, float l, float* red, float* green, float* blue) {
    if (kestrel::detail::isNearZero(s)) {
        *red = *green = *blue = l;
        return;
    }
    const float m2 = l <= 0.5f ? l * (1 + s) : l + s - l * s;
    const float m1 = 2 * l - m2;
    const auto value = [=](float hue) {
        if (hue > 360)
            hue -= 360;
        else if (hue < 0)
            hue += 360;
        if (hue < 60) return m1 + (m2 - m1) * hue / 60;
        if (hue < 180) return m2;
        if (hue < 240) return m1 + (m2 - m1) * (240 - hue) / 60;
        return m1;
    };
    *red = value(h + 120);
    *green = value(h);
    *blue = value(h - 120);
}

constexpr void KSColor::RGBtoHWB(float red, float green, float blue, float* h, float* w, float* b) {
    using kestrel::detail::isNearZero;
    const kestrel::detail::Extremes e(red, green, blue);
    const float d = e.max - e.min;
    if (isNearZero(d))
        *h = 0;
    else if (isNearZero(red - e.min))
        *h = (2 - (green - blue) / d) * 60;  // HWBtoRGB has this sector at 3; both are kept
    else if (isNearZero(green - e.min))
        *h = (5 - (blue - red) / d) * 60;
    else
        *h = (1 - (red - green) / d) * 60;
    *w = e.min;
    *b = 1 - e.max;
}

constexpr void KSColor::HWBtoRGB(float h, float w, float b, float* red, float* green, float* blue) {
    const auto write = [=](float r, float g, float bl) {
        *red = r;
        *green = g;
        *blue = bl;
    };
    const float v = 1 - b;
    if (kestrel::detail::isNearZero(v - w)) return write(v, v, v);
    h /= 60;
    const float place = h + kestrel::detail::colorTolerance;
    if (!(place >= 0 && place < 7)) return;  // a negative hue, one past the last sector, NaN
    const int sector = static_cast<int>(place);
    float f = h - static_cast<float>(sector);
    if (sector & 1) f = 1 - f;
    const float n = w + f * (v - w);
    switch (sector) {
        case 1:
            return write(n, v, w);
        case 2:
            return write(w, v, n);
        case 3:
            return write(w, n, v);
        case 4:
            return write(n, w, v);
        case 5:
            return write(v, w, n);
        default:
            return write(v, n, w);  // 0 and 6
    }
}

// ---- Linear models

constexpr void KSColor::RGBtoYIQ(float red, float green, float blue, float* y, float* i, float* q) {
    *y = 0.299f * red + 0.587f * green + 0.114f * blue;
    *i = 0.596f * red - 0.274f * green - 0.322f * blue;
    *q = 0.212f * red - 0.523f * green + 0.311f * blue;
}

constexpr void KSColor::YIQtoRGB(float y, float i, float q, float* red, float* green, float* blue) {
    *red = y + 0.956f * i + 0.621f * q;
    *green = y - 0.272f * i - 0.647f * q;
    *blue = y - 1.105f * i + 1.702f * q;
}

constexpr void KSColor::RGBtoYUV(float red, float green, float blue, float* y, float* u, float* v) {
    *y = 0.299f * red + 0.587f * green + 0.114f * blue;
    *u = -0.147f * red - 0.289f * green + 0.436f * blue;
    *v = 0.615f * red - 0.515f * green - 0.100f * blue;
}

constexpr void KSColor::YUVtoRGB(float y, float u, float v, float* red, float* green, float* blue) {
    *red = y + 1.14f * v;
    *green = y - 0.396f * u - 0.581f * v;
    *blue = y + 2.029f * u;
}

constexpr void KSColor::RGBtoCLU(float red, float green, float blue, float* c, float* l, float* u) {
    const double r = red, g = green, b = blue;
    *c = static_cast<float>((r + g + b) * 0.577 * 0.577);
    *l = static_cast<float>((g - r) * 0.707);
    *u = static_cast<float>((2 * b - r - g) * 0.408);
}

constexpr void KSColor::CLUtoRGB(float c, float l, float u, float* red, float* green, float* blue) {
    const double k = c * 0.999364;
    *red = static_cast<float>(k - 0.707 * l - 0.408 * u);
    *green = static_cast<float>(k + 0.707 * l - 0.408 * u);
    *blue = static_cast<float>(k + 0.816 * u);
}
