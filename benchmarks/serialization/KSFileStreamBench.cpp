// Small writes into a file stream, to the null device: what they cost before the system sees them.
#include <kestrel/files/KSURL.h>
#include <kestrel/serialization/KSFileReadStream.h>
#include <kestrel/serialization/KSFileWriteStream.h>

#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace {

constexpr char text[] = "sixteen bytes go";
constexpr std::size_t textSize = sizeof text - 1;
static_assert(textSize == 16);

/// Writes through the stream into a real file and compares.
bool arrivesWhole() {
    char path[] = "/tmp/kestrel-bench-XXXXXX";
    const int descriptor = mkstemp(path);
    if (descriptor < 0) return false;
    close(descriptor);
    std::string want;
    {
        KSFileWriteStream out(KSURL(path, false));
        for (int i = 0; i < 10000; ++i) {
            out.write(text, textSize);
            want += text;
        }
    }
    KSFileReadStream in(KSURL(path, false));
    std::string got(want.size() + 1, '\0');
    got.resize(in.read(got.data(), got.size()));
    unlink(path);
    return got == want;
}

void writes(benchmark::State& state) {
    if (!arrivesWhole()) return state.SkipWithError("the file does not hold what was written");
    KSFileWriteStream out(KSURL("/dev/null", false));
    for (auto _ : state) benchmark::DoNotOptimize(out.write(text, textSize));
    state.SetItemsProcessed(state.iterations());
}

/// The length is known at run time only.
void writesOfAnyLength(benchmark::State& state) {
    KSFileWriteStream out(KSURL("/dev/null", false));
    std::size_t size = static_cast<std::size_t>(state.range(0));
    const std::string bytes(size, 'x');
    for (auto _ : state) {
        benchmark::DoNotOptimize(size);
        benchmark::DoNotOptimize(out.write(bytes.data(), size));
    }
    state.SetItemsProcessed(state.iterations());
}

void throughTheBase(benchmark::State& state) {
    KSFileWriteStream out(KSURL("/dev/null", false));
    KSStream* base = &out;
    for (auto _ : state) {
        benchmark::DoNotOptimize(base);
        *base << text;
    }
    state.SetItemsProcessed(state.iterations());
}

void standardLibrary(benchmark::State& state) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> out(std::fopen("/dev/null", "w"), &std::fclose);
    if (!out) return state.SkipWithError("no null device");
    for (auto _ : state) benchmark::DoNotOptimize(fwrite_unlocked(text, 1, textSize, out.get()));
    state.SetItemsProcessed(state.iterations());
}

}  // namespace

BENCHMARK(writes);
BENCHMARK(writesOfAnyLength)->Arg(16)->Arg(60);
BENCHMARK(throughTheBase);
BENCHMARK(standardLibrary);
