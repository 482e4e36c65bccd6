#include <kestrel/foundation/KSString.h>

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

/// The text as UTF-8; "(null)" for a null string.
std::string textOf(const KSString& string) {
    char* utf8 = string.createUTF8Str();
    const std::string text = utf8 ? utf8 : "(null)";
    std::free(utf8);
    return text;
}

std::string macRomanOf(const KSString& string) {
    char* bytes = string.createCStr();
    const std::string text = bytes ? bytes : "(null)";
    std::free(bytes);
    return text;
}

KSString unitsString(const std::vector<unsigned short>& units) {
    if (units.empty()) return KSString("");
    return KSString().set(units.data(), static_cast<unsigned>(units.size()));
}

std::vector<unsigned short> unitsOf(const KSString& string) {
    return {string.u_str(), string.u_str() + string.size()};
}

int signOf(int value) { return (value > 0) - (value < 0); }

struct Reference {
    explicit Reference(CFStringRef created) : string(created) {}
    Reference(const Reference&) = delete;
    Reference& operator=(const Reference&) = delete;
    ~Reference() { CFRelease(string); }
    CFStringRef string;
};

}  // namespace

// ----- null, empty and bad input

TEST(KSString, NullInputsMakeNullStringsOrDoNothing) {
    const char* const noText = nullptr;
    const unsigned short* const noUnits = nullptr;
    const CFStringRef noString = nullptr;
    const CFBundleRef noBundle = nullptr;
    const KSString null, text("text");
    for (const KSString& string :
         {KSString(noText), KSString(noUnits), KSString(noString), KSString(null), KSString("key", noText),
          KSString(noText, "bundle"), KSString(noString, "bundle"), KSString(noString, noString),
          KSString(noText, noBundle), KSString(noString, noBundle), KSString(nullptr)})
        EXPECT_EQ(textOf(string), "(null)");
    EXPECT_EQ(textOf(KSString("a").set(noText)), "(null)");
    EXPECT_EQ(textOf(KSString("a").set(noUnits)), "(null)");
    EXPECT_EQ(textOf(KSString("a").set(noUnits, 3)), "(null)");
    EXPECT_EQ(textOf(KSString("a").set(noString)), "(null)");
    EXPECT_EQ(textOf(KSString("a").set(null)), "(null)");
    EXPECT_EQ(textOf(KSString("a").append(noText)), "a");
    EXPECT_EQ(textOf(KSString("a").append(null)), "a");
    EXPECT_EQ(textOf(KSString("a").insert(0, null)), "a");
    EXPECT_EQ(textOf(KSString("a").replace(0, 1, null)), "a");
    EXPECT_EQ(textOf(KSString().replace(0, 1, text)), "(null)");
    EXPECT_EQ(textOf(KSString().insert(0, text)), "(null)");
    EXPECT_EQ(textOf(KSString().erase(0, 9)), "(null)");
    EXPECT_EQ(textOf(KSString().append(text)), "text");
    EXPECT_EQ(textOf(KSString().append("text")), "text");
}

TEST(KSString, ANullStringHasNothingButAnEmptyPlatformString) {
    const KSString null;
    EXPECT_TRUE(null.empty());
    EXPECT_EQ(null.size(), 0u);
    EXPECT_EQ(null.createCStr(), nullptr);
    EXPECT_EQ(null.createUTF8Str(), nullptr);
    EXPECT_EQ(null.createUniStr(), nullptr);
    EXPECT_EQ(null.u_str(), nullptr);
    EXPECT_EQ(CFStringGetLength(null.cf_str()), 0);
    EXPECT_NE(null.ns_str(), nullptr);
    EXPECT_EQ(null.find("a"), -1);
    EXPECT_EQ(textOf(null.substr(0, 1)), "(null)");
    EXPECT_EQ(textOf(null.substrTo(3)), "(null)");
    EXPECT_EQ(textOf(null.substrFrom(0)), "(null)");
    EXPECT_EQ(null.get_OSType(), 0u);
}

// ----- encodings

