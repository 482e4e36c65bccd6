// Frames to text and back, in drop-frame and non-drop modes: into buffers and KSStrings.
#include <kestrel/time/KSTimecode.h>

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

namespace {

constexpr int frameCount = 4096;

const KSTimecodeMode& modeOf(const benchmark::State& state) {
    return state.range(0) ? KSTimecodeMode::k30FPS_DropFrame : KSTimecodeMode::k30FPS_NonDropFrame;
}

// Spread over a day, so that no branch is learnt by heart.
int frameAt(int i) { return static_cast<int>(i * 2654435761LL % 2589408); }

std::vector<std::string> textsOf(const KSTimecodeMode& mode) {
    std::vector<std::string> texts;
    for (int i = 0; i < frameCount; ++i) {
        char text[KSTimecode::maxTextSize];
        KSTimecode::getTimecode(frameAt(i), mode, text, sizeof text);
        texts.emplace_back(text);
    }
    return texts;
}

bool isRight(const KSTimecodeMode& mode) {
    const auto texts = textsOf(mode);
    for (int i = 0; i < frameCount; ++i) {
        if (KSTimecode::getTimeIndex(texts[i].data(), texts[i].size(), mode) != frameAt(i)) return false;
    }
    char text[KSTimecode::maxTextSize];
    KSTimecode::getTimecode(17982, mode, text, sizeof text);
    return std::string(text) == (mode.isDropFrame() ? "00:10:00;00" : "00:09:59:12");
}

// Runs use(i) for every index of the table, after the check.
template <class Use>
void run(benchmark::State& state, Use use) {
    if (!isRight(modeOf(state))) return state.SkipWithError("wrong text or frame");
    for (auto _ : state) {
        for (int i = 0; i < frameCount; ++i) use(i);
    }
    state.SetItemsProcessed(state.iterations() * frameCount);
}

void frameToBuffer(benchmark::State& state) {
    const auto& mode = modeOf(state);
    char text[KSTimecode::maxTextSize];
    run(state, [&](int i) {
        KSTimecode::getTimecode(frameAt(i), mode, text, sizeof text);
        benchmark::DoNotOptimize(text);
    });
}

void frameToString(benchmark::State& state) {
    const auto& mode = modeOf(state);
    KSString text;
    run(state, [&](int i) {
        KSTimecode::getTimecode(frameAt(i), mode, text);
        benchmark::DoNotOptimize(text);
    });
}

void bufferToFrame(benchmark::State& state) {
    const auto& mode = modeOf(state);
    const auto texts = textsOf(mode);
    run(state, [&](int i) {
        benchmark::DoNotOptimize(KSTimecode::getTimeIndex(texts[i].data(), texts[i].size(), mode));
    });
}

void stringToFrame(benchmark::State& state) {
    const auto& mode = modeOf(state);
    std::vector<KSString> texts;
    for (const auto& text : textsOf(mode)) texts.emplace_back(text.c_str());
    run(state, [&](int i) { benchmark::DoNotOptimize(KSTimecode::getTimeIndex(texts[i], mode)); });
}

// What the C library does, without any drop rule.
void snprintfToBuffer(benchmark::State& state) {
    char text[KSTimecode::maxTextSize];
    run(state, [&](int i) {
        const int frame = frameAt(i);
        std::snprintf(text, sizeof text, "%02d:%02d:%02d:%02d", frame / 108000, frame / 1800 % 60,
                      frame / 30 % 60, frame % 30);
        benchmark::DoNotOptimize(text);
    });
}

}  // namespace

BENCHMARK(frameToBuffer)->ArgName("drop")->Arg(0)->Arg(1);
BENCHMARK(frameToString)->ArgName("drop")->Arg(0)->Arg(1);
BENCHMARK(bufferToFrame)->ArgName("drop")->Arg(0)->Arg(1);
BENCHMARK(stringToFrame)->ArgName("drop")->Arg(0)->Arg(1);
BENCHMARK(snprintfToBuffer)->ArgName("drop")->Arg(0);
