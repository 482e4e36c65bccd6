// tools/kestrel/ColorText.h - colours as people type them.
#pragma once

#include <kestrel/color/KSColor.h>

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace kestrel::tools {

/// The models' names, in the order of KSColor::Type.
inline constexpr std::array<std::string_view, 7> modelNames = {"hsl", "hsv", "hwb", "rgb",
                                                               "yiq", "yuv", "clu"};

/// The forms that parseColor takes, for --help and messages.
inline constexpr const char* colorForms =
    "r,g,b[,a] from 0 to 1, #rgb, #rrggbb, #rrggbbaa, a name (red, green, blue, black, white, clear, yellow, "
    "cyan, "
    "magenta, orange, gray), or MODEL(x,y,z[,a]) with one of hsl, hsv, hwb, rgb, yiq, yuv, clu";

/// Whether the model's first component is a hue.
constexpr bool hasHue(KSColor::Type type) { return type <= KSColor::HWB; }
/// The same hue in degrees from 0 to below 360, as float: HSVtoRGB has no sector for 360 itself.
float foldHue(double degrees);

/// Reads a colour in one of these forms, in its own model, with its hue folded; nothing when text is none of
/// them.
std::optional<KSColor> parseColor(std::string_view text);

std::optional<KSColor::Type> parseModel(std::string_view name);

/// "hsv(120, 1, 0.5)", with a fourth number when the colour is not opaque.
std::string formatColor(const KSColor& color);

/// "#rrggbb" of the colour, clamped.
std::string formatHex(const KSColor& color);

}  // namespace kestrel::tools
