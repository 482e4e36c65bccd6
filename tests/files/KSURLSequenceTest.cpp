#include <kestrel/files/KSURL.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace {

std::string utf8(const KSString& string) {
    const std::unique_ptr<char, decltype(&std::free)> text(string.createUTF8Str(), &std::free);
    return text ? text.get() : "(null)";
}

std::string urlOf(const KSURL& url) { return utf8(url.getAsURLString()); }

KSURL urlText(const char* text) { return KSURL(KSString(text), false); }

}  // namespace

struct RangeRow {
    const char* name;
    const char* path;
    bool isSequence;
    int start, end, length;
};
void PrintTo(const RangeRow& row, std::ostream* out) { *out << row.path; }

class KSURLRanges : public testing::TestWithParam<RangeRow> {};

TEST_P(KSURLRanges, AreReadFromTheEndOfTheLastSegment) {
    const RangeRow& row = GetParam();
    const KSURL url(row.path, false);
    EXPECT_EQ(url.isSequence(), row.isSequence);
    EXPECT_EQ(url.getSequenceStart(), row.start);
    EXPECT_EQ(url.getSequenceEnd(), row.end);
    EXPECT_EQ(url.getSequenceLength(), row.length);

    // A caller's buffer gives the same, also when nothing stands behind it.
    std::vector<char> text(row.path, row.path + std::char_traits<char>::length(row.path));
    const auto length = static_cast<unsigned int>(text.size());
    EXPECT_EQ(KSURL().getSequenceStart(text.data(), length), row.start);
    EXPECT_EQ(KSURL().getSequenceEnd(text.data(), length), row.end);
}

INSTANTIATE_TEST_SUITE_P(
    Paths, KSURLRanges,
    testing::Values(RangeRow{"Whole", "/s/shot.[####].tif:1:250", true, 1, 250, 250},
                    RangeRow{"Unpadded", "/s/shot.[@].tif:8:12", true, 8, 12, 5},
                    RangeRow{"NoRange", "/s/shot.[#].tif", true, -1, -1, 1},
                    RangeRow{"MixedPlaceholder", "/s/[#@#]", true, -1, -1, 1},
                    RangeRow{"NoStart", "/s/shot.[##].tif::250", true, -1, 250, 252},
                    RangeRow{"NoEnd", "/s/shot.[##].tif:7:", true, 7, 7, 1},
                    RangeRow{"OnlyOneNumber", "/s/shot.[##].tif:7", true, -1, 7, 9},
                    RangeRow{"NegativeStart", "/s/[##]:-5:10", true, -5, 10, 16},
                    RangeRow{"Backwards", "/s/[##]:10:5", true, 10, 5, -4},
                    RangeRow{"NumberThenLetters", "/s/[##]:3x:4y", true, 3, 4, 2},
                    RangeRow{"BeyondAnInteger", "/s/[##]:0:99999999999999999999", true, 0, INT_MAX, INT_MAX},
                    RangeRow{"LongerThanAnInteger", "/s/[##]:-9999999999:9999999999", true, INT_MIN, INT_MAX,
                             INT_MAX},
                    RangeRow{"RangeOfTheFolder", "/s:1:2/[##]", true, -1, -1, 1},
                    RangeRow{"PlaceholderOfTheFolder", "/[##]/shot.tif:1:2", false, 1, 2, 2},
                    RangeRow{"ForeignCharacter", "/s/shot.[##a].tif", false, -1, -1, 1},
                    RangeRow{"LastBracketCounts", "/s/[##].[a].tif", false, -1, -1, 1},
                    RangeRow{"EmptyBrackets", "/s/shot[].tif", false, -1, -1, 1},
                    RangeRow{"NoOpeningBracket", "/s/##].tif", false, -1, -1, 1},
                    RangeRow{"AcrossFolders", "/[#/#]", false, -1, -1, 1},
                    RangeRow{"Plain", "/s/shot.tif", false, -1, -1, 1},
                    RangeRow{"Folder", "/s/[##]:1:2/", false, -1, -1, 1}),
    [](const auto& row) { return row.param.name; });

struct MemberRow {
    const char* name;
    const char* path;
    unsigned int index;
    const char* member;  ///< its URL; "(null)" for none
};
void PrintTo(const MemberRow& row, std::ostream* out) { *out << row.path << " #" << row.index; }

class KSURLMembers : public testing::TestWithParam<MemberRow> {};

TEST_P(KSURLMembers, TakeTheirNumberAndLoseTheRange) {
    const MemberRow& row = GetParam();
    EXPECT_EQ(urlOf(KSURL(row.path, false).getURLforIndex(row.index)), row.member);
}

