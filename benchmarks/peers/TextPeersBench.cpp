// The workloads of benchmarks/foundation/KSStringBench.cpp on other libraries, and Kestrel's beside them so
// that one run gives the ratios.
#include <kestrel/foundation/KSString.h>

#include <benchmark/benchmark.h>

#include <atomic>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <thread>

#include "../foundation/TextWorkloads.h"

#if defined(KESTREL_PEER_ICU)
#include <unicode/coll.h>
#include <unicode/ucnv.h>
#include <unicode/unistr.h>
#endif
#if defined(KESTREL_PEER_QT)
#include <QString>
#endif
#if defined(KESTREL_PEER_GLIB)
#include <glib.h>
#endif

namespace {

// Each library is a struct with the same operations on its own string type; what one lacks it leaves out.

struct Kestrel {
    using String = KSString;
    static String make(const std::u16string& units) {
        String string;
        string.set(reinterpret_cast<const unsigned short*>(units.data()),
                   static_cast<unsigned>(units.size()));
        return string;
    }
    static bool macRoman(const char* text) { return throughRoman(text); }
    static bool ascii(const char* text) { return throughRoman(text); }
    static bool throughRoman(const char* text) {
        char* back = KSString(text).createCStr();
        const bool same = std::strcmp(text, back) == 0;
        std::free(back);
        return same;
    }
    static void append(String& to, const String& piece) { to.append(piece); }
    static std::size_t length(const String& text) { return text.size(); }
    static long find(const String& text, const String& what) { return text.find(what); }
    static int compare(const String& left, const String& right) { return left.compare(right); }
    static std::size_t utf8Size(const String& text) {
        char* utf8 = text.createUTF8Str();
        benchmark::DoNotOptimize(utf8);
        const std::size_t last = std::strlen(utf8 + text.size()) + text.size();
        std::free(utf8);
        return last;
    }
};

#if defined(KESTREL_PEER_ICU)
struct Icu {
    using String = icu::UnicodeString;
    static String make(const std::u16string& units) {
        return String(units.data(), static_cast<std::int32_t>(units.size()));
    }
    static bool throughConverter(UConverter* converter, const char* text) {
        UErrorCode status = U_ZERO_ERROR;
        const String string(text, static_cast<std::int32_t>(std::strlen(text)), converter, status);
        const auto room = static_cast<std::size_t>(string.length()) + 1;
        char* back = static_cast<char*>(std::malloc(room));
        string.extract(back, static_cast<std::int32_t>(room), converter, status);
        const bool same = U_SUCCESS(status) && std::strcmp(text, back) == 0;
        std::free(back);
        return same;
    }
    static bool macRoman(const char* text) {
        UErrorCode status = U_ZERO_ERROR;
        static UConverter* converter = ucnv_open("macintosh", &status);
        return throughConverter(converter, text);
    }
    static bool ascii(const char* text) {
        UErrorCode status = U_ZERO_ERROR;
        static UConverter* converter = ucnv_open("US-ASCII", &status);
        return throughConverter(converter, text);
    }
    static void append(String& to, const String& piece) { to.append(piece); }
    static std::size_t length(const String& text) { return static_cast<std::size_t>(text.length()); }
    static long find(const String& text, const String& what) { return text.indexOf(what); }
    static int compare(const String& left, const String& right) {
        UErrorCode status = U_ZERO_ERROR;
        static const std::unique_ptr<icu::Collator> collator(icu::Collator::createInstance("de_DE", status));
        return collator->compare(left, right, status);
    }
    static std::size_t utf8Size(const String& text) {
        std::string utf8;
        text.toUTF8String(utf8);
        return utf8.size();
    }
};
#endif

#if defined(KESTREL_PEER_QT)
struct Qt {
    using String = QString;
    static String make(const std::u16string& units) { return QString::fromStdU16String(units); }
    static bool ascii(const char* text) {
        const QByteArray back = QString::fromLatin1(text).toLatin1();
        return std::strcmp(text, back.constData()) == 0;
    }
    static void append(String& to, const String& piece) { to.append(piece); }
    static std::size_t length(const String& text) { return static_cast<std::size_t>(text.size()); }
    static long find(const String& text, const String& what) { return text.indexOf(what); }
    static std::size_t utf8Size(const String& text) { return static_cast<std::size_t>(text.toUtf8().size()); }
};
#endif

#if defined(KESTREL_PEER_GLIB)
struct GLib {
    static bool ascii(const char* text) {
        gunichar2* units = g_utf8_to_utf16(text, -1, nullptr, nullptr, nullptr);
        char* back = g_utf16_to_utf8(units, -1, nullptr, nullptr, nullptr);
        const bool same = std::strcmp(text, back) == 0;
        g_free(units);
        g_free(back);
        return same;
    }
};
#endif

template <typename Library>
void ascii64ThereAndBack(benchmark::State& state) {
    const std::string text = workloads::ascii64();
    for (auto _ : state)
        if (!Library::ascii(text.c_str())) return state.SkipWithError("the text changed on its way");
}

template <typename Library>
void macRoman64ThereAndBack(benchmark::State& state) {
    const std::string text = workloads::macRoman64();
    for (auto _ : state)
        if (!Library::macRoman(text.c_str())) return state.SkipWithError("the text changed on its way");
}

template <typename Library>
void append16(benchmark::State& state) {
    const auto piece = Library::make(u"sixteen letters.");
    for (auto _ : state) {
        auto text = Library::make(u"");
        for (int i = 0; i < workloads::appends; ++i) Library::append(text, piece);
        if (Library::length(text) != 16 * workloads::appends) return state.SkipWithError("letters were lost");
    }
    state.SetItemsProcessed(state.iterations() * workloads::appends);
}

template <typename Library>
void copy(benchmark::State& state) {
    const auto text = Library::make(u"a name of a layer, long enough to live on the heap");
    for (auto _ : state) {
        auto other = text;
        benchmark::DoNotOptimize(other);
    }
}

template <typename Library>
void find(benchmark::State& state) {
    const auto text = Library::make(workloads::haystack());
    const auto what = Library::make(workloads::needle());
    const auto expected = static_cast<long>(workloads::haystack().size() - workloads::needle().size());
    for (auto _ : state)
        if (Library::find(text, what) != expected) return state.SkipWithError("not found");
    state.SetBytesProcessed(state.iterations() * expected * 2);
}

template <typename Library>
void toUtf8(benchmark::State& state, const std::u16string& units, std::size_t expected) {
    const auto text = Library::make(units);
    for (auto _ : state)
        if (Library::utf8Size(text) != expected) return state.SkipWithError("wrong size");
    state.SetBytesProcessed(state.iterations() * static_cast<long>(units.size()) * 2);
}
template <typename Library>
void asciiToUtf8(benchmark::State& state) {
    toUtf8<Library>(state, workloads::ascii(), workloads::asciiUtf8().size());
}
template <typename Library>
void mixedToUtf8(benchmark::State& state) {
    toUtf8<Library>(state, workloads::mixed(), workloads::mixedUtf8().size());
}

template <typename Library>
void compareInGerman(benchmark::State& state) {
    if (!std::setlocale(LC_COLLATE, "de_DE.UTF-8")) return state.SkipWithError("no locale de_DE.UTF-8");
    const auto left = Library::make(u"layer name 0017"), right = Library::make(u"layer name 0018");
    for (auto _ : state)
        if (Library::compare(left, right) >= 0) state.SkipWithError("wrong order");
    std::setlocale(LC_COLLATE, "C");
}

/// What a copy cannot cost less than: counting one holder more and one less.
void copyOfAtomicCount(benchmark::State& state) {
    std::atomic<unsigned> count{1};
    benchmark::DoNotOptimize(&count);
    for (auto _ : state) {
        count.fetch_add(1, std::memory_order_relaxed);
        if (count.fetch_sub(1, std::memory_order_acq_rel) == 1) state.SkipWithError("nobody holds it");
    }
}
void copyOfSharedPointer(benchmark::State& state) {
    const auto text = std::make_shared<std::u16string>(u"a name of a layer, long enough to live on the heap");
    std::thread([] {}).join();  // shared pointers count without atomics before there are threads
    for (auto _ : state) {
        auto other = text;
        benchmark::DoNotOptimize(other);
    }
}
BENCHMARK(copyOfAtomicCount);
BENCHMARK(copyOfSharedPointer);

#define PEER(library)                \
    BENCHMARK(append16<library>);    \
    BENCHMARK(copy<library>);        \
    BENCHMARK(find<library>);        \
    BENCHMARK(asciiToUtf8<library>); \
    BENCHMARK(mixedToUtf8<library>)

BENCHMARK(ascii64ThereAndBack<Kestrel>);
BENCHMARK(macRoman64ThereAndBack<Kestrel>);
BENCHMARK(compareInGerman<Kestrel>);
PEER(Kestrel);
#if defined(KESTREL_PEER_ICU)
BENCHMARK(ascii64ThereAndBack<Icu>);
BENCHMARK(macRoman64ThereAndBack<Icu>);
BENCHMARK(compareInGerman<Icu>);
PEER(Icu);
#endif
#if defined(KESTREL_PEER_QT)
BENCHMARK(ascii64ThereAndBack<Qt>);
PEER(Qt);
#endif
#if defined(KESTREL_PEER_GLIB)
BENCHMARK(ascii64ThereAndBack<GLib>);
#endif

}  // namespace
