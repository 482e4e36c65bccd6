// The armour: bytes of payload to text and back, in memory. Bytes a second count the payload; the text is
// a third longer.
#include <kestrel/files/KSAsciiStream.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

std::vector<std::uint8_t> randomBytes(std::size_t count) {
    std::mt19937 random(64);
    std::vector<std::uint8_t> bytes(count);
    for (auto& b : bytes) b = static_cast<std::uint8_t>(random());
    return bytes;
}

std::string armour(const std::vector<std::uint8_t>& bytes) {
    KSAsciiStream out;
    out.write(bytes.data(), bytes.size());
    out.close();
    char* const text = out.getString().createCStr();
    const std::string copy = text;
    std::free(text);
    return copy;
}

void count(benchmark::State& state) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0));
}

/// One write of everything into a stream that has grown before.
void write(benchmark::State& state) {
    const auto bytes = randomBytes(static_cast<std::size_t>(state.range(0)));
    KSAsciiStream stream;
    for (auto _ : state) {
        stream.clear();
        benchmark::DoNotOptimize(stream.write(bytes.data(), bytes.size()));
    }
    stream.close();
    KSAsciiStream in;
    std::vector<std::uint8_t> back(bytes.size());
    if (!in.open(armour(bytes).c_str()) || in.read(back.data(), back.size()) != bytes.size() || back != bytes)
        return state.SkipWithError("does not read back");
    count(state);
}

/// Sixteen bytes a write.
void writeSmall(benchmark::State& state) {
    const auto bytes = randomBytes(static_cast<std::size_t>(state.range(0)));
    KSAsciiStream stream;
    for (auto _ : state) {
        stream.clear();
        for (std::size_t at = 0; at + 16 <= bytes.size(); at += 16) stream.write(&bytes[at], 16);
    }
    count(state);
}

/// Opening (which copies the text) and one read of everything.
void openAndRead(benchmark::State& state) {
    const auto bytes = randomBytes(static_cast<std::size_t>(state.range(0)));
    const std::string text = armour(bytes);
    std::vector<std::uint8_t> back(bytes.size());
    KSAsciiStream stream;
    for (auto _ : state) {
        if (!stream.open(text.data(), text.size())) return state.SkipWithError("does not open");
        benchmark::DoNotOptimize(stream.read(back.data(), back.size()));
    }
    if (back != bytes) return state.SkipWithError("does not read back");
    count(state);
}

void copy(benchmark::State& state) {
    const auto bytes = randomBytes(static_cast<std::size_t>(state.range(0)));
    std::vector<std::uint8_t> back(bytes.size());
    for (auto _ : state) {
        std::memcpy(back.data(), bytes.data(), bytes.size());
        benchmark::ClobberMemory();
    }
    count(state);
}

}  // namespace

BENCHMARK(write)->Arg(100)->Arg(1 << 20);
BENCHMARK(writeSmall)->Arg(1 << 20);
BENCHMARK(openAndRead)->Arg(100)->Arg(1 << 20);
BENCHMARK(copy)->Arg(1 << 20);
