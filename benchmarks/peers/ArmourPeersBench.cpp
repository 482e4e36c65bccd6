// Bytes of payload as printable text and back, one MiB in memory, by KSAsciiStream and by the base64 of other
// libraries. Bytes a second count the payload. Each way is checked to give the payload back.
#include <kestrel/files/KSAsciiStream.h>

#include <benchmark/benchmark.h>

#ifdef KESTREL_PEER_OPENSSL
#include <openssl/evp.h>
#endif
#ifdef KESTREL_PEER_GLIB
#include <glib.h>
#endif
#ifdef KESTREL_PEER_QT
#include <QByteArray>
#endif

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

const Bytes& payload() {
    static const Bytes bytes = [] {
        std::mt19937 random(64);
        Bytes made(std::size_t{3} << 18);  // whole groups of three
        for (auto& byte : made) byte = static_cast<std::uint8_t>(random());
        return made;
    }();
    return bytes;
}

template <typename Operation>
void run(benchmark::State& state, bool isRight, Operation operation) {
    if (!isRight) return state.SkipWithError("does not give the payload back");
    for (auto _ : state) {
        operation();
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(payload().size()));
}

void copy(benchmark::State& state) {
    Bytes to(payload().size());
    run(state, true, [&] { std::memcpy(to.data(), payload().data(), to.size()); });
}
BENCHMARK(copy)->Name("memcpy");

std::string armoured() {
    KSAsciiStream out;
    out.write(payload().data(), payload().size());
    char* const text = out.getString().createCStr();
    const std::string copied = text;
    std::free(text);
    return copied;
}

void encodeOurs(benchmark::State& state) {
    KSAsciiStream in, out;
    Bytes back(payload().size());
    const std::string text = armoured();
    const bool isRight = in.open(text.data(), text.size()) &&
                         in.read(back.data(), back.size()) == back.size() && back == payload();
    run(state, isRight, [&] {
        out.clear();
        out.write(payload().data(), payload().size());
    });
}
BENCHMARK(encodeOurs)->Name("encode, KSAsciiStream");

void decodeOurs(benchmark::State& state) {
    KSAsciiStream in;
    Bytes back(payload().size());
    const std::string text = armoured();
    const auto decode = [&] {
        return in.open(text.data(), text.size()) && in.read(back.data(), back.size()) > 0;
    };
    run(state, decode() && back == payload(), decode);
}
BENCHMARK(decodeOurs)->Name("decode, KSAsciiStream");

#ifdef KESTREL_PEER_OPENSSL
void encodeOpenSSL(benchmark::State& state) {
    Bytes text(payload().size() / 3 * 4 + 1), back(payload().size());
    const auto encode = [&] {
        return EVP_EncodeBlock(text.data(), payload().data(), static_cast<int>(payload().size()));
    };
    const int length = encode();
    EVP_DecodeBlock(back.data(), text.data(), length);
    run(state, back == payload(), encode);
}
BENCHMARK(encodeOpenSSL)->Name("encode, OpenSSL");

void decodeOpenSSL(benchmark::State& state) {
    Bytes text(payload().size() / 3 * 4 + 1), back(payload().size());
    const int length = EVP_EncodeBlock(text.data(), payload().data(), static_cast<int>(payload().size()));
    const auto decode = [&] { return EVP_DecodeBlock(back.data(), text.data(), length); };
    decode();
    run(state, back == payload(), decode);
}
BENCHMARK(decodeOpenSSL)->Name("decode, OpenSSL");
#endif

#ifdef KESTREL_PEER_GLIB
void encodeGLib(benchmark::State& state) {
    gsize length = 0;
    gchar* const text = g_base64_encode(payload().data(), payload().size());
    guchar* const back = g_base64_decode(text, &length);
    const bool isRight = Bytes(back, back + length) == payload();
    g_free(back);
    g_free(text);
    run(state, isRight, [] { g_free(g_base64_encode(payload().data(), payload().size())); });
}
BENCHMARK(encodeGLib)->Name("encode, GLib");

void decodeGLib(benchmark::State& state) {
    gchar* const text = g_base64_encode(payload().data(), payload().size());
    run(state, text != nullptr, [text] {
        gsize length = 0;
        g_free(g_base64_decode(text, &length));
    });
    g_free(text);
}
BENCHMARK(decodeGLib)->Name("decode, GLib");
#endif

#ifdef KESTREL_PEER_QT
QByteArray bytesForQt() {
    return QByteArray(reinterpret_cast<const char*>(payload().data()), static_cast<int>(payload().size()));
}

void encodeQt(benchmark::State& state) {
    const QByteArray bytes = bytesForQt();
    run(state, QByteArray::fromBase64(bytes.toBase64()) == bytes,
        [&] { benchmark::DoNotOptimize(bytes.toBase64()); });
}
BENCHMARK(encodeQt)->Name("encode, Qt");

void decodeQt(benchmark::State& state) {
    const QByteArray bytes = bytesForQt(), text = bytes.toBase64();
    run(state, QByteArray::fromBase64(text) == bytes,
        [&] { benchmark::DoNotOptimize(QByteArray::fromBase64(text)); });
}
BENCHMARK(decodeQt)->Name("decode, Qt");
#endif

}  // namespace
