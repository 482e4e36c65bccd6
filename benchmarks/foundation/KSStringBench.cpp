// What text costs through the public interface. benchmarks/peers/TextPeersBench.cpp holds the same workloads
// on other libraries, under the same names.
#include <kestrel/foundation/KSString.h>

#include <benchmark/benchmark.h>

#include <clocale>
#include <cstdlib>
#include <string>
#include <vector>

#include "TextWorkloads.h"

namespace {

std::string utf8Of(const KSString& string) {
    char* text = string.createUTF8Str();
    std::string result = text ? text : "";
    std::free(text);
    return result;
}

KSString stringOf(const std::u16string& units) {
    KSString string;
    return string.set(reinterpret_cast<const unsigned short*>(units.data()),
                      static_cast<unsigned>(units.size()));
}

void thereAndBack(benchmark::State& state, const std::string& text) {
    char* check = KSString(text.c_str()).createCStr();
    const bool same = check && text == check;
    std::free(check);
    if (!same) return state.SkipWithError("the text changed on its way");
    for (auto _ : state) {
        char* back = KSString(text.c_str()).createCStr();
        benchmark::DoNotOptimize(back);
        std::free(back);
    }
}
void asciiThereAndBack(benchmark::State& state) { thereAndBack(state, workloads::ascii64()); }
void macRomanThereAndBack(benchmark::State& state) { thereAndBack(state, workloads::macRoman64()); }
BENCHMARK(asciiThereAndBack);
BENCHMARK(macRomanThereAndBack);

template <typename Piece>
void append16(benchmark::State& state) {
    const Piece piece("sixteen letters.");
    for (auto _ : state) {
        KSString text("");
        for (int i = 0; i < workloads::appends; ++i) text.append(piece);
        if (text.size() != 16 * workloads::appends) return state.SkipWithError("letters were lost");
        benchmark::DoNotOptimize(text.u_str());
    }
    state.SetItemsProcessed(state.iterations() * workloads::appends);
}
BENCHMARK(append16<KSString>);
BENCHMARK(append16<const char*>);

void copy(benchmark::State& state) {
    const KSString text("a name of a layer");
    if (KSString(text).compare(text) != 0) return state.SkipWithError("a copy differs");
    for (auto _ : state) {
        KSString other(text);
        benchmark::DoNotOptimize(other);
    }
}
BENCHMARK(copy);

void find(benchmark::State& state) {
    const KSString text = stringOf(workloads::haystack());
    const KSString what = stringOf(workloads::needle());
    if (text.find(what) != static_cast<long>(text.size() - what.size()))
        return state.SkipWithError("not found");
    for (auto _ : state) benchmark::DoNotOptimize(text.find(what));
    state.SetBytesProcessed(state.iterations() * static_cast<long>(text.size()) * 2);
}
BENCHMARK(find);

void toUtf8(benchmark::State& state, const std::u16string& units, const std::string& expected) {
    const KSString text = stringOf(units);
    if (utf8Of(text) != expected) return state.SkipWithError("wrong UTF-8");
    for (auto _ : state) {
        char* utf8 = text.createUTF8Str();
        benchmark::DoNotOptimize(utf8);
        std::free(utf8);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<long>(units.size()) * 2);
}
void asciiToUtf8(benchmark::State& state) { toUtf8(state, workloads::ascii(), workloads::asciiUtf8()); }
void mixedToUtf8(benchmark::State& state) { toUtf8(state, workloads::mixed(), workloads::mixedUtf8()); }
BENCHMARK(asciiToUtf8);
BENCHMARK(mixedToUtf8);

void compare(benchmark::State& state) {
    const KSString left("layer name 0017"), right("layer name 0018");
    if (left.compare(right) >= 0) return state.SkipWithError("wrong order");
    for (auto _ : state) benchmark::DoNotOptimize(left.compare(right));
}
void compareInCLocale(benchmark::State& state) { compare(state); }
void compareInGerman(benchmark::State& state) {
    if (!std::setlocale(LC_COLLATE, "de_DE.UTF-8")) return state.SkipWithError("no locale de_DE.UTF-8");
    compare(state);
    std::setlocale(LC_COLLATE, "C");
}
BENCHMARK(compareInCLocale);
BENCHMARK(compareInGerman);

}  // namespace
