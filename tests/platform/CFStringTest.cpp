#include <kestrel/platform/CFString.h>

#include <kestrel/platform/detail/Collation.h>
#include <kestrel/platform/detail/StringObject.h>
#include <kestrel/platform/detail/Utf8.h>

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <thread>
#include <vector>

using namespace kestrel::detail;

namespace {

/// A platform string that releases itself.
class Text {
public:
    explicit Text(CFStringRef created) : m_string(created) {}
    Text(const std::string& utf8)
        : m_string(CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(utf8.data()),
                                           static_cast<CFIndex>(utf8.size()), kCFStringEncodingUTF8, false)) {
    }
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    ~Text() { CFRelease(m_string); }

    operator CFStringRef() const { return m_string; }
    CFMutableStringRef edit() const { return const_cast<CFMutableStringRef>(m_string); }
    std::string utf8() const { return m_string ? utf8Of(kestrel::detail::unitsOf(m_string)) : "(null)"; }

private:
    CFStringRef m_string;
};

CFStringRef decode(const std::string& bytes, CFStringEncoding encoding, bool isExternal = false) {
    return CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(bytes.data()),
                                   static_cast<CFIndex>(bytes.size()), encoding, isExternal);
}

struct Encoded {
    CFIndex units;
    std::string bytes;
    bool operator==(const Encoded&) const = default;
};
void PrintTo(const Encoded& encoded, std::ostream* out) {
    *out << encoded.units << " units: " << encoded.bytes;
}

Encoded encode(CFStringRef text, CFStringEncoding encoding, CFIndex room, char loss = 0,
               bool isExternal = false) {
    std::vector<UInt8> bytes(static_cast<std::size_t>(room) + 1, '#');
    CFIndex used = -1;
    const CFIndex units = CFStringGetBytes(text, {0, CFStringGetLength(text)}, encoding,
                                           static_cast<UInt8>(loss), isExternal, bytes.data(), room, &used);
    EXPECT_EQ(bytes.back(), '#') << "beyond the room";
    return {units, std::string(bytes.begin(), bytes.begin() + used)};
}

std::string bytesOf(std::initializer_list<int> values) { return {values.begin(), values.end()}; }

}  // namespace

TEST(CFString, DecodesAndEncodesTheSameText) {
    struct Row {
        const char* name;
        CFStringEncoding encoding;
        std::string bytes;
        const char* utf8;
    };
    for (const Row& row : {
             Row{"Mac OS Roman", kCFStringEncodingMacRoman, "\x8A\xDB", "ä€"},
             Row{"ASCII", kCFStringEncodingASCII, "abc", "abc"},
             Row{"Latin 1", kCFStringEncodingISOLatin1, "\xE4", "ä"},
             Row{"Windows", kCFStringEncodingWindowsLatin1, "\x80", "€"},
             Row{"UTF-8", kCFStringEncodingUTF8, "日本🎬", "日本🎬"},
             Row{"UTF-16 big", kCFStringEncodingUTF16BE, bytesOf({0, 'a', 0xD8, 0x3C, 0xDF, 0xAC}), "a🎬"},
             Row{"UTF-16 little", kCFStringEncodingUTF16LE, bytesOf({'a', 0, 0x3C, 0xD8, 0xAC, 0xDF}), "a🎬"},
             Row{"UTF-32 big", kCFStringEncodingUTF32BE, bytesOf({0, 1, 0xF3, 0xAC}), "🎬"},
             Row{"Cyrillic", 0x0205, "\xB4\xDE\xDC", "Дом"},
             Row{"Shift JIS", 0x0A01, "\x93\xFA\x96\x7B", "日本"},
             Row{"with shifts", 0x0820, "\x1B$BF|K\\\x1B(B", "日本"},
             Row{"nothing", kCFStringEncodingUTF8, "", ""},
         }) {
        const Text text(decode(row.bytes, row.encoding));
        EXPECT_EQ(text.utf8(), row.utf8) << row.name;
        EXPECT_EQ(encode(text, row.encoding, 64), (Encoded{CFStringGetLength(text), row.bytes})) << row.name;
    }
}