TEST(KSString, MacRomanComesAndGoesAsItIs) {
    std::string every;
    for (int byte = 1; byte < 256; ++byte) every += static_cast<char>(byte);
    const KSString string(every.c_str());
    EXPECT_EQ(string.size(), 255u);
    EXPECT_EQ(macRomanOf(string), every);
    EXPECT_EQ(textOf(KSString("\x8Apfel \xDB")), "äpfel €");
}

TEST(KSString, TextThatMacRomanCannotHoldStillGivesATerminatedBuffer) {
    const std::vector<unsigned short> units = {'a', 0x65E5, 'b'};
    char* bytes = unitsString(units).createCStr();
    ASSERT_NE(bytes, nullptr);
    EXPECT_LE(std::strlen(bytes), 3u);
    std::free(bytes);
}

TEST(KSString, ATemporaryHandsItsTextOnAndNobodyElseNotices) {
    const auto take = [](KSString&& string) {
        const std::unique_ptr<char, decltype(&std::free)> bytes(std::move(string).createCStr(), &std::free);
        return std::string(bytes ? bytes.get() : "(null)");
    };
    for (const std::size_t length : {0, 1, 15, 16, 17, 40, 47, 48, 64, 100, 1024, 1025, 5000}) {
        std::string text;
        for (std::size_t i = 0; i < length; ++i) text += static_cast<char>('!' + i % 90);
        const KSString kept(text.c_str());
        EXPECT_EQ(take(KSString(text.c_str())), text);
        EXPECT_EQ(take(KSString(kept)), text);
        EXPECT_EQ(macRomanOf(kept), text);
        EXPECT_EQ(take(KSString(KSString("").append(kept).append("\xDB"))), text + "\xDB");
        EXPECT_EQ(take(std::move(KSString("").append(kept))), text) << "in a buffer of its own";
        CFMutableStringRef object = CFStringCreateMutable(nullptr, 0);
        CFStringAppend(object, kept.cf_str());
        KSString only(object);
        CFRelease(object);
        EXPECT_EQ(take(std::move(only)), text);
    }
    EXPECT_EQ(take(KSString()), "(null)");
}

TEST(KSString, Utf8KeepsPairsAndReplacesLoneSurrogates) {
    struct Row {
        const char* name;
        std::vector<unsigned short> units;
        const char* utf8;
    };
    for (const Row& row :
         {Row{"pair", {0xD83C, 0xDFAC}, "🎬"}, Row{"high at the end", {'a', 0xD83C}, "a\uFFFD"},
          Row{"high before a letter", {0xD83C, 'a'}, "\uFFFDa"},
          Row{"low first", {0xDFAC, 0xD83C, 0xDFAC}, "\uFFFD🎬"},
          Row{"limits", {0x7F, 0x80, 0x7FF, 0x800, 0xFFFF}, "\x7F\u0080\u07FF\u0800\uFFFF"}})
        EXPECT_EQ(textOf(unitsString(row.units)), row.utf8) << row.name;
}

TEST(KSString, UnitsEndAtTheirZeroOrAfterTheirCount) {
    const unsigned short units[] = {'a', 'b', 0, 'c', 0};
    EXPECT_EQ(KSString(units).size(), 2u);
    EXPECT_EQ(KSString().set(units).size(), 2u);
    const KSString whole = KSString().set(units, 4);
    EXPECT_EQ(unitsOf(whole), (std::vector<unsigned short>{'a', 'b', 0, 'c'}));
    unsigned short* copy = whole.createUniStr();
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(std::vector<unsigned short>(copy, copy + 5),
              (std::vector<unsigned short>{'a', 'b', 0, 'c', 0}));
    std::free(copy);
}

// ----- sharing

TEST(KSString, APlatformStringIsSharedByIdentityAndSetCopiesIt) {
    const Reference object(CFStringCreateWithCString(nullptr, "shared", kCFStringEncodingUTF8));
    const KSString sharing(object.string);
    EXPECT_EQ(sharing.cf_str(), object.string);
    EXPECT_EQ(CFGetRetainCount(object.string), 2);
    EXPECT_EQ(KSString(sharing).cf_str(), object.string);
    const KSString own = KSString().set(object.string);
    EXPECT_NE(own.cf_str(), object.string);
    EXPECT_EQ(textOf(own), "shared");
}

