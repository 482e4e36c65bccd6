// RGB to HSV and back, one colour at a time, on other libraries.
#include <benchmark/benchmark.h>

#include <ImathColorAlgo.h>
#ifdef KESTREL_PEER_GLM
#define GLM_ENABLE_EXPERIMENTAL
#include <glm/gtx/color_space.hpp>
#endif
#ifdef KESTREL_PEER_QTGUI
#include <QColor>
#endif

#include <cmath>
#include <random>
#include <vector>

namespace {

std::vector<Imath::V3f> triples() {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> unit;
    std::vector<Imath::V3f> all(4096);
    for (auto& v : all) v = Imath::V3f(unit(random), unit(random), unit(random));
    return all;
}

/// make(V3f) gives the library's colour, convert(colour) the other model, isRed(colour) checks green's value.
template <typename Make, typename Convert>
void run(benchmark::State& state, Make make, Convert convert) {
    using Color = decltype(make(Imath::V3f()));
    std::vector<Color> all;
    for (const auto& v : triples()) all.push_back(make(v));
    for (auto _ : state)
        for (const Color& color : all) benchmark::DoNotOptimize(convert(color));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(all.size()));
}

void imathToHsv(benchmark::State& state) {
    if (std::abs(Imath::rgb2hsv(Imath::V3f(0, 1, 0)).x - 1 / 3.0f) > 1e-5f)
        return state.SkipWithError("wrong colour");
    run(
        state, [](const Imath::V3f& v) { return v; }, [](const Imath::V3f& v) { return Imath::rgb2hsv(v); });
}
BENCHMARK(imathToHsv)->Name("RGB to HSV, Imath");

void imathToRgb(benchmark::State& state) {
    run(
        state, [](const Imath::V3f& v) { return Imath::rgb2hsv(v); },
        [](const Imath::V3f& v) { return Imath::hsv2rgb(v); });
}
BENCHMARK(imathToRgb)->Name("HSV to RGB, Imath");

#ifdef KESTREL_PEER_GLM
glm::vec3 glmOf(const Imath::V3f& v) { return {v.x, v.y, v.z}; }

void glmToHsv(benchmark::State& state) {
    if (std::abs(glm::hsvColor(glm::vec3(0, 1, 0)).x - 120) > 1e-3f)
        return state.SkipWithError("wrong colour");
    run(state, glmOf, [](const glm::vec3& v) { return glm::hsvColor(v); });
}
BENCHMARK(glmToHsv)->Name("RGB to HSV, GLM");

void glmToRgb(benchmark::State& state) {
    run(
        state, [](const Imath::V3f& v) { return glm::hsvColor(glmOf(v)); },
        [](const glm::vec3& v) { return glm::rgbColor(v); });
}
BENCHMARK(glmToRgb)->Name("HSV to RGB, GLM");
#endif

#ifdef KESTREL_PEER_QTGUI
QColor qtOf(const Imath::V3f& v) { return QColor::fromRgbF(v.x, v.y, v.z); }

void qtToHsv(benchmark::State& state) {
    if (QColor::fromRgbF(0, 1, 0).toHsv().hsvHue() != 120) return state.SkipWithError("wrong colour");
    run(state, qtOf, [](const QColor& color) { return color.toHsv(); });
}
BENCHMARK(qtToHsv)->Name("RGB to HSV, QColor");

void qtToRgb(benchmark::State& state) {
    run(
        state, [](const Imath::V3f& v) { return qtOf(v).toHsv(); },
        [](const QColor& color) { return color.toRgb(); });
}
BENCHMARK(qtToRgb)->Name("HSV to RGB, QColor");
#endif

}  // namespace
