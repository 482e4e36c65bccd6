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
        if (b <= 0) return 0;
        return s >= 1 ? 1 : std::min(1.0f, b / (1 - s));
    }
};
struct ColorBurn {
    static float blend(float b, float s) {
        if (b >= 1) return 1;
        return s <= 0 ? 0 : 1 - std::min(1.0f, (1 - b) / s);
    }
};
struct HardLight {
    static float blend(float b, float s) {
        return s <= 0.5f ? Multiply::blend(b, 2 * s) : Screen::blend(b, 2 * s - 1);
    }
};
struct Overlay {
    static float blend(float b, float s) { return HardLight::blend(s, b); }
};
struct SoftLight {
    static float blend(float b, float s) {
        if (s <= 0.5f) return b - (1 - 2 * s) * b * (1 - b);
        const float d = b <= 0.25f ? ((16 * b - 12) * b + 4) * b : std::sqrt(b);
        return b + (2 * s - 1) * (d - b);
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
        if (s <= 0) return 0;
        if (s >= 1) return 1;
        return s < 0.5f ? 1 - std::min(1.0f, (1 - b) / (2 * s)) : std::min(1.0f, b / (2 * (1 - s)));
    }
};
struct PinLight {
    static float blend(float b, float s) { return s < 0.5f ? std::min(b, 2 * s) : std::max(b, 2 * s - 1); }
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
        if (b <= 0) return 0;
        return b >= s ? 1 : b / s;
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

/// Source over backdrop: B(cb, cs) = cs, where the general formula needs no division.
void normalRow(float* backdrop, const float* source, std::size_t pixels, float opacity) {
    for (std::size_t i = 0; i < pixels; ++i, backdrop += 4, source += 4) {
        const float keep = 1 - source[3] * opacity;
        for (int c = 0; c < 4; ++c) backdrop[c] = source[c] * opacity + backdrop[c] * keep;
    }
}

template <class Formula>
constexpr bool isSeparable = requires {
    Formula::blend(0.0f, 0.0f);
};

template <class Formula>
void formulaRow(float* backdrop, const float* source, std::size_t pixels, float opacity) {
    for (std::size_t i = 0; i < pixels; ++i, backdrop += 4, source += 4) {
        const float alpha = source[3] * opacity, under = backdrop[3];
        if (alpha <= 0) continue;
        const float sourceScale = 1 / source[3], backdropScale = under > 0 ? 1 / under : 0;
        Color b, s, mixed;
        for (std::size_t c = 0; c < 3; ++c) {
            b[c] = clampShare(backdrop[c] * backdropScale);
            s[c] = clampShare(source[c] * sourceScale);
        }
        if constexpr (isSeparable<Formula>)
            for (std::size_t c = 0; c < 3; ++c) mixed[c] = Formula::blend(b[c], s[c]);
        else
            mixed = Formula::blend(b, s);
        const float both = alpha * under, sourceOnly = (1 - under) * opacity, backdropOnly = 1 - alpha;
        for (std::size_t c = 0; c < 3; ++c)
            backdrop[c] = sourceOnly * source[c] + backdropOnly * backdrop[c] + both * mixed[c];
        backdrop[3] = alpha + under - both;
    }
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
