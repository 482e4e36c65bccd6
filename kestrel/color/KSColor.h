// kestrel/color/KSColor.h - one colour value in one of seven models.
#pragma once

#include <kestrel/platform/Export.h>

#include <cstdint>

/// A colour: three components, whose meaning depends on the model, and an opacity.
///
/// Shape      20 bytes, trivially copyable, no heap, no virtual functions; usable in constant expressions.
/// Units      hues are degrees, nominally 0..360; alpha 0 is transparent, 1 opaque; the rest as in Type.
///            Values outside the nominal ranges are stored as they are: only clamp() brings them back.
/// Models     every conversion goes through RGB. Alpha is never converted, only clamped.
/// Threads    a plain value: one writer, or any number of readers.
/// Errors     none is reported. Four conversions can meet a hue that they have no sector for: they then
///            write nothing, and the outputs (of a colour: its components) keep what they held.
/// Numbers    single precision, except where a function says double. Tolerances are 1e-5.
/// Example
///     KSColor matte(KSColor::HSV, 120, 1, 0.5f, 1);  // a dark green
///     matte.convertToRGB();
///     matte += 0.1f;                                 // lighter; may leave 0..1 until clamp()
class KESTREL_API KSColor {
public:
    /// The model of the three components. The values are fixed; they stand in files.
    enum Type : std::uint32_t {
        HSL = 0,  ///< hue in degrees, saturation 0..1, lightness 0..1
        HSV = 1,  ///< hue in degrees, saturation 0..1, value 0..1
        HWB = 2,  ///< hue in degrees, whiteness 0..1, blackness 0..1
        RGB = 3,  ///< red, green, blue 0..1
        YIQ = 4,  ///< luma 0..1, in-phase about +-0.596, quadrature about +-0.274
        YUV = 5,  ///< luma 0..1, U about +-0.436, V about +-0.615
        CLU = 6,  ///< scaled sum of R, G, B; scaled green minus red; scaled blue against red and green
    };

    Type type = RGB;
    float c0 = 0, c1 = 0, c2 = 0;
    float alpha = 1;

    static const KSColor RED, GREEN, BLUE, BLACK, WHITE;
    static const KSColor CLEAR;  ///< black with alpha 0
    static const KSColor YELLOW;

    /// Opaque black in RGB.
    constexpr KSColor() = default;
    /// Components 0, alpha 1.
    constexpr explicit KSColor(Type t) : type(t) {}
    /// Stores the five values unchanged, without any check.
    constexpr KSColor(Type t, float first, float second, float third, float opacity)
        : type(t), c0(first), c1(second), c2(third), alpha(opacity) {}

    /// The colour's RGB components and alpha; this colour is not changed.
    constexpr void getRGBA(float* r, float* g, float* b, float* a) const;
    /// One RGB component, as getRGBA gives it; each call converts, so take all at once where all are needed.
    constexpr float getRed() const;
    constexpr float getGreen() const;
    constexpr float getBlue() const;

    /// @name Arithmetic with a scalar
    /// On the components that carry intensity: lightness or value of HSL and HSV, whiteness of HWB, C of CLU,
    /// all three of RGB, YIQ and YUV. A type above 6 changes nothing. Alpha stays; nothing is clamped.
    /// @{
    constexpr void operator+=(float value);
    constexpr void operator-=(float value);
    constexpr void operator*=(float value);
    constexpr void operator/=(float value);  ///< a divisor of exactly 0 changes nothing
    /// @}

    /// @name Plain arithmetic
    /// On all three components, whatever the type. Alpha stays. Each returns this colour.
    /// @{
    constexpr KSColor& add(float value);
    constexpr KSColor& sub(float value);
    constexpr KSColor& mul(float value);
    constexpr KSColor& div(float value);  ///< a divisor of exactly 0 changes nothing
    /// @}

    /// (1 - t) of this colour and t of the other, component by component without a look at either type;
    /// alpha and type stay.
    constexpr KSColor& mix(const KSColor& other, float t);

    /// Adds other, converted to this colour's type. To a grey in HSL or HSV (|saturation| < 1e-5) only the
    /// lightness or value is added, to a grey in HWB only whiteness and blackness; the hue stays. Alpha
    /// stays; nothing is clamped.
    constexpr KSColor& operator+=(const KSColor& other);
    /// Adds other with its components negated; a grey keeps its hue (and saturation) as it is.
    /// Subtracting a CLU colour adds RGB black instead, deliberately: an RGB colour is left as it was, and
    /// an HWB colour, in which black has blackness 1, grows blacker.
    constexpr KSColor& operator-=(const KSColor& other);

