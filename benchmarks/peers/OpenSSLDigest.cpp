// The same bytes through OpenSSL's MD5, whose compression function is the digest's.
#include <benchmark/benchmark.h>
#include <openssl/evp.h>

#include <vector>

namespace {

void digestOpenSSL(benchmark::State& state) {
    std::vector<unsigned char> bytes(static_cast<std::size_t>(state.range(0)));
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<unsigned char>(i * 31 + (i >> 9));
    unsigned char result[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    if (!EVP_Digest("", 0, result, &size, EVP_md5(), nullptr) || size != 16 || result[0] != 0xd4) {
        return state.SkipWithError("wrong digest");
    }
    for (auto _ : state) {
        EVP_Digest(bytes.data(), bytes.size(), result, &size, EVP_md5(), nullptr);
        benchmark::DoNotOptimize(result);
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(digestOpenSSL)->Arg(64)->Arg(4096)->Arg(64 << 20);

}  // namespace
