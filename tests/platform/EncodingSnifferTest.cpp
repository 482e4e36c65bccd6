#include <kestrel/platform/detail/EncodingSniffer.h>

#include <kestrel/foundation/KSString.h>
#include <kestrel/platform/detail/StringObject.h>
#include <kestrel/platform/detail/TextEncoding.h>
#include <kestrel/platform/detail/Utf8.h>

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>

using namespace kestrel::detail;

namespace {

std::string sniff(const std::string& bytes) {
    CFStringRef string = CFStringCreateWithSniffingEncoding(bytes.c_str());
    const std::string text = string ? utf8Of(unitsOf(string)) : "(null)";
    CFRelease(string);
    return text;
}

}  // namespace

TEST(EncodingSniffer, ReadsTextOfManyEncodings) {
    struct Row {
        const char* name;
        CFStringEncoding encoding;
        const char* text;
    };
    for (const Row& row : {
             Row{"ASCII", kCFStringEncodingASCII, "The quick brown fox jumps over the lazy dog."},
             Row{"UTF-8", kCFStringEncodingUTF8, "Größe, дом, 合成"},
             Row{"Latin 1", kCFStringEncodingISOLatin1,
                 "Les élèves ont déjà mangé à la cantine, où le garçon a été très aimable."},
             Row{"Cyrillic", 0x0502, "Съешь же ещё этих мягких французских булок, да выпей чаю."},
             Row{"KOI8", 0x0A02,
                 "Этот проект хранит слои, ключевые кадры и цвета, а также порядок наложения изображений."},
             Row{"Shift JIS", 0x0A01, "これは日本語の文章です。レイヤーの合成とアニメーション。"},
             Row{"EUC", 0x0920, "これは日本語の文章です。レイヤーの合成とアニメーション。"},
             Row{"Korean", 0x0940, "이것은 한국어 문장입니다. 레이어 합성과 애니메이션."},
         }) {
        CFStringRef text = CFStringCreateWithCString(nullptr, row.text, kCFStringEncodingUTF8);
        char bytes[512];
        ASSERT_TRUE(CFStringGetCString(text, bytes, sizeof bytes, row.encoding)) << row.name;
        EXPECT_EQ(sniff(bytes), row.text) << row.name;
        CFRelease(text);
    }
}

TEST(EncodingSniffer, TheLikeliestEncodingComesFirst) {
    const std::string_view utf8 = "Größe, дом, 合成";
    const auto names = sniffEncodings(utf8);
    ASSERT_FALSE(names.empty());
    EXPECT_STREQ(names.front(), "UTF-8");
}

TEST(EncodingSniffer, EveryTextBecomesSomeString) {
    EXPECT_EQ(CFStringCreateWithSniffingEncoding(nullptr), nullptr);
    EXPECT_EQ(sniff(""), "");
    std::mt19937 random(3);
    for (int round = 0; round < 300; ++round) {
        std::string bytes(random() % 60, ' ');
        for (char& byte : bytes) byte = static_cast<char>(random() % 255 + 1);
        EXPECT_NE(sniff(bytes), "(null)") << round;
    }
}