TEST(CFString, RefusesBytesThatAreNoTextOfTheEncoding) {
    struct Row {
        const char* name;
        CFStringEncoding encoding;
        std::string bytes;
    };
    for (const Row& row :
         {Row{"ASCII", kCFStringEncodingASCII, "a\x80"}, Row{"UTF-8", kCFStringEncodingUTF8, "a\xC3"},
          Row{"half a unit", kCFStringEncodingUTF16LE, "abc"},
          Row{"Shift JIS cut short", 0x0A01, "\x93\xFA\x96"},
          Row{"UTF-32 beyond Unicode", kCFStringEncodingUTF32BE, bytesOf({1, 0, 0, 0})},
          Row{"no such encoding", 0x7777, "abc"}})
        EXPECT_EQ(decode(row.bytes, row.encoding), nullptr) << row.name;
    EXPECT_EQ(CFStringCreateWithBytes(nullptr, nullptr, 3, kCFStringEncodingUTF8, false), nullptr);
    EXPECT_EQ(CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>("a"), -1, kCFStringEncodingUTF8,
                                      false),
              nullptr);
}

TEST(CFString, ByteOrderMarksCountOnlyInExternalText) {
    const std::string little = bytesOf({0xFF, 0xFE, 'a', 0}), big = bytesOf({0xFE, 0xFF, 0, 'a'});
    EXPECT_EQ(Text(decode(little, kCFStringEncodingUTF16, true)).utf8(), "a");
    EXPECT_EQ(Text(decode(big, kCFStringEncodingUTF16, true)).utf8(), "a");
    EXPECT_EQ(Text(decode("\xEF\xBB\xBF"
                          "a",
                          kCFStringEncodingUTF8, true))
                  .utf8(),
              "a");
    EXPECT_EQ(Text(decode("\xEF\xBB\xBF"
                          "a",
                          kCFStringEncodingUTF8))
                  .utf8(),
              "\uFEFFa");
    const Text text("a");
    const std::string written = encode(text, kCFStringEncodingUTF16, 8, 0, true).bytes;
    EXPECT_EQ(Text(decode(written, kCFStringEncodingUTF16, true)).utf8(), "a");
    EXPECT_EQ(written.size(), 4u);
    EXPECT_EQ(encode(text, kCFStringEncodingUTF16, 1, 0, true), (Encoded{0, ""}));
}

TEST(CFString, ASmallBufferGetsWholeCharacters) {
    const Text text("aä日🎬z");  // 1, 2, 3, 4 and 1 bytes; 6 units
    struct Row {
        CFIndex room;
        Encoded result;
    };
    for (const Row& row :
         {Row{0, {0, ""}}, Row{1, {1, "a"}}, Row{2, {1, "a"}}, Row{3, {2, "aä"}}, Row{5, {2, "aä"}},
          Row{6, {3, "aä日"}}, Row{9, {3, "aä日"}}, Row{10, {5, "aä日🎬"}}, Row{11, {6, "aä日🎬z"}}})
        EXPECT_EQ(encode(text, kCFStringEncodingUTF8, row.room), row.result) << row.room;
    const Text japanese("a日本");  // 1 + 2 + 2 bytes
    for (const Row& row : {Row{2, {1, "a"}}, Row{3, {2, "a\x93\xFA"}}, Row{4, {2, "a\x93\xFA"}},
                           Row{5, {3, "a\x93\xFA\x96\x7B"}}})
        EXPECT_EQ(encode(japanese, 0x0A01, row.room), row.result) << row.room;
    char buffer[4] = "###";
    EXPECT_FALSE(CFStringGetCString(text, buffer, 4, kCFStringEncodingUTF8));
    EXPECT_STREQ(buffer, "");
    EXPECT_FALSE(CFStringGetCString(text, buffer, 0, kCFStringEncodingUTF8));
    EXPECT_TRUE(CFStringGetCString(CFSTR("abc"), buffer, 4, kCFStringEncodingMacRoman));
    EXPECT_STREQ(buffer, "abc");
}

TEST(CFString, WhatAnEncodingCannotHoldStopsItOrIsReplaced) {
    const Text text("ab日c");
    for (const CFStringEncoding encoding :
         {kCFStringEncodingMacRoman, kCFStringEncodingASCII, kCFStringEncodingISOLatin1}) {
        EXPECT_EQ(encode(text, encoding, 9), (Encoded{2, "ab"})) << encoding;
        EXPECT_EQ(encode(text, encoding, 9, '?'), (Encoded{4, "ab?c"})) << encoding;
        EXPECT_EQ(encode(text, encoding, 2, '?'), (Encoded{2, "ab"})) << encoding;
    }
    CFIndex size = 0;
    EXPECT_EQ(CFStringGetBytes(text, {1, 2}, kCFStringEncodingUTF8, 0, false, nullptr, 0, &size), 2);
    EXPECT_EQ(size, 4);
}