TEST(KSString, NoHolderOfAnObjectSeesAnEdit) {
    struct Row {
        const char* name;
        void (*edit)(KSString&);
        const char* result;
    };
    for (const Row& row : std::to_array<Row>({
             {"append", [](KSString& s) { s.append(KSString("+")); }, "shared+"},
             {"append bytes", [](KSString& s) { s.append("+"); }, "shared+"},
             {"insert", [](KSString& s) { s.insert(0, "+"); }, "+shared"},
             {"erase", [](KSString& s) { s.erase(0, 2); }, "ared"},
             {"replace", [](KSString& s) { s.replace(1, 4, "+"); }, "s+d"},
             {"set", [](KSString& s) { s.set("+"); }, "+"},
             {"sprintf", [](KSString& s) { s.sprintf("%d", 5); }, "5"},
             {"clear", [](KSString& s) { s.clear(); }, "(null)"},
         })) {
        const Reference object(CFStringCreateWithCString(nullptr, "shared", kCFStringEncodingUTF8));
        KSString edited(object.string);
        const KSString copy(edited), assigned = KSString().set(edited);
        row.edit(edited);
        EXPECT_EQ(textOf(edited), row.result) << row.name;
        EXPECT_EQ(textOf(KSString(object.string)), "shared") << row.name;
        EXPECT_EQ(textOf(copy), "shared") << row.name;
        EXPECT_EQ(textOf(assigned), "shared") << row.name;
    }
}

TEST(KSString, AMutableStringOfTheCallerIsSharedButItsCopiesStayAsTheyWere) {
    CFMutableStringRef object = CFStringCreateMutable(nullptr, 0);
    CFStringAppendCString(object, "one", kCFStringEncodingASCII);
    const KSString sharing(object);
    const KSString copy(sharing), set = KSString().set(sharing);
    CFStringAppendCString(object, " two", kCFStringEncodingASCII);
    EXPECT_EQ(textOf(sharing), "one two");
    EXPECT_EQ(textOf(copy), "one");
    EXPECT_EQ(textOf(set), "one");
    KSString edited(object);
    edited.append(" three");
    EXPECT_EQ(textOf(sharing), "one two");
    CFRelease(object);
}

