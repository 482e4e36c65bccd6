// Compositing with a blend function B(cb, cs) of backdrop and source colour, in premultiplied terms:
//   result colour = (1 - ab) as cs + (1 - as) ab cb + as ab B(cb, cs)
//   result alpha  = as + ab - as ab
// Sources: W3C "Compositing and Blending Level 1", sections 5.8 (the general formula, also ISO 32000-1:2008,
// 11.3.6), 10.1 (separable modes, also ISO 32000-1 table 136) and 10.2 (non-separable modes, table 137);
// Khronos registry, "NV_blend_equation_advanced", table X.1, for the linear, vivid and pin modes and hard mix.
// Where neither names a mode, the definition that image editors share is given and marked "shared".
//
// B is defined on 0 to 1, so both colours are clamped before it and the results lie there too. Normal has no
// B: colours above 1 pass through it.
#include "BlendFormulas.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kestrel::tools::render {
namespace {

float clampShare(float value) { return std::min(std::max(value, 0.0f), 1.0f); }

// ---- separable functions: one number of the backdrop, one of the source
//
// Quotients are formed before it is known whether they are wanted, so that the compiler can turn each function
// into vectors without branches.

struct Multiply {
    static float blend(float b, float s) { return b * s; }
};
struct Screen {
    static float blend(float b, float s) { return b + s - b * s; }
};
struct Darken {
    static float blend(float b, float s) { return std::min(b, s); }
};
struct Lighten {
    static float blend(float b, float s) { return std::max(b, s); }
};
struct ColorDodge {
    static float blend(float b, float s) {
        const float quotient = b / (1 - s);
        return b <= 0 ? 0 : s >= 1 ? 1 : std::min(1.0f, quotient);
    }
};
struct ColorBurn {
    static float blend(float b, float s) {
        const float quotient = (1 - b) / s;
        return b >= 1 ? 1 : s <= 0 ? 0 : 1 - std::min(1.0f, quotient);
    }
};
struct HardLight {
    static float blend(float b, float s) {
        const float product = Multiply::blend(b, 2 * s), screen = Screen::blend(b, 2 * s - 1);
        return s <= 0.5f ? product : screen;
    }
};
struct Overlay {
    static float blend(float b, float s) { return HardLight::blend(s, b); }
};
struct SoftLight {
    static float blend(float b, float s) {
        const float root = std::sqrt(b), polynomial = ((16 * b - 12) * b + 4) * b;
        const float darker = b - (1 - 2 * s) * b * (1 - b);
        const float lighter = b + (2 * s - 1) * ((b <= 0.25f ? polynomial : root) - b);
        return s <= 0.5f ? darker : lighter;
    }
};
struct Difference {
    static float blend(float b, float s) { return std::abs(b - s); }
};
struct Exclusion {
    static float blend(float b, float s) { return b + s - 2 * b * s; }
};
struct LinearBurn {
    static float blend(float b, float s) { return std::max(0.0f, b + s - 1); }
};
struct Add {  // linear dodge
    static float blend(float b, float s) { return std::min(1.0f, b + s); }
};
struct LinearLight {
    static float blend(float b, float s) { return clampShare(b + 2 * s - 1); }
};
struct VividLight {
    static float blend(float b, float s) {
        const float burn = 1 - std::min(1.0f, (1 - b) / (2 * s)), dodge = std::min(1.0f, b / (2 * (1 - s)));
        return s <= 0 ? 0 : s >= 1 ? 1 : s < 0.5f ? burn : dodge;
    }
};
struct PinLight {
    static float blend(float b, float s) {
        const float low = std::min(b, 2 * s), high = std::max(b, 2 * s - 1);
        return s < 0.5f ? low : high;
    }
};
struct HardMix {
    static float blend(float b, float s) { return b + s < 1 ? 0 : 1; }
};
struct Average {  // shared
    static float blend(float b, float s) { return (b + s) / 2; }
};
struct Subtract {  // shared: the source is taken from the backdrop
    static float blend(float b, float s) { return std::max(0.0f, b - s); }
};
struct Divide {  // shared: the backdrop is divided by the source; nothing stays black
    static float blend(float b, float s) {
        const float quotient = b / s;
        return b <= 0 ? 0 : b >= s ? 1 : quotient;
    }
};

// ---- non-separable functions: all three numbers at once

using Color = std::array<float, 3>;

float luminosity(const Color& c) { return 0.3f * c[0] + 0.59f * c[1] + 0.11f * c[2]; }

float saturation(const Color& c) {
    return std::max(std::max(c[0], c[1]), c[2]) - std::min(std::min(c[0], c[1]), c[2]);
}

/// Moves the colour to this luminosity, and towards grey where it would leave 0 to 1.
Color withLuminosity(Color c, float wanted) {
    const float shift = wanted - luminosity(c);
    for (float& x : c) x += shift;
    const float l = luminosity(c);
    const float low = std::min(std::min(c[0], c[1]), c[2]), high = std::max(std::max(c[0], c[1]), c[2]);
    for (float& x : c) {
        if (low < 0 && l > low) x = l + (x - l) * l / (l - low);
        if (high > 1 && high > l) x = l + (x - l) * (1 - l) / (high - l);
        x = clampShare(x);
    }
    return c;
}

/// Stretches the colour from 0 to this saturation.
Color withSaturation(Color c, float wanted) {
    const float low = std::min(std::min(c[0], c[1]), c[2]), range = saturation(c);
    for (float& x : c) x = range > 0 ? (x - low) * wanted / range : 0;
    return c;
}

struct Hue {
    static Color blend(const Color& b, const Color& s) {
        return withLuminosity(withSaturation(s, saturation(b)), luminosity(b));
    }
};
struct Saturation {
    static Color blend(const Color& b, const Color& s) {
        return withLuminosity(withSaturation(b, saturation(s)), luminosity(b));
    }
};
struct OfColor {
    static Color blend(const Color& b, const Color& s) { return withLuminosity(s, luminosity(b)); }
};
struct Luminosity {
    static Color blend(const Color& b, const Color& s) { return withLuminosity(b, luminosity(s)); }
};
struct DarkerColor {  // shared: the whole colour of less luminosity
    static Color blend(const Color& b, const Color& s) { return luminosity(s) < luminosity(b) ? s : b; }
};
struct LighterColor {  // shared
    static Color blend(const Color& b, const Color& s) { return luminosity(s) > luminosity(b) ? s : b; }
};

// ---- rows

/// What a premultiplied number was before, within 0 to 1.
float straight(float number, float alpha) {
    const float quotient = number / alpha;
    return alpha > 0 ? clampShare(quotient) : 0;
}

/// A number of the result; both its colours have gone through B.
float composite(float backdrop, float under, float source, float over, float opacity, float mixed) {
    const float alpha = over * opacity;
    return (1 - under) * opacity * source + (1 - alpha) * backdrop + alpha * under * mixed;
}

/// Source over backdrop: B(cb, cs) = cs, where the general formula needs no division. Also what every mode does
/// to alpha.
void overChannel(float* __restrict backdrop, const float* __restrict source, const float* __restrict over,
                 std::size_t pixels, float opacity) {
    for (std::size_t i = 0; i < pixels; ++i)
        backdrop[i] = source[i] * opacity + backdrop[i] * (1 - over[i] * opacity);
}

void normalRow(Row<float> backdrop, Row<const float> source, std::size_t pixels, float opacity) {
    for (std::size_t c = 0; c < 4; ++c)
        overChannel(backdrop.channel(c), source.channel(c), source.channel(3), pixels, opacity);
}

template <class Formula>
void formulaChannel(float* __restrict backdrop, const float* __restrict under, const float* __restrict source,
                    const float* __restrict over, std::size_t pixels, float opacity) {
    for (std::size_t i = 0; i < pixels; ++i) {
        const float mixed = Formula::blend(straight(backdrop[i], under[i]), straight(source[i], over[i]));
        backdrop[i] = composite(backdrop[i], under[i], source[i], over[i], opacity, mixed);
    }
}

template <class Formula>
constexpr bool isSeparable = requires {
    Formula::blend(0.0f, 0.0f);
};

template <class Formula>
void formulaRow(Row<float> backdrop, Row<const float> source, std::size_t pixels, float opacity) {
    float* const under = backdrop.channel(3);
    const float* const over = source.channel(3);
    if constexpr (isSeparable<Formula>) {
        for (std::size_t c = 0; c < 3; ++c)
            formulaChannel<Formula>(backdrop.channel(c), under, source.channel(c), over, pixels, opacity);
    } else {
        for (std::size_t i = 0; i < pixels; ++i) {
            Color b, s;
            for (std::size_t c = 0; c < 3; ++c) {
                b[c] = straight(backdrop.channel(c)[i], under[i]);
                s[c] = straight(source.channel(c)[i], over[i]);
            }
            const Color mixed = Formula::blend(b, s);
            for (std::size_t c = 0; c < 3; ++c) {
                float& result = backdrop.channel(c)[i];
                result = composite(result, under[i], source.channel(c)[i], over[i], opacity, mixed[c]);
            }
        }
    }
    overChannel(under, over, over, pixels, opacity);
}

struct Entry {
    KSBlendMode mode;
    BlendRow row;
};
constexpr Entry entries[] = {
    {KSBlendModeNormal, normalRow},
    {KSBlendModeDarken, formulaRow<Darken>},
    {KSBlendModeMultiply, formulaRow<Multiply>},
    {KSBlendModeColorBurn, formulaRow<ColorBurn>},
    {KSBlendModeLinearBurn, formulaRow<LinearBurn>},
    {KSBlendModeDarkerColor, formulaRow<DarkerColor>},
    {KSBlendModeLighten, formulaRow<Lighten>},
    {KSBlendModeScreen, formulaRow<Screen>},
    {KSBlendModeColorDodge, formulaRow<ColorDodge>},
    {KSBlendModeAdd, formulaRow<Add>},
    {KSBlendModeLighterColor, formulaRow<LighterColor>},
    {KSBlendModeOverlay, formulaRow<Overlay>},
    {KSBlendModeSoftLight, formulaRow<SoftLight>},
    {KSBlendModeHardLight, formulaRow<HardLight>},
    {KSBlendModeVividLight, formulaRow<VividLight>},
    {KSBlendModeLinearLight, formulaRow<LinearLight>},
    {KSBlendModePinLight, formulaRow<PinLight>},
    {KSBlendModeHardMix, formulaRow<HardMix>},
    {KSBlendModeDifference, formulaRow<Difference>},
    {KSBlendModeExclusion, formulaRow<Exclusion>},
    {KSBlendModeHue, formulaRow<Hue>},
    {KSBlendModeSaturation, formulaRow<Saturation>},
    {KSBlendModeColor, formulaRow<OfColor>},
    {KSBlendModeLuminosity, formulaRow<Luminosity>},
    {KSBlendModeAverage, formulaRow<Average>},
    {KSBlendModeSubtract, formulaRow<Subtract>},
    {KSBlendModeDivide, formulaRow<Divide>},
};

}  // namespace

BlendRow blendRow(KSBlendMode mode) {
    for (const Entry& entry : entries)
        if (entry.mode == mode) return entry.row;
    return nullptr;
}

}  // namespace kestrel::tools::render
