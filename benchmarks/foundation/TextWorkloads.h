// benchmarks/foundation/TextWorkloads.h - the texts that the text benchmarks of every library work on.
#pragma once

#include <string>

namespace workloads {

inline constexpr int appends = 10'000;

inline std::string ascii64() {
    std::string text;
    while (text.size() < 64) text += "A shot, 010. ";
    return text.substr(0, 64);
}
/// 64 bytes of Mac OS Roman, half of them from the upper half of the table.
inline std::string macRoman64() {
    std::string text;
    for (int i = 0; i < 32; ++i) text += {static_cast<char>('a' + i % 26), static_cast<char>(0x80 + 3 * i)};
    return text;
}

/// Two million units of ASCII.
inline std::u16string ascii() {
    std::u16string text;
    while (text.size() < 2'000'000) text += u"The quick brown fox jumps over the lazy dog. ";
    return text;
}
inline std::string asciiUtf8() {
    const std::u16string text = ascii();
    return {text.begin(), text.end()};
}

/// A line in six scripts, again and again: one, two, three and four bytes of UTF-8 a character.
inline std::u16string mixed() {
    std::u16string text;
    for (int i = 0; i < 20'000; ++i) text += u"Größe, дом, λόγος, 合成 レイヤー, שלום, 🎬 take 2\n";
    return text;
}
inline std::string mixedUtf8() {
    std::string text;
    for (int i = 0; i < 20'000; ++i)
        text += reinterpret_cast<const char*>(u8"Größe, дом, λόγος, 合成 レイヤー, שלום, 🎬 take 2\n");
    return text;
}

inline std::u16string needle() { return u"needle"; }
inline std::u16string haystack() { return ascii() + needle(); }

}  // namespace workloads