TEST(CFString, EncodingsHaveRegisteredNames) {
    for (const auto& [name, encoding] :
         {std::pair<const char*, CFStringEncoding>{"utf-8", kCFStringEncodingUTF8},
          {"UTF8", kCFStringEncodingUTF8},
          {"latin1", kCFStringEncodingISOLatin1},
          {"Shift_JIS", 0x0A01u},
          {"macintosh", kCFStringEncodingMacRoman},
          {"klingon", kCFStringEncodingInvalidId}})
        EXPECT_EQ(CFStringConvertIANACharSetNameToEncoding(Text(name)), encoding) << name;
    EXPECT_EQ(utf8Of(unitsOf(CFStringConvertEncodingToIANACharSetName(0x0205))), "ISO-8859-5");
    EXPECT_EQ(CFStringConvertEncodingToIANACharSetName(0x7777), nullptr);
}

TEST(CFString, CopiesShareWhatCannotChange) {
    const Text text("abc");
    const Text copy(CFStringCreateCopy(nullptr, text)),
        whole(CFStringCreateWithSubstring(nullptr, text, {0, 9}));
    EXPECT_EQ(static_cast<CFStringRef>(copy), static_cast<CFStringRef>(text));
    EXPECT_EQ(static_cast<CFStringRef>(whole), static_cast<CFStringRef>(text));
    const Text editable(CFStringCreateMutableCopy(nullptr, 0, text));
    const Text kept(CFStringCreateCopy(nullptr, editable));
    CFStringAppend(editable.edit(), text);
    EXPECT_EQ(editable.utf8(), "abcabc");
    EXPECT_EQ(kept.utf8(), "abc");
    // An immutable text that others hold, a constant one for example, is not edited.
    CFStringAppend(text.edit(), text);
    EXPECT_EQ(text.utf8(), "abc");
    CFStringAppend(const_cast<CFMutableStringRef>(CFSTR("constant")), text);
    EXPECT_EQ(CFStringGetLength(CFSTR("constant")), 8);
    EXPECT_EQ(CFSTR("constant"), CFSTR("constant"));
}

TEST(CFString, EditsOfAMutableString) {
    struct Row {
        const char* name;
        void (*edit)(CFMutableStringRef);
        const char* result;
    };
    for (const Row& row : std::to_array<Row>({
             {"append units",
              [](CFMutableStringRef s) {
                  const UniChar u[] = {0x65E5};
                  CFStringAppendCharacters(s, u, 1);
              },
              "a<b>c日"},
             {"append bytes",
              [](CFMutableStringRef s) { CFStringAppendCString(s, "\xC3\xA4", kCFStringEncodingUTF8); },
              "a<b>cä"},
             {"append bad bytes",
              [](CFMutableStringRef s) { CFStringAppendCString(s, "\xC3", kCFStringEncodingUTF8); }, "a<b>c"},
             {"insert itself", [](CFMutableStringRef s) { CFStringInsert(s, 1, s); }, "aa<b>c<b>c"},
             {"delete from before the start",
              [](CFMutableStringRef s) {
                  CFStringDelete(s, {-5, 2});
              },
              "b>c"},
             {"delete nothing",
              [](CFMutableStringRef s) {
                  CFStringDelete(s, {2, -2});
              },
              "a<b>c"},
             {"replace",
              [](CFMutableStringRef s) {
                  CFStringReplace(s, {1, 3}, CFSTR("-"));
              },
              "a-c"},
             {"replace all", [](CFMutableStringRef s) { CFStringReplaceAll(s, CFSTR("x")); }, "x"},
             {"find and replace",
              [](CFMutableStringRef s) {
                  CFStringFindAndReplace(s, CFSTR("<"), CFSTR("&lt;"), {0, 99}, 0);
              },
              "a&lt;b>c"},
             {"replaced by itself",
              [](CFMutableStringRef s) {
                  CFStringFindAndReplace(s, CFSTR("b"), s, {0, 99}, 0);
              },
              "a<a<b>c>c"},
             {"find and replace in a range",
              [](CFMutableStringRef s) {
                  CFStringFindAndReplace(s, CFSTR("a"), CFSTR("x"), {1, 4}, 0);
              },
              "a<b>c"},
         })) {
        const Text text(CFStringCreateMutable(nullptr, 0));
        CFStringAppend(text.edit(), CFSTR("a<b>c"));
        row.edit(text.edit());
        EXPECT_EQ(text.utf8(), row.result) << row.name;
    }
    const Text ones(CFStringCreateMutableCopy(nullptr, 0, CFSTR("1111")));
    EXPECT_EQ(CFStringFindAndReplace(ones.edit(), CFSTR("1"), CFSTR("11"), {0, 4}, 0), 4);
    EXPECT_EQ(ones.utf8(), "11111111");
}

