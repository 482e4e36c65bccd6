// Colour conversions one by one; each item checks a known answer first.
#include <kestrel/color/KSColor.h>

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

namespace {

std::vector<KSColor> colors(KSColor::Type type) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> unit;
    std::vector<KSColor> all;
    for (int i = 0; i < 4096; ++i) {
        all.emplace_back(KSColor::RGB, unit(random), unit(random), unit(random), 1.0f);
        all.back().convert(type);
    }
    return all;
}

/// What green is in each model.
KSColor green(KSColor::Type type) {
    switch (type) {
        case KSColor::HSL:
            return {type, 120, 1, 0.5f, 1};
        case KSColor::HSV:
            return {type, 120, 1, 1, 1};
        case KSColor::HWB:
            return {type, 60, 0, 0, 1};
        case KSColor::YIQ:
            return {type, 0.587f, -0.274f, -0.523f, 1};
        case KSColor::YUV:
            return {type, 0.587f, -0.289f, -0.515f, 1};
        default:
            return KSColor::GREEN;
    }
}

template <KSColor::Type from, KSColor::Type to>
void convert(benchmark::State& state) {
    KSColor check = green(from);
    check.convert(to);
    if (check != green(to)) return state.SkipWithError("wrong colour");
    const auto all = colors(from);
    for (auto _ : state)
        for (KSColor color : all) {
            color.convert(to);
            benchmark::DoNotOptimize(color);
        }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(all.size()));
}
BENCHMARK(convert<KSColor::RGB, KSColor::HSV>)->Name("RGB to HSV");
BENCHMARK(convert<KSColor::HSV, KSColor::RGB>)->Name("HSV to RGB");
BENCHMARK(convert<KSColor::RGB, KSColor::HSL>)->Name("RGB to HSL");
BENCHMARK(convert<KSColor::HSL, KSColor::RGB>)->Name("HSL to RGB");
BENCHMARK(convert<KSColor::RGB, KSColor::HWB>)->Name("RGB to HWB");
BENCHMARK(convert<KSColor::RGB, KSColor::YUV>)->Name("RGB to YUV");
BENCHMARK(convert<KSColor::RGB, KSColor::YIQ>)->Name("RGB to YIQ");

}  // namespace