INSTANTIATE_TEST_SUITE_P(
    Paths, KSURLMembers,
    testing::Values(
        MemberRow{"First", "/s/shot.[####].tif:1:250", 0, "file:///s/shot.0001.tif"},
        MemberRow{"Last", "/s/shot.[####].tif:1:250", 249, "file:///s/shot.0250.tif"},
        MemberRow{"BehindTheLast", "/s/shot.[####].tif:1:250", 250, "(null)"},
        MemberRow{"Unpadded", "/s/shot.[@].tif:8:12", 2, "file:///s/shot.10.tif"},
        MemberRow{"AnyAtUnpads", "/s/[##@##]:8:12", 0, "file:///s/8"},
        MemberRow{"WiderThanThePlaceholder", "/s/[##]:99:101", 1, "file:///s/100"},
        MemberRow{"NoRangeNumbersFromZero", "/s/[###]", 7, "file:///s/007"},
        MemberRow{"NoRangeHasNoEnd", "/s/[###]", UINT_MAX, "file:///s/4294967295"},
        MemberRow{"NegativeStartNumbersFromZero", "/s/[##]:-5:10", 3, "file:///s/03"},
        MemberRow{"NegativeStartHasNoEnd", "/s/[##]:-5:10", 90, "file:///s/90"},
        MemberRow{"NegativeEndHasNoEnd", "/s/[##]:4:-1", 90, "file:///s/94"},
        MemberRow{"Backwards", "/s/[##]:10:5", 0, "(null)"},
        MemberRow{"NoStart", "/s/[##].tif::3", 9, "file:///s/09.tif"},
        MemberRow{"NoEnd", "/s/[##].tif:3:", 0, "file:///s/03.tif"},
        MemberRow{"OnlyOneNumber", "/s/[##].tif:3", 1, "file:///s/01.tif"},
        MemberRow{"NoNumbers", "/s/[##].tif::", 1, "file:///s/01.tif"},
        MemberRow{"ALoneColonIsPartOfTheName", "/s/[##].tif:", 1, "file:///s/01.tif:"},
        MemberRow{"DigitsOfTheExtensionStay", "/s/shot.[##].mp4", 5, "file:///s/shot.05.mp4"},
        MemberRow{"DigitsOfTheExtensionStayBeforeARange", "/s/shot.[##].mp4:1:9", 4, "file:///s/shot.05.mp4"},
        MemberRow{"ANumberAtTheEndStays", "/s/shot[##]:1:9", 0, "file:///s/shot01"},
        MemberRow{"OnlyOneRangeGoes", "/s/[#]:1:2:3", 0, "file:///s/2:1"},
        MemberRow{"TheFoldersPlaceholderToo", "/r[##]/shot.[##].tif:3:4", 0, "file:///r03/shot.03.tif"},
        MemberRow{"OtherPlaceholdersStay", "/r[#]/[@]/s.[##].tif", 3, "file:///r%5B%23%5D/%5B@%5D/s.03.tif"},
        MemberRow{"BytesThatAreNoText", "/s/\xFF\xE9 [##].tif:1:2", 0, "file:///s/%FF%E9%2001.tif"},
        MemberRow{"RelativePath", "a:b[##].tif:1:2", 0, "a%3Ab01.tif"},
        MemberRow{"RelativePathIntoFolder", "f:/a:b[##]:1:2", 0, "f%3A/a:b01"},
        MemberRow{"NoSequence", "/s/shot.tif:1:9", 0, "(null)"},
        MemberRow{"Folder", "/s/[##]/", 0, "(null)"}),
    [](const auto& row) { return row.param.name; });

TEST(KSURLSequence, FindsThePlaceholderInEverySpellingOfItsEscapes) {
    for (const char* text : {"file:///s/a.%5B%23%23%5D.tif:1:9", "file:///s/a.%5b%23%23%5d.tif:1:9",
                             "file:///s/%61.[%23%23].tif%3A1:9", "file:///s/a.[##].tif:1:9"}) {
        EXPECT_TRUE(urlText(text).isSequence()) << text;
        EXPECT_EQ(urlOf(urlText(text).getURLforIndex(1)), "file:///s/a.02.tif") << text;
    }
    EXPECT_EQ(urlOf(urlText("file:///s/%5B%40%5D:3:4").getURLforIndex(1)), "file:///s/4");
    EXPECT_EQ(urlOf(urlText("http://localhost/[#/[]/[##].[a].[##@]?[#]").getURLforIndex(4)), "(null)");
    EXPECT_EQ(urlOf(urlText("http://localhost/[]/[##].[##@]?[#]").getURLforIndex(4)),
              "http://localhost/%5B%5D/%5B%23%23%5D.4?[#]");
    EXPECT_EQ(urlOf(urlText("http://localhost/s/a%2fb%c3%A9.[@]:3:4?x=%5b%5d").getURLforIndex(0)),
              "http://localhost/s/a%2Fb%C3%A9.3?x=%5b%5d")
        << "an escaped slash stays escaped, and the query as it was";
}

TEST(KSURLSequence, TakesItsRangeFromTheTwoNumbersOfTheConstructor) {
    const KSURL url("/s/[###]", 11, 13u);
    EXPECT_EQ(url.getSequenceLength(), 3);
    EXPECT_EQ(urlOf(url.getURLforIndex(2)), "file:///s/013");
    EXPECT_EQ(KSURL("/s/[###]", 4, UINT_MAX).getSequenceEnd(), -1);
}

TEST(KSURLSequence, OfAnEmptyURLIsNone) {
    const KSURL empty;
    EXPECT_FALSE(empty.isSequence());
    EXPECT_EQ(empty.getSequenceStart(), -1);
    EXPECT_EQ(empty.getSequenceEnd(), -1);
    EXPECT_TRUE(empty.getURLforIndex(0).empty());
    EXPECT_EQ(empty.getSequenceEnd(nullptr, 5), -1);
}
