#include "TestPatterns.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace kestrel::tools {
namespace {

constexpr float turn = 2 * std::numbers::pi_v<float>;

/// A point of the picture: y from -1 at the top to 1 at the bottom, x in the same unit, 0 in the middle.
struct Point {
    float x, y;
    float radius() const { return std::hypot(x, y); }
    float turns() const { return std::atan2(y, x) / turn; }
};

struct Inks {
    KSColor first, second;
};

float share(float value) { return std::clamp(value, 0.0f, 1.0f); }
/// 0 to 1 and back while value goes on by 1, without corners.
float wave(float value) { return 0.5f - 0.5f * std::cos(turn * value); }

KSColor withAlpha(KSColor color, float alpha) {
    color.alpha *= alpha;
    return color;
}

KSColor gradient(const Point& at, float, const Inks& inks) {
    KSColor color = inks.first;
    const float way = (at.y + 1) / 2;
    color.mix(inks.second, way);
    color.alpha = inks.first.alpha + (inks.second.alpha - inks.first.alpha) * way;
    return color;
}

/// Bright in the middle, and nothing at the edge.
KSColor glow(const Point& at, float, const Inks& inks) {
    const float near = share(1 - at.radius());
    KSColor color = inks.second;
    color.mix(inks.first, near);
    return withAlpha(color, near * near);
}

/// Sixteen soft beams that turn by one of them.
KSColor rays(const Point& at, float phase, const Inks& inks) {
    constexpr float beams = 16;
    const float beam = wave(at.turns() * beams + phase);
    return withAlpha(inks.first, beam * beam * share(1 - at.radius()) * share(at.radius() * 4));
}

/// All hues, once round.
KSColor ring(const Point& at, float phase, const Inks&) {
    float hue = at.turns() + phase;
    hue -= std::floor(hue);
    KSColor color(KSColor::HSV, std::min(360 * hue, 359.999f), 0.65f, 1, 1);
    color.convertToRGB();
    const float off = std::abs(at.radius() - 0.85f) / 0.12f;
    return withAlpha(color, share(1 - off) * share(1 - off));
}

/// One star in each of many small fields, each with a place, a size and a rhythm of its own.
KSColor stars(const Point& at, float phase, const Inks& inks) {
    constexpr float fields = 14;
    const float column = std::floor(at.x * fields), row = std::floor(at.y * fields);
    std::uint32_t seed = static_cast<std::uint32_t>(static_cast<std::int32_t>(column)) * 0x9E3779B1u ^
                         static_cast<std::uint32_t>(static_cast<std::int32_t>(row)) * 0x85EBCA77u;
    const auto random = [&] {  // the next of a row of numbers in 0 to 1
        seed ^= seed >> 15, seed *= 0x2C1B3C6Du, seed ^= seed >> 12, seed *= 0x297A2D39u, seed ^= seed >> 15;
        return static_cast<float>(seed >> 8) / 16777216.0f;
    };
    const float x = 0.2f + 0.6f * random(), y = 0.2f + 0.6f * random(), size = random(), start = random();
    const float dx = at.x * fields - column - x, dy = at.y * fields - row - y;
    const float near = share(1 - std::hypot(dx, dy) / (0.06f + 0.14f * size * size * size));
    return withAlpha(inks.first, near * (0.25f + 0.75f * wave(phase + start)));
}

struct Pattern {
    const char* name;
    KSColor (*at)(const Point&, float phase, const Inks&);
};
constexpr Pattern patterns[] = {
    {"gradient", gradient}, {"glow", glow}, {"rays", rays}, {"ring", ring}, {"stars", stars}};

}  // namespace

std::vector<std::string> testPatternNames() {
    std::vector<std::string> names;
    for (const Pattern& pattern : patterns) names.emplace_back(pattern.name);
    return names;
}

BitmapPointer makeTestPattern(const std::string& name, unsigned int width, unsigned int height, float phase,
                              const KSColor& first, const KSColor& second, const std::string& what) {
    const auto pattern = std::find_if(std::begin(patterns), std::end(patterns),
                                      [&](const Pattern& entry) { return name == entry.name; });
    if (pattern == std::end(patterns)) throw ImageError(what + ": there is no pattern \"" + name + '"');
    Inks inks{first, second};
    inks.first.convertToRGB();
    inks.second.convertToRGB();
    constexpr unsigned int rgbaFloat = 9;
    BitmapPointer picture = makeBitmap(width, height, rgbaFloat, what);
    auto* pixel = reinterpret_cast<float*>(picture->getData());
    const float unit = 2 / static_cast<float>(height);
    for (unsigned int y = 0; y < height; ++y)
        for (unsigned int x = 0; x < width; ++x, pixel += 4) {
            const Point at{(static_cast<float>(x) + 0.5f - static_cast<float>(width) / 2) * unit,
                           (static_cast<float>(y) + 0.5f) * unit - 1};
            const KSColor color = pattern->at(at, phase, inks);
            pixel[0] = color.c0, pixel[1] = color.c1, pixel[2] = color.c2, pixel[3] = color.alpha;
        }
    return picture;
}

}  // namespace kestrel::tools
