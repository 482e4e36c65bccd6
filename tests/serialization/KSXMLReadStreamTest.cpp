#include "ReadProbe.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string_view>

using namespace std::string_literals;

namespace {

using Log = std::vector<std::string>;

constexpr KSScope scope[] = {{"root", 1, 0}, {"a", 2, 0}, {"b", 3, 0},    {"x", 2, 20},
                             {"y", 2, 21},   {"c", 4, 0}, {nullptr, 0, 0}};
constexpr KSScope innerScope[] = {{"c", 40, 0}, {"d", 41, 0}, {nullptr, 0, 0}};
constexpr KSScope anyScope[] = {{"*", 7, 0}, {nullptr, 0, 0}};

class MemoryStream : public KSXMLReadStream {
public:
    explicit MemoryStream(const std::string& document) : MemoryStream(makeData(document)) {}

private:
    explicit MemoryStream(CFDataRef data) : KSXMLReadStream(data, KSURL("scene.xml", false)) {
        CFRelease(data);
    }
    static CFDataRef makeData(const std::string& document) {
        return CFDataCreate(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(document.data()),
                            static_cast<CFIndex>(document.size()));
    }
};

// Parses with one probe on scope; what standard error got goes to errors where it is not null.
bool parse(const std::string& document, ReadProbe& probe, std::string* errors = nullptr) {
    MemoryStream stream(document);
    stream.pushHandler(&probe);
    testing::internal::CaptureStderr();
    const bool result = stream.parse();
    const std::string text = testing::internal::GetCapturedStderr();
    if (errors) *errors = text;
    EXPECT_EQ(stream.currentHandler(), nullptr) << "every handler is popped";
    return result;
}

// The value that <a> has at its end, around this content; a child hands it over before.
std::string valueOf(const std::string& content) {
    Log log;
    ReadProbe probe("h", {scope}, log), atEnd("end", {scope}, log);
    std::string value = "(not read)";
    probe.onElement = [&](KSSerializerReadStream& in, KSStreamElement& e) {
        if (e.getToken() == 2) in.pushHandler(&atEnd);
    };
    atEnd.onEnd = [&](KSSerializerReadStream& in) { value = utf8(in.currentElement()->getValue()); };
    EXPECT_TRUE(parse("<root><a>" + content + "</a></root>", probe)) << content;
    return value;
}

struct TextRow {
    const char* name;
    std::string content;
    std::string value;
};
const std::vector<TextRow> textRows = {
    {"Plain", "text", "text"},
    {"Empty", "", "(null)"},
    {"WhiteSpaceStays", " \t\r\n ", " \t\r\n "},
    {"NoLineFeedAfterReference", "A&amp;B", "A&B"},
    {"ReferencesInARow", "&lt;&gt;&quot;&apos;&space;|", "<>\"' |"},
    {"ReferenceFirst", "&amp;B", "&B"},
    {"ReferenceAfterText", "A&amp;", "A&"},
    {"CommentParts", "one<!-- x -->two", "one\ntwo"},
    {"InstructionParts", "one<?x y?>two", "one\ntwo"},
    {"CommentKeepsAfterEntity", "A&amp;<!-- x -->B", "A&B"},
    {"TextClearsAfterEntity", "A&amp;B<!-- x -->C", "A&B\nC"},
    {"SkippedElementParts", "one<unknown>in<a>side</a></unknown>two", "one\ntwo"},
    {"SkippedElementKeepsAfterEntity", "A&amp;<unknown/>B", "A&B"},
    {"ReferenceAloneGetsNoLineFeed", "one<!-- x -->&amp;", "one&"},
    {"KnownElementClearsAfterEntity", "1&amp;<b>2&amp;</b>3", "1&\n3"},
    {"SectionIsDropped", "one<![CDATA[two]]>", "one"},
    {"SectionParts", "one<![CDATA[two]]>three", "one\nthree"},
    {"UnescapedOnce", "&amp;lt;", "&lt;"},
    {"Decimal", "&#65;", "A"},
    {"Hexadecimal", "&#x41;", "A"},
    {"LowEightBits", "&#x20AC;", "\xC2\xAC"},
    {"LiteralKeepsItsCode", "\xE2\x82\xAC", "\xE2\x82\xAC"},
    {"LowEightBitsBeyondTheBasicPlane", "&#x1F642;&#128578;", "BB"},
    {"AboveAscii", "&#233;", "\xC3\xA9"},
    {"UnknownGivesNothing", "A&nobody;B", "AB"},
    {"UnknownCounts", "one<!-- x -->&nobody;two", "onetwo"},
    {"LaterBlankPartIsAppended", "a<!-- x --> ", "a\n "},
};
class KSXMLReadText : public testing::TestWithParam<TextRow> {};
TEST_P(KSXMLReadText, IsTheElementsValue) { EXPECT_EQ(valueOf(GetParam().content), GetParam().value); }
INSTANTIATE_TEST_SUITE_P(Contents, KSXMLReadText, testing::ValuesIn(textRows),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(KSXMLReadStream, AnElementIsHandedOverOnceAtItsFirstChildOrItsEnd) {
    Log log;
    ReadProbe probe("h", {scope}, log);
    ASSERT_TRUE(parse("<root>1<a>2<unknown><b>3</b></unknown></a><b>4</b><c/></root>", probe));
    EXPECT_EQ(log, (Log{"h begin", "h(1=1)", "h(2=2)", "h(3=4)", "h(4=(null))", "h end"}));
}

TEST(KSXMLReadStream, ASkippedChildHandsItsParentOver) {
    Log log;
    ReadProbe probe("h", {scope}, log);
    ASSERT_TRUE(parse("<root><a>early<unknown/>late</a></root>", probe));
    EXPECT_EQ(log[2], "h(2=early)");
}

TEST(KSXMLReadStream, ANestedHandlerReadsWhatIsInsideItsElement) {
    Log log;
    ReadProbe outer("outer", {scope}, log), inner("inner", {innerScope}, log);
    outer.onElement = [&](KSSerializerReadStream& in, KSStreamElement& e) {
        if (e.getToken() == 2) in.pushHandler(&inner);
        if (e.getToken() == 3) in.ignoreElement();
    };
    ASSERT_TRUE(parse("<root><a><c/><b/></a><c/><b><c/></b><a/></root>", outer));
    EXPECT_EQ(log, (Log{"outer begin", "outer(1=(null))", "outer(2=(null))", "inner begin",
                        "inner(40=(null))", "inner end", "outer(4=(null))", "outer(3=(null))",
                        "outer(2=(null))", "inner begin", "inner end", "outer end"}));
}

TEST(KSXMLReadStream, TwoHandlersPushedForOneElementBothEndWithIt) {
    Log log;
    ReadProbe outer("outer", {scope}, log), first("first", {scope}, log), second("second", {innerScope}, log);
    outer.onElement = [&](KSSerializerReadStream& in, KSStreamElement& e) {
        if (e.getToken() != 2) return;
        in.pushHandler(&first);
        in.pushHandler(&second);
    };
    ASSERT_TRUE(parse("<root><a><d/></a><b/></root>", outer));
    EXPECT_EQ(log, (Log{"outer begin", "outer(1=(null))", "outer(2=(null))", "first begin", "second begin",
                        "second(41=(null))", "second end", "first end", "outer(3=(null))", "outer end"}));
}

TEST(KSXMLReadStream, ARootThatNobodyClaimsIsReadAsNothing) {
    Log log;
    ReadProbe probe("h", {innerScope}, log);
    EXPECT_TRUE(parse("<root><c/><d/></root>", probe));
    EXPECT_EQ(log, (Log{"h begin", "h end"}));
    ReadProbe any("any", {anyScope}, log);
    log.clear();
    EXPECT_TRUE(parse("<root><c/></root>", any));
    EXPECT_EQ(log, (Log{"any begin", "any(7=(null))", "any(7=(null))", "any end"}));
    std::string errors;
    EXPECT_FALSE(parse("<root><c></d></root>", probe, &errors)) << "what is skipped must be well-formed";
}

TEST(KSXMLReadStream, TheResultOfParseElementIsIgnored) {
    Log log;
    ReadProbe probe("h", {scope}, log);
    probe.result = false;
    EXPECT_TRUE(parse("<root><a/><b/></root>", probe));
    EXPECT_EQ(log.size(), 5u);
}

TEST(KSXMLReadStream, AttributesKeepWholeCodesAndWhiteSpace) {
    Log log, values;
    ReadProbe probe("h", {scope}, log);
    probe.onElement = [&](KSSerializerReadStream& in, KSStreamElement& e) {
        KSString value;
        if (in.getAttributeAsString(e, 20, &value)) values.push_back(utf8(value));
        if (in.getAttributeAsString(e, 21, &value)) values.push_back(utf8(value));
    };
    ASSERT_TRUE(
        parse("<root x='0'><a x='&#x20AC;&#8364;&amp;lt;' y=\"a\n\tb\"/><a y='&nobody;'/><a z='1'/></root>",
              probe));
    EXPECT_EQ(values, (Log{"\xE2\x82\xAC\xE2\x82\xAC&lt;", "a\n\tb", "&nobody;"}));
}

TEST(KSXMLReadStream, NumbersInAttributesAndValuesWithReferences) {
    Log log;
    ReadProbe probe("h", {scope}, log);
    int attribute = 0, first = 0, second = 0;
    probe.onElement = [&](KSSerializerReadStream&, KSStreamElement& e) {
        if (e.getToken() != 2) return;
        e.getAttributeAsInt32(20, &attribute);
        e.getAsInt32(&first);
        e.getAsInt32(&second);
    };
    ASSERT_TRUE(parse("<root><a x='&#49;2'>3&#52; 5<!-- x -->6</a></root>", probe));
    EXPECT_EQ((std::vector<int>{attribute, first, second}), (std::vector<int>{12, 34, 5}));
    ASSERT_TRUE(parse("<root><a>7&#x100;8</a></root>", probe));
    EXPECT_EQ(first, 7) << "a zero in the text ends the numbers";
    KSString text;
    probe.onElement = [&](KSSerializerReadStream& in, KSStreamElement& e) { in.getAsString(e, &text); };
    ASSERT_TRUE(parse("<root><a>7&#x100;8</a></root>", probe));
    const unsigned short units[] = {'7', 0, '8'};
    EXPECT_EQ(text.compare(KSString().set(units, 3)), 0) << "the text goes on behind it";
}

TEST(KSXMLReadStream, LongAndForeignNamesBelongToNoScope) {
    const auto claims = [](const std::string& name, const std::string& entryName) {
        const KSScope entries[] = {{"root", 1, 0}, {entryName.c_str(), 2, 0}, {nullptr, 0, 0}};
        Log log;
        ReadProbe probe("h", {entries}, log);
        EXPECT_TRUE(parse("<root><" + name + "/></root>", probe));
        return log.size() == 4;
    };
    const std::string fits(511, 'n'), tooLong(512, 'n'), foreign = "\xC3\xA9t\xC3\xA9";
    EXPECT_TRUE(claims(fits, fits));
    EXPECT_FALSE(claims(tooLong, tooLong));
    EXPECT_FALSE(claims(tooLong, "*"));
    EXPECT_FALSE(claims(tooLong, fits));
    EXPECT_FALSE(claims(foreign, foreign));
    EXPECT_FALSE(claims(foreign, "*"));
    EXPECT_TRUE(claims("plain", "*"));

    const auto hasAttribute = [](const std::string& name) {
        const KSScope entries[] = {{"root", 1, 0}, {name.c_str(), 1, 5}, {nullptr, 0, 0}};
        Log log;
        ReadProbe probe("h", {entries}, log);
        bool found = false;
        probe.onElement = [&](KSSerializerReadStream&, KSStreamElement& e) {
            found = e.getAttributeAsBool(5, nullptr);
        };
        EXPECT_TRUE(parse("<root " + name + "='1'/>", probe));
        return found;
    };
    EXPECT_TRUE(hasAttribute(std::string(127, 'n')));
    EXPECT_FALSE(hasAttribute(std::string(128, 'n')));
    EXPECT_FALSE(hasAttribute(foreign));
}

TEST(KSXMLReadStream, StopSucceedsAndAbortFails) {
    for (const bool stop : {true, false}) {
        Log log;
        ReadProbe outer("outer", {scope}, log), inner("inner", {scope}, log);
        outer.onElement = [&](KSSerializerReadStream& in, KSStreamElement& e) {
            if (e.getToken() == 2) in.pushHandler(&inner);
        };
        inner.onElement = [&](KSSerializerReadStream& in, KSStreamElement&) {
            stop ? in.stopParse() : in.abortParse();
        };
        std::string errors;
        EXPECT_EQ(parse("<root><a>\n<b/><c/></a></root", outer, &errors), stop);
        EXPECT_EQ(log, (Log{"outer begin", "outer(1=(null))", "outer(2=\n)", "inner begin", "inner(3=(null))",
                            "inner end", "outer end"}));
        EXPECT_EQ(errors, stop ? ""
                               : "Parse error (10) Parse Aborted on line 2, character 1\n" +
                                     errors.substr(std::min(errors.size(), errors.find('\n') + 1)));
    }
}

TEST(KSXMLReadStream, AFaultIsReportedOnceWithItsPlaceAndTheDocument) {
    Log log;
    ReadProbe probe("h", {scope}, log);
    std::string errors;
    EXPECT_FALSE(parse("<root>\n  <a/>\n  <b></c>\n</root>", probe, &errors));
    EXPECT_EQ(log, (Log{"h begin", "h(1=\n  )", "h(2=(null))", "h end"}))
        << "what came before is read, and parseEnd comes";
    const std::string expected =
        "Parse error (8) \"</c>\" where \"</b>\" is expected on line 3, character 6\n";
    EXPECT_EQ(errors.substr(0, expected.size()), expected);
    EXPECT_NE(errors.find("scene.xml"), std::string::npos) << errors;
}

TEST(KSXMLReadStream, TellsTheLineInsideAHandler) {
    MemoryStream stream("<root>\n<a/>\n\n <b/></root>");
    Log log;
    ReadProbe probe("h", {scope}, log);
    std::vector<long> lines;
    probe.onElement = [&](KSSerializerReadStream&, KSStreamElement&) {
        lines.push_back(stream.getLineNumber());
    };
    stream.pushHandler(&probe);
    ASSERT_TRUE(stream.parse());
    EXPECT_EQ(lines, (std::vector<long>{2, 2, 4}));
    EXPECT_TRUE(stream.getErrorDescription().empty());
}

struct EncodingRow {
    const char* name;
    std::string document;
    bool result;
    std::string value;
};
std::string wide(const std::u16string& text, bool bigEndian) {
    std::string bytes;
    for (const char16_t unit : text) {
        const char high = static_cast<char>(unit >> 8), low = static_cast<char>(unit & 0xFF);
        bytes += bigEndian ? std::string{high, low} : std::string{low, high};
    }
    return bytes;
}
std::string wider(const std::u32string& text, bool bigEndian) {
    std::string bytes;
    for (const char32_t c : text)
        for (int i = 0; i < 4; ++i) bytes += static_cast<char>(c >> 8 * (bigEndian ? 3 - i : i) & 0xFF);
    return bytes;
}
const std::string smile = "\xE6\x97\xA5\xF0\x9F\x98\x80";
const std::u16string wideDocument = u"<root><a>\u65E5\U0001F600</a></root>";
const std::vector<EncodingRow> encodingRows = {
    {"Utf8Mark", "\xEF\xBB\xBF<root><a>" + smile + "</a></root>", true, smile},
    {"Utf16LittleMark", wide(u"\uFEFF" + wideDocument, false), true, smile},
    {"Utf16BigMark", wide(u"\uFEFF" + wideDocument, true), true, smile},
    {"Utf16LittleBare", wide(wideDocument, false), true, smile},
    {"Utf16BigDeclared", wide(u"<?xml version='1.0' encoding='UTF-16'?>" + wideDocument, true), true, smile},
    {"Utf32Little", wider(U"\uFEFF<root><a>\u65E5\U0001F600</a></root>", false), true, smile},
    {"Utf32Big", wider(U"<root><a>\u65E5\U0001F600</a></root>", true), true, smile},
    {"MarkOverDeclaration",
     "\xEF\xBB\xBF<?xml version='1.0' encoding='ISO-8859-1'?><root><a>" + smile + "</a></root>", true, smile},
    {"Latin1", "<?xml version='1.0' encoding='ISO-8859-1'?><root><a>\xE9</a></root>", true, "\xC3\xA9"},
    {"ShiftJis", "<?xml version=\"1.0\" encoding = \"Shift_JIS\"?><root><a>\x93\xFA\x96\x7B</a></root>", true,
     "\xE6\x97\xA5\xE6\x9C\xAC"},
    {"MacRoman", "<?xml version='1.0' encoding='macintosh'?><root><a>\x8E</a></root>", true, "\xC3\xA9"},
    {"Ascii", "<?xml version='1.0' encoding='US-ASCII'?><root><a>x</a></root>", true, "x"},
    {"AsciiOnly", "<?xml version='1.0' encoding='US-ASCII'?><root><a>\xE9</a></root>", false, ""},
    {"LowerCaseUtf8", "<?xml version='1.0' encoding='utf-8'?><root><a>" + smile + "</a></root>", true, smile},
    {"UnknownEncoding", "<?xml version='1.0' encoding='no-such'?><root><a>x</a></root>", false, ""},
    {"DeclaredButNotWide", "<?xml version='1.0' encoding='UTF-16'?><root><a>x</a></root>", false, ""},
    {"Utf16HalfUnit", wide(u"\uFEFF" + wideDocument, false) + "x", false, smile},
    {"Utf16LoneSurrogate", wide(u"\uFEFF<root><a>x</a>\xD800</root>"s, true), false, "x"},
    {"BadUtf8", "<root><a>x</a>\xFF</root>", false, "x"},
    {"Nul", "<root><a>x</a>\0</root>"s, false, "x"},
};
class KSXMLReadEncoding : public testing::TestWithParam<EncodingRow> {};
TEST_P(KSXMLReadEncoding, IsConvertedOrRefused) {
    Log log;
    ReadProbe probe("h", {scope}, log);
    std::string value, errors;
    probe.onElement = [&](KSSerializerReadStream&, KSStreamElement& e) {
        if (e.getToken() == 2) value = utf8(e.getValue());
    };
    EXPECT_EQ(parse(GetParam().document, probe, &errors), GetParam().result);
    EXPECT_EQ(value, GetParam().value) << "what stands before the fault is read";
    EXPECT_EQ(errors.empty(), GetParam().result) << errors;
}
INSTANTIATE_TEST_SUITE_P(Documents, KSXMLReadEncoding, testing::ValuesIn(encodingRows),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(KSXMLReadStream, ReadsAFileAndFailsOnOneThatIsNotThere) {
    const auto path =
        std::filesystem::temp_directory_path() / ("kestrel-read-" + std::to_string(getpid()) + ".xml");
    std::ofstream(path) << "<root><a>in a file</a></root>";
    const KSURL url(path.c_str(), false);
    Log log;
    ReadProbe probe("h", {scope}, log);
    {
        KSXMLReadStream stream(url);
        stream.pushHandler(&probe);
        EXPECT_EQ(utf8(stream.getURL().getAsFileSystemString()), path.string());
        std::filesystem::remove(path);
        EXPECT_TRUE(stream.parse()) << "the whole file was read at construction";
        EXPECT_TRUE(stream.parse()) << "a second time there is nothing to read, and no fault";
    }
    EXPECT_EQ(log, (Log{"h begin", "h(1=(null))", "h(2=in a file)", "h end"}));
    log.clear();
    KSXMLReadStream missing(url);
    missing.pushHandler(&probe);
    missing.stopParse();
    EXPECT_FALSE(missing.parse());
    EXPECT_EQ(missing.getLineNumber(), 0);
    EXPECT_EQ(log, (Log{"h begin", "h end"}));
}

TEST(KSXMLReadStream, SurvivesDepth) {
    constexpr int depth = 100000;
    std::string document;
    for (int i = 0; i < depth; ++i) document += "<c>";
    Log log, unused;
    ReadProbe probe("h", {scope}, log);
    int handled = 0;
    ReadProbe* again = &probe;
    probe.onElement = [&](KSSerializerReadStream& in, KSStreamElement&) {
        if (++handled % 2) in.pushHandler(again);
    };
    std::string errors;
    EXPECT_FALSE(parse(document, probe, &errors));
    EXPECT_EQ(handled, depth - 1);
    handled = 0;
    for (int i = 0; i < depth; ++i) document += "</c>";
    EXPECT_TRUE(parse(document, probe));
    EXPECT_EQ(handled, depth);
}

}  // namespace