TEST(CFString, FindsByTheOptions) {
    const Text text("one Two one");
    struct Row {
        const char* what;
        CFStringCompareFlags options;
        CFIndex location;
    };
    for (const Row& row :
         {Row{"one", 0, 0}, Row{"one", kCFCompareBackwards, 8}, Row{"two", 0, kCFNotFound},
          Row{"two", kCFCompareCaseInsensitive, 4}, Row{"Two", kCFCompareAnchored, kCFNotFound},
          Row{"one", kCFCompareAnchored | kCFCompareBackwards, 8}, Row{"", 0, kCFNotFound}}) {
        const CFRange found = CFStringFind(text, Text(row.what), row.options);
        EXPECT_EQ(found.location, row.location) << row.what << ' ' << row.options;
        EXPECT_EQ(found.length, row.location < 0 ? 0 : 3) << row.what;
    }
    CFRange found{7, 7};
    EXPECT_TRUE(CFStringFindWithOptions(text, Text("one"), {1, 99}, 0, &found));
    EXPECT_EQ(found.location, 8);
    EXPECT_FALSE(CFStringFindWithOptions(text, Text("one"), {1, 9}, 0, nullptr));
    EXPECT_TRUE(CFStringHasPrefix(text, Text("one T")));
    EXPECT_FALSE(CFStringHasPrefix(text, Text("one Two one more")));
    EXPECT_TRUE(CFStringHasSuffix(text, Text(" one")));
}

TEST(Collation, FollowsTheLanguageOfTheLocale) {
    struct Row {
        const char* name;
        const char* locale;
        const char *left, *right;
        int exact, caseless;
    };
    for (const Row& row : std::to_array<Row>({
             {"C by unit", "C", "z", "ä", -1, -1},
             {"C with an encoding", "C.UTF-8", "z", "ä", -1, -1},
             {"German between letters", "de_DE.UTF-8", "z", "ä", 1, 1},
             {"Swedish after z", "sv_SE.UTF-8", "z", "ä", -1, -1},
             {"Spanish n with tilde", "es_ES", "nz", "ña", -1, -1},
             {"case is the last difference", "de_DE.UTF-8", "b", "B", -1, 0},
             {"letters before case", "de_DE.UTF-8", "B", "a", 1, 1},
             {"composed and decomposed", "fr_FR@euro", "\u00E9", "e\u0301", 0, 0},
             {"accents matter without case", "fr_FR", "e", "É", -1, -1},
             {"an unknown language", "xx_XX", "a", "B", -1, -1},
         })) {
        const Text left(row.left), right(row.right);
        const auto compare = [&](Case letters) {
            const int order = compareIn(row.locale, unitsOf(left), unitsOf(right), letters);
            EXPECT_EQ(compareIn(row.locale, unitsOf(right), unitsOf(left), letters), -order) << row.name;
            return order;
        };
        EXPECT_EQ(compare(Case::Matters), row.exact) << row.name;
        EXPECT_EQ(compare(Case::Ignored), row.caseless) << row.name;
    }
}

TEST(Collation, ThreadsKeepTheirOwnCollators) {
    const Text a("ä"), z("z");
    std::vector<std::thread> threads;
    std::array<int, 4> wrong{};
    for (std::size_t i = 0; i < 4; ++i)
        threads.emplace_back([&, i] {
            for (int round = 0; round < 200; ++round) {
                const bool isSwedish = (static_cast<std::size_t>(round) + i) % 2;
                const int order =
                    compareIn(isSwedish ? "sv_SE" : "de_DE", unitsOf(a), unitsOf(z), Case::Matters);
                wrong[i] += order != (isSwedish ? 1 : -1);
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, (std::array<int, 4>{}));
}