    /// Brings alpha, the components and the hue into their ranges. Greys get hue 0; a hue of exactly 360
    /// stays; L and U of CLU are left alone, and so is a sum of whiteness and blackness above 1.
    constexpr void clamp();
    /// clamp(), then 1 - component for all three, whatever the type: meant for RGB, where it gives the
    /// complement. A hue h becomes 1 - h, in degrees.
    constexpr void invert();

    /// Every component and alpha within 1e-5 (strict); colours of different types are compared as RGB.
    /// Not transitive, as with every tolerance.
    constexpr bool operator==(const KSColor& other) const;
    /// True as soon as ANY of the three components (not all of them) lies within tolerance (strict) of
    /// the other colour's, converted to this type. Alpha is not looked at.
    constexpr bool colorCompare(const KSColor& other, float tolerance) const;

    /// @name Conversion in place
    /// Nothing is clamped, alpha stays, and a colour already of that type is left alone.
    /// @{
    constexpr void convertToHSL();
    constexpr void convertToHSV();
    constexpr void convertToHWB();
    constexpr void convertToRGB();
    constexpr void convertToYIQ();
    constexpr void convertToYUV();
    constexpr void convertToCLU();
    /// One of the seven above; nothing for the current type or for a t above 6.
    constexpr void convert(Type t);
    /// @}

    /// @name The conversions on loose components
    /// In the order and the units of Type. The outputs must not be null. Nothing is clamped.
    /// @{

    /// Grey (all three exactly equal) has hue and saturation 0. Hues lie in 0..360.
    static constexpr void RGBtoHSL(float red, float green, float blue, float* h, float* s, float* l);
    /// Grey, and black (the largest component within 1e-5 of 0), has hue and saturation 0.
    static constexpr void RGBtoHSV(float red, float green, float blue, float* h, float* s, float* v);
    /// A colour whose smallest component is red gets a hue 60 degrees below the place where HWBtoRGB looks
    /// for it (cyan: 120), deliberately, so it does not survive a round trip.
    static constexpr void RGBtoHWB(float red, float green, float blue, float* h, float* w, float* b);
    /// By a matrix of three digits, as are YUV and the ways back: a round trip is off by a few thousandths.
    static constexpr void RGBtoYIQ(float red, float green, float blue, float* y, float* i, float* q);
    static constexpr void RGBtoYUV(float red, float green, float blue, float* y, float* u, float* v);
    /// In double. Not the exact inverse of CLUtoRGB, deliberately: C is scaled by 0.577 squared here and by
    /// 0.999364 there.
    static constexpr void RGBtoCLU(float red, float green, float blue, float* c, float* l, float* u);

    /// Folds the hue once only, deliberately: right for hues from -240 to 600.
    static constexpr void HSLtoRGB(float h, float s, float l, float* red, float* green, float* blue);
    /// Any hue but exactly 360 (or a multiple that folds to 360) and NaN: those write nothing, unless the
    /// colour is grey. A saturation above 1 counts as 1.
    static constexpr void HSVtoRGB(float h, float s, float v, float* red, float* green, float* blue);
    /// Hues from 0 to below 420; others write nothing, unless the colour is grey.
    static constexpr void HWBtoRGB(float h, float w, float b, float* red, float* green, float* blue);
    static constexpr void YIQtoRGB(float y, float i, float q, float* red, float* green, float* blue);
    static constexpr void YUVtoRGB(float y, float u, float v, float* red, float* green, float* blue);
    /// In double. See RGBtoCLU.
    static constexpr void CLUtoRGB(float c, float l, float u, float* red, float* green, float* blue);
    /// @}

private:
    using PairFunction = void(float, float, float, float*, float*, float*);

    constexpr bool isGrey() const;
    constexpr void foldHue();
    constexpr void convertThroughRGB(PairFunction& fromRGB, Type t);
    template <typename Change>
    constexpr void changeIntensity(Change change);
    template <typename Change>
    constexpr KSColor& changeAll(Change change);
};

#include <kestrel/color/KSColor-inl.h>