TEST(KSString, AppendingAloneKeepsTheObjectAndItsBufferGrowsSeldom) {
    KSString text("");
    int moves = 0;
    const unsigned short* units = text.u_str();
    for (int i = 0; i < 100'000; ++i) {
        text.append("x");
        if (text.u_str() != units) ++moves;
        units = text.u_str();
    }
    EXPECT_EQ(text.size(), 100'000u);
    EXPECT_LT(moves, 64);
}

TEST(KSString, EveryOperationTakesTheStringItself) {
    struct Row {
        const char* name;
        void (*edit)(KSString&);
        const char* result;
    };
    for (const Row& row : std::to_array<Row>({
             {"set", [](KSString& s) { s.set(s); }, "abc"},
             {"set platform string", [](KSString& s) { s.set(s.cf_str()); }, "abc"},
             {"set units", [](KSString& s) { s.set(s.u_str() + 1, 2); }, "bc"},
             {"assign", [](KSString& s) { s = *&s; }, "abc"},
             {"move", [](KSString& s) { s = std::move(*&s); }, "abc"},
             {"append", [](KSString& s) { s.append(s).append(s); }, "abcabcabcabc"},
             {"insert", [](KSString& s) { s.insert(1, s); }, "aabcbc"},
             {"replace", [](KSString& s) { s.replace(1, 1, s); }, "aabcc"},
             {"replace all", [](KSString& s) { s.replace(0, 3, s); }, "abc"},
         })) {
        KSString alone("abc");
        row.edit(alone);
        EXPECT_EQ(textOf(alone), row.result) << row.name;
        KSString shared("abc");
        const KSString copy(shared);
        row.edit(shared);
        EXPECT_EQ(textOf(shared), row.result) << row.name;
        EXPECT_EQ(textOf(copy), "abc") << row.name;
    }
    const KSString text("abc");
    EXPECT_EQ(text.find(text), 0);
    EXPECT_EQ(text.compare(text), 0);
}

TEST(KSString, AMovedStringTakesTheObjectAlong) {
    KSString from("text");
    const CFStringRef object = from.cf_str();
    KSString to(std::move(from));
    EXPECT_EQ(to.cf_str(), object);
    KSString assigned("old");
    assigned = std::move(to);
    EXPECT_EQ(assigned.cf_str(), object);
    EXPECT_EQ(CFGetRetainCount(object), 1);
}

TEST(KSString, ThreadsMayEditCopiesOfOneText) {
    const KSString text("start");
    std::vector<std::thread> threads;
    std::vector<KSString> results(4);
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([copy = text, &result = results[static_cast<std::size_t>(i)], i]() mutable {
            for (int round = 0; round < 1000; ++round) {
                KSString edited(copy);
                edited.append("-").insert(0, "<");
                result = edited;
            }
            result.append(i % 2 ? "odd" : "even");
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(textOf(results[0]), "<start-even");
    EXPECT_EQ(textOf(results[3]), "<start-odd");
    EXPECT_EQ(textOf(text), "start");
}

// ----- ranges and search

TEST(KSString, RangesAreCutToTheText) {
    const KSString text("abcdefg");
    EXPECT_EQ(textOf(text.substr(2, 3)), "cde");
    EXPECT_EQ(textOf(text.substr(5, 9)), "fg");
    EXPECT_EQ(textOf(text.substr(9, 1)), "");
    EXPECT_EQ(textOf(text.substr(~0ul, ~0u)), "");
    EXPECT_EQ(textOf(text.substrTo(5)), "abcd");  // one fewer, deliberately
    EXPECT_EQ(textOf(text.substrTo(1)), "");
    EXPECT_EQ(textOf(text.substrTo(100)), "abcdefg");
    EXPECT_EQ(textOf(text.substrFrom(5)), "fg");
    EXPECT_EQ(textOf(text.substrFrom(7)), "");
    EXPECT_EQ(textOf(text.substrFrom(8)), "");
    EXPECT_EQ(textOf(KSString(text).erase(5, 100)), "abcde");
    EXPECT_EQ(textOf(KSString(text).erase(~0ul, 5)), "abcdefg");
    EXPECT_EQ(textOf(KSString(text).insert(99, "!")), "abcdefg!");
    EXPECT_EQ(textOf(KSString(text).replace(6, 99, "!")), "abcdef!");
    EXPECT_EQ(textOf(KSString(text).replace(99, 99, "!")), "abcdefg!");
    EXPECT_EQ(text.compare(5, 99, "fg"), 0);
    EXPECT_EQ(text.compare(99, 99, ""), 0);
}

TEST(KSString, FindsTheFirstOccurrenceUnitByUnit) {
    const KSString text("one two one");
    EXPECT_EQ(text.find("one"), 0);
    EXPECT_EQ(text.find("two"), 4);
    EXPECT_EQ(text.find("One"), -1);
    EXPECT_EQ(text.find("one two one more"), -1);
    EXPECT_EQ(text.find(""), -1);
    EXPECT_EQ(text.find(KSString()), -1);
    EXPECT_EQ(KSString("").find("a"), -1);
    // A composed letter is not its parts: é, and e with an acute accent of its own.
    EXPECT_EQ(unitsString({0xE9}).find(unitsString({'e', 0x301})), -1);
}

// ----- formatting and codes

TEST(KSString, FormattingStopsAt2047Bytes) {
    const std::string letters(5000, 'x');
    EXPECT_EQ(macRomanOf(KSString().sprintf("%s", letters.c_str())), letters.substr(0, 2047));
    EXPECT_EQ(macRomanOf(KSString().sprintf("%d-%.2f-%s", 7, 0.5, "\x8A")), "7-0.50-\x8A");
    EXPECT_EQ(textOf(KSString("old").sprintf("%s", "")), "");
}

TEST(KSString, FourCharacterCodes) {
    struct Row {
        const char* name;
        unsigned long code;
        const char* macRoman;
        unsigned long readBack;
    };
    for (const Row& row : std::to_array<Row>({
             {"whole", 0x41424344, "'ABCD'", 0x41424344},
             {"zero", 0, "''", 0},
             {"trailing zeros dropped", 0x41420000, "'AB'", 0},
             {"a leading zero ends the text", 0x00414243, "'", 0},
             {"a zero within ends the text", 0x41004200, "'A", 0},
             {"high bytes are not signed", 0x80FF8A41, "'\x80\xFF\x8A\x41'", 0x80FF8A41},
             {"only the low 32 bits count", 0x1234567841424344, "'ABCD'", 0x41424344},
             {"nothing in the low 32 bits", 0x4142434400000000, "''", 0},
         })) {
        const KSString code = KSString("before").setOSType(row.code);
        EXPECT_EQ(macRomanOf(code), row.macRoman) << row.name;
        EXPECT_EQ(code.get_OSType(), row.readBack) << row.name;
    }
    for (const char* text : {"", "'", "'AB'", "'ABCDE'", "ABCDEF", "'ABCDE", "'ABCD' "})
        EXPECT_EQ(KSString(text).get_OSType(), 0u) << text;
    EXPECT_EQ(unitsString({'\'', 0x65E5, 'B', 'C', 'D', '\''}).get_OSType(), 0u);
}

// ----- order

TEST(KSString, NullComesFirst) {
    const KSString null, empty(""), text("a");
    EXPECT_EQ(null.compare(null), 0);
    EXPECT_EQ(null.compare(empty), -1);
    EXPECT_EQ(empty.compare(null), 1);
    EXPECT_EQ(null.caseInsensitiveCompare(empty), -1);
    EXPECT_EQ(text.caseInsensitiveCompare(null), 1);
    EXPECT_EQ(null.compare(0, 0, empty), -1);
    EXPECT_EQ(text.compare(0, 0, null), 1);
    EXPECT_EQ(null.caseInsensitiveCompare(0, 0, null), 0);
    EXPECT_EQ(text.compare(0, 0, empty), 0);
}

TEST(KSString, TheCLocaleOrdersByUnit) {
    struct Row {
        const char* name;
        std::vector<unsigned short> left, right;
        int exact, caseless;
    };
    for (const Row& row : std::to_array<Row>({
             {"equal", {'a', 'b'}, {'a', 'b'}, 0, 0},
             {"prefix", {'a'}, {'a', 0}, -1, -1},
             {"capital letters first", {'B'}, {'a'}, -1, 1},
             {"case", {'a', 'B', 'c', 'D', 'e', 'F'}, {'A', 'b', 'C', 'd', 'E', 'g'}, 1, -1},
             {"case beyond ASCII", {0xC4, 0x3A9, 0x414}, {0xE4, 0x3C9, 0x434}, -1, 0},
             {"case beyond 16 bits", {0xD801, 0xDC00}, {0xD801, 0xDC28}, -1, 0},
             {"pairs by unit, not by character", {0xD83C, 0xDFAC}, {0xFFFD}, -1, -1},
             {"after many", {1, 2, 3, 4, 5, 6, 7, 8, 9}, {1, 2, 3, 4, 5, 6, 7, 9, 8}, -1, -1},
         })) {
        const KSString left = unitsString(row.left), right = unitsString(row.right);
        EXPECT_EQ(signOf(left.compare(right)), row.exact) << row.name;
        EXPECT_EQ(signOf(right.compare(left)), -row.exact) << row.name;
        EXPECT_EQ(signOf(left.caseInsensitiveCompare(right)), row.caseless) << row.name;
        EXPECT_EQ(signOf(right.caseInsensitiveCompare(left)), -row.caseless) << row.name;
    }
    const KSString text("xxABCxx");
    EXPECT_NE(text.compare(2, 3, "abc"), 0);
    EXPECT_EQ(text.caseInsensitiveCompare(2, 3, "abc"), 0);
}

// ----- against std::u16string

TEST(KSString, RandomEditsGiveWhatAPlainStringGives) {
    std::mt19937 random(1701);
    KSString string("");
    std::u16string expected;
    std::vector<KSString> copies;  // every other edit meets a shared object
    for (int i = 0; i < 20'000; ++i) {
        const unsigned long position = random() % (expected.size() + 3);
        const unsigned count = random() % 8;
        const std::size_t at = std::min<std::size_t>(position, expected.size());
        const std::u16string previous = expected;
        const std::u16string piece(random() % 6, static_cast<char16_t>(random() % 0x3000 + 1));
        const KSString other = unitsString({piece.begin(), piece.end()});
        switch (random() % 6) {
            case 0:
                string.append(other), expected += piece;
                break;
            case 1:
                string.insert(position, other), expected.insert(at, piece);
                break;
            case 2:
                string.erase(position, count), expected.erase(at, count);
                break;
            case 3:
                string.replace(position, count, other), expected.replace(at, count, piece);
                break;
            case 4:
                copies.assign(1, string);
                break;
            case 5:
                copies.clear();
                break;
        }
        if (expected.size() > 300) string.clear(), string.set(""), expected.clear();
        ASSERT_EQ(std::u16string(string.u_str(), string.u_str() + string.size()), expected) << i;
        ASSERT_EQ(string.compare(unitsString({previous.begin(), previous.end()})),
                  signOf(expected.compare(previous)))
            << i;
        const std::size_t found = piece.empty() ? std::u16string::npos : expected.find(piece);
        ASSERT_EQ(string.find(other), static_cast<long>(found)) << i;
    }
}

// ----- stops and neighbours

TEST(KSStringDeathTest, UnfinishedOperationsStop) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const unsigned short units[] = {'a', 0};
    const KSString other("b");
    const auto stop = [](int line) {
        return "File KSString, line " + std::to_string(line) + " should not have been reached:\n\t";
    };
    // The line goes to standard output; a death test looks at standard error.
    const auto toErrors = [] { return dup2(2, 1); };
    EXPECT_DEATH((toErrors(), KSString("a").append(units)), stop(648));
    EXPECT_DEATH((toErrors(), KSString("a").append(other, 0, 1)), stop(580));
    EXPECT_DEATH((toErrors(), KSString("a").push_back('b')), stop(658));
    EXPECT_DEATH((toErrors(), KSString("a").compare(0, 1, other, 0)), stop(470));
    EXPECT_DEATH((toErrors(), KSString("a").caseInsensitiveCompare(0, 1, other, 0)), stop(516));
}

TEST(KSUnicode, FindsAUnitBeforeTheZero) {
    unsigned short text[] = {'a', 'b', 'a', 0, 'c'};
    EXPECT_EQ(KSUnicode::strchr(text, 'a'), text);
    EXPECT_EQ(KSUnicode::strchr(text, 'b'), text + 1);
    EXPECT_EQ(KSUnicode::strchr(text, 'c'), nullptr);
    EXPECT_EQ(KSUnicode::strchr(text, 0), nullptr);
    EXPECT_EQ(KSUnicode::strchr(text + 3, 0), text + 3);
}

TEST(KSString, OrderingFollowsTheProcessLocale) {
    const KSString umlaut("x\x8a"), capital("x\x80"), z("z"), xz("xz");  // a and A with diaeresis
    const std::string before = std::setlocale(LC_COLLATE, nullptr);
    ASSERT_NE(std::setlocale(LC_COLLATE, "C"), nullptr);
    EXPECT_GT(umlaut.compare(xz), 0);
    ASSERT_NE(std::setlocale(LC_COLLATE, "de_DE.UTF-8"), nullptr) << "the locale is missing";
    EXPECT_LT(umlaut.compare(xz), 0);
    EXPECT_LT(umlaut.compare(1, 1, z), 0);
    EXPECT_LT(capital.caseInsensitiveCompare(xz), 0);
    EXPECT_LT(capital.caseInsensitiveCompare(1, 1, z), 0);
    EXPECT_EQ(capital.caseInsensitiveCompare(umlaut), 0);
    EXPECT_NE(capital.compare(umlaut), 0);
    std::setlocale(LC_COLLATE, before.c_str());
}

TEST(KSString, DebugShowWritesTheTextToStandardError) {
    testing::internal::CaptureStderr();
    KSString("shown").debugShow();
    KSString().debugShow();
    EXPECT_EQ(testing::internal::GetCapturedStderr().substr(0, 6), "shown\n");
}
