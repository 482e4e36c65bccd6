#include "ColorText.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <vector>

#include "Text.h"

namespace kestrel::tools {

namespace {

struct NamedColor {
    std::string_view name;
    float r, g, b, a;
};
constexpr NamedColor namedColors[] = {
    {"red", 1, 0, 0, 1},       {"green", 0, 1, 0, 1},         {"blue", 0, 0, 1, 1},
    {"black", 0, 0, 0, 1},     {"white", 1, 1, 1, 1},         {"clear", 0, 0, 0, 0},
    {"yellow", 1, 1, 0, 1},    {"cyan", 0, 1, 1, 1},          {"magenta", 1, 0, 1, 1},
    {"orange", 1, 0.5f, 0, 1}, {"gray", 0.5f, 0.5f, 0.5f, 1}, {"grey", 0.5f, 0.5f, 0.5f, 1},
};

/// Three or four finite numbers with commas between.
std::optional<KSColor> parseComponents(KSColor::Type type, std::string_view text) {
    std::vector<float> numbers;
    while (true) {
        const std::size_t comma = text.find(',');
        std::string_view part = text.substr(0, comma);
        while (part.starts_with(' ')) part.remove_prefix(1);
        while (part.ends_with(' ')) part.remove_suffix(1);
        const auto number = parseNumber<float>(part);
        if (!number || !std::isfinite(*number)) return std::nullopt;
        numbers.push_back(*number);
        if (comma == std::string_view::npos) break;
        text.remove_prefix(comma + 1);
    }
    if (numbers.size() == 3) numbers.push_back(1);
    if (numbers.size() != 4) return std::nullopt;
    if (hasHue(type)) numbers[0] = foldHue(numbers[0]);
    return KSColor(type, numbers[0], numbers[1], numbers[2], numbers[3]);
}

std::optional<KSColor> parseHex(std::string_view digits) {
    const std::size_t width = digits.size() == 3 ? 1 : 2;
    if (digits.size() != 3 && digits.size() != 6 && digits.size() != 8) return std::nullopt;
    float components[4] = {0, 0, 0, 1};
    for (std::size_t i = 0; i * width < digits.size(); ++i) {
        const char* const start = digits.data() + i * width;
        unsigned value = 0;
        const auto [end, error] = std::from_chars(start, start + width, value, 16);
        if (error != std::errc() || end != start + width) return std::nullopt;
        components[i] = static_cast<float>(value) / (width == 1 ? 15.0f : 255.0f);
    }
    return KSColor(KSColor::RGB, components[0], components[1], components[2], components[3]);
}

}  // namespace

float foldHue(double degrees) {
    const double rest = std::fmod(degrees, 360);
    const auto hue = static_cast<float>(rest < 0 ? rest + 360 : rest);
    return hue > 0 && hue < 360 ? hue : 0;  // a hue just below 0 rounds up to 360
}

std::optional<KSColor::Type> parseModel(std::string_view name) {
    const auto found = std::find(modelNames.begin(), modelNames.end(), name);
    if (found == modelNames.end()) return std::nullopt;
    return static_cast<KSColor::Type>(found - modelNames.begin());
}

std::optional<KSColor> parseColor(std::string_view text) {
    if (text.starts_with('#')) return parseHex(text.substr(1));
    std::string lower(text);
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    for (const NamedColor& named : namedColors)
        if (named.name == lower) return KSColor(KSColor::RGB, named.r, named.g, named.b, named.a);
    const std::size_t open = lower.find('(');
    if (open == std::string::npos) return parseComponents(KSColor::RGB, lower);
    const auto model = parseModel(std::string_view(lower).substr(0, open));
    if (!model || lower.back() != ')') return std::nullopt;
    return parseComponents(*model, std::string_view(lower).substr(open + 1, lower.size() - open - 2));
}

std::string formatColor(const KSColor& color) {
    std::string text(modelNames[color.type]);
    const float values[] = {color.c0, color.c1, color.c2, color.alpha};
    for (int i = 0; i < (color.alpha == 1 ? 3 : 4); ++i) {
        char number[32];
        const auto end =
            std::to_chars(number, number + sizeof number, values[i], std::chars_format::general, 6).ptr;
        text += i == 0 ? "(" : ", ";
        text.append(number, end);
    }
    return text + ")";
}

std::string formatHex(const KSColor& color) {
    KSColor rgb = color;
    rgb.convertToRGB();
    rgb.clamp();
    const auto byte = [](float value) { return static_cast<unsigned>(std::lround(value * 255)); };
    char text[8];
    std::snprintf(text, sizeof text, "#%02x%02x%02x", byte(rgb.c0), byte(rgb.c1), byte(rgb.c2));
    return text;
}

}  // namespace kestrel::tools
