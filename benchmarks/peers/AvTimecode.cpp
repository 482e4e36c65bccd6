// Drop-frame timecode both ways with libavutil.
extern "C" {
#include <libavutil/timecode.h>
}

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace {

constexpr int frameCount = 4096;

int frameAt(int i) { return static_cast<int>(i * 2654435761LL % 2589408); }

void frameToBufferAv(benchmark::State& state) {
    AVTimecode timecode;
    char text[AV_TIMECODE_STR_SIZE];
    if (av_timecode_init(&timecode, {30000, 1001}, AV_TIMECODE_FLAG_DROPFRAME, 0, nullptr) < 0 ||
        std::string(av_timecode_make_string(&timecode, text, 1800)) != "00:01:00;02") {
        return state.SkipWithError("wrong text");
    }
    for (auto _ : state) {
        for (int i = 0; i < frameCount; ++i) {
            benchmark::DoNotOptimize(av_timecode_make_string(&timecode, text, frameAt(i)));
        }
    }
    state.SetItemsProcessed(state.iterations() * frameCount);
}
BENCHMARK(frameToBufferAv);

void bufferToFrameAv(benchmark::State& state) {
    AVTimecode timecode;
    char text[AV_TIMECODE_STR_SIZE];
    if (av_timecode_init(&timecode, {30000, 1001}, AV_TIMECODE_FLAG_DROPFRAME, 0, nullptr) < 0) {
        return state.SkipWithError("no mode");
    }
    std::vector<std::string> texts;
    for (int i = 0; i < frameCount; ++i)
        texts.emplace_back(av_timecode_make_string(&timecode, text, frameAt(i)));
    for (auto _ : state) {
        for (const auto& each : texts) {
            av_timecode_init_from_string(&timecode, {30000, 1001}, each.c_str(), nullptr);
            benchmark::DoNotOptimize(timecode.start);
        }
    }
    if (timecode.start != frameAt(frameCount - 1)) return state.SkipWithError("wrong frame");
    state.SetItemsProcessed(state.iterations() * frameCount);
}
BENCHMARK(bufferToFrameAv);

}  // namespace
