// Scene documents, byte for byte, and what misuse leaves behind.
#include <gtest/gtest.h>
#include <kestrel/files/KSURL.h>
#include <kestrel/foundation/KSString.h>
#include <kestrel/serialization/KSException.h>
#include <kestrel/serialization/KSFileWriteStream.h>
#include <kestrel/serialization/KSScope.h>
#include <kestrel/serialization/KSUUID.h>
#include <kestrel/serialization/KSXMLWriteStream.h>
#include <unistd.h>

#include <climits>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Out = KSXMLWriteStream;
using Write = std::function<void(Out&)>;

enum Token : unsigned { scene = 1, layer, odd, version = 10, name, extra };

constexpr KSScope mainScope[] = {{"scene", scene, 0},    {"layer", layer, 0},  {"version", scene, version},
                                 {"name", layer, name},  {"layer2", layer, 0},  // never: the first match wins
                                 {"name2", layer, name}, {nullptr, 0, 0}};
constexpr KSScope otherScope[] = {{"other", scene, 0}, {"title", scene, name}, {nullptr, 0, 0}};

const std::string header =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE zuxmlscene>\n<zuml version=\"2.1\">\n\n";

/// A folder that goes away with the test.
class Folder {
public:
    Folder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "kestrel-xml-XXXXXX").string();
        if (mkdtemp(pattern.data())) m_path = pattern;
    }
    ~Folder() { std::filesystem::remove_all(m_path); }
    std::string file(const char* leaf) const { return m_path + '/' + leaf; }

private:
    std::string m_path;
};

/// What is in the file behind the header.
std::string written(const Write& write) {
    const Folder folder;
    const std::string path = folder.file("scene.xml");
    {
        KSFileWriteStream file(KSURL(path.c_str(), false));
        Out out(file);
        out.pushScope(mainScope);
        write(out);
    }
    std::ifstream file(path, std::ios::binary);
    const std::string all{std::istreambuf_iterator<char>(file), {}};
    EXPECT_EQ(all.substr(0, header.size()), header);
    return all.substr(std::min(header.size(), all.size()));
}

KSString units(std::u16string_view text) {
    const std::vector<unsigned short> copy(text.begin(), text.end());
    return KSString().set(copy.data(), static_cast<unsigned>(copy.size()));
}

struct Row {
    const char* name;
    Write write;
    const char* body;
};

const Row rows[] = {
    {"Nothing", [](Out&) {}, ""},
    {"WholeDocument",
     [](Out& out) {
         out.startElement(scene);
         out.writeAttribute(version, 3);
         out.startElement(layer);
         out.writeAttribute(name, KSString("A&B"));
         out.writeValue(0.5f);
         out.endElement();
         out.startElement(layer);
         out.endElement();
         out.endElement();
         out.close();
     },
     "<scene version=\"3\">\n\t<layer name=\"A&amp;B\">0.5</layer>\n\t<layer/>\n</scene>\n\n</zuml>\n"},
    {"DepthIsTabs",
     [](Out& out) {
         for (int i = 0; i < 4; ++i) out.startElement(layer);
         for (int i = 0; i < 4; ++i) out.endElement();
     },
     "<layer>\n\t<layer>\n\t\t<layer>\n\t\t\t<layer/>\n\t\t</layer>\n\t</layer>\n</layer>\n"},
    {"ChildAfterValue",
     [](Out& out) {
         out.startElement(scene);
         out.startElement(layer);
         out.writeValue(1);
         out.startElement(layer);  // indented by its depth, on the value's line
         out.endElement();
         out.endElement();  // not indented
         out.endElement();
     },
     "<scene>\n\t<layer>1\t\t<layer/>\n</layer>\n</scene>\n"},
    {"SecondValueFollows",
     [](Out& out) {
         out.startElement(scene);
         out.writeValue(1);
         out.writeValue(KSString("x"));
         out.endElement();
     },
     "<scene>1x</scene>\n"},
    {"ValueAfterChild",
     [](Out& out) {
         out.startElement(scene);
         out.startElement(layer);
         out.endElement();
         out.writeValue(5);
         out.endElement();
     },
     "<scene>\n\t<layer/>\n5</scene>\n"},
    {"EmptyStrings",
     [](Out& out) {
         out.startElement(layer);
         out.writeAttribute(name, KSString());
         out.writeAttribute(name, KSString(""));
         out.writeValue(KSString());
         out.endElement();
     },
     "<layer name=\"\" name=\"\"></layer>\n"},
    {"Escapes",
     [](Out& out) {
         out.startElement(layer);
         out.writeAttribute(name, KSString("<&\">'"));
         out.writeValue(KSString("a<b>\"c\"&d'&amp;"));
         out.endElement();
     },
     "<layer name=\"&lt;&amp;&quot;&gt;'\">a&lt;b&gt;&quot;c&quot;&amp;d'&amp;amp;</layer>\n"},
    {"EveryLengthOfUtf8",
     [](Out& out) {
         out.startElement(layer);
         out.writeAttribute(name, units(u"\u007f\u0080\u07ff\u0800\uffff\U00010000\U0010ffff"));
         out.endElement();
     },
     "<layer name=\"\x7f\xc2\x80\xdf\xbf\xe0\xa0\x80\xef\xbf\xbf\xf0\x90\x80\x80\xf4\x8f\xbf\xbf\"/>\n"},
    {"LoneSurrogates",
     [](Out& out) {
         const char16_t text[] = {0xD800, u'a', 0xDC00, 0xD83D, 0xD83D, 0xDE00, 0xDBFF};
         out.startElement(layer);
         out.writeValue(units({text, std::size(text)}));
         out.endElement();
     },
     "<layer>\xef\xbf\xbd"
     "a\xef\xbf\xbd\xef\xbf\xbd\xf0\x9f\x98\x80\xef\xbf\xbd</layer>\n"},
    {"TextEndsAtNul",
     [](Out& out) {
         out.startElement(layer);
         out.writeValue(units({u"a\0b", 3}));
         out.endElement();
     },
     "<layer>a</layer>\n"},
    {"ArraysAndBlankLine",
     [](Out& out) {
         unsigned int a[] = {1};
         float f[] = {1};
         double d[] = {1};
         out.startElement(layer);
         out.writeArray(a, 1);
         out.writeArray(f, 1);
         out.writeArray(d, 1);
         out.endElement();
         out.writeBlankLine();
         out.reset();
     },
     "<layer/>\n\n"},
    {"ScopesStack",
     [](Out& out) {
         out.startElement(scene);
         out.pushScope(otherScope);
         out.writeAttribute(name, 1);  // in the scope of the moment, not of the element
         out.startElement(scene);
         out.popScope();
         out.startElement(scene);
         out.endElement();
         out.endElement();  // the end keeps the name of the start
         out.endElement();
     },
     "<scene title=\"1\">\n\t<other>\n\t\t<scene/>\n\t</other>\n</scene>\n"},
};
class KSXMLWriteStreamRows : public testing::TestWithParam<Row> {};
TEST_P(KSXMLWriteStreamRows, WriteThisBody) { EXPECT_EQ(written(GetParam().write), GetParam().body); }
INSTANTIATE_TEST_SUITE_P(Rows, KSXMLWriteStreamRows, testing::ValuesIn(rows),
                         [](const auto& row) { return row.param.name; });

/// Each kind of value, in the order of the interface.
template <class Value>
void bothForms(const Value& value, const std::string& text) {
    EXPECT_EQ(written([&](Out& out) {
                  out.startElement(layer);
                  out.writeAttribute(name, value);
                  out.writeValue(value);
                  out.endElement();
              }),
              "<layer name=\"" + text + "\">" + text + "</layer>\n");
}
void everyForm() {
    bothForms(INT_MIN, "-2147483648");
    bothForms(UINT_MAX, "4294967295");
    bothForms(LLONG_MIN, "-9223372036854775808");
    bothForms(ULLONG_MAX, "18446744073709551615");
    bothForms(0.1f, "0.1000000015");
    bothForms(0.1, "0.1");
    bothForms(1e100, "1e+100");
    bothForms(-1234567.5, "-1234567.5");
    bothForms(KSUUID(1, 0xABCDEF, 0, 0xFFFFFFFF), "0000000100abcdef00000000ffffffff");
}
TEST(KSXMLWriteStream, NumbersAndIdentifiers) { everyForm(); }

TEST(KSXMLWriteStream, NumbersDoNotDependOnTheLocale) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    const char* comma = nullptr;
    for (const char* locale : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8"}) {
        if (!comma) comma = std::setlocale(LC_ALL, locale);
    }
    ASSERT_NE(comma, nullptr) << "no locale with a decimal comma is installed";
    everyForm();
    std::setlocale(LC_ALL, before.c_str());
}

TEST(KSXMLWriteStream, LongNamesAndTexts) {
    const std::string longName(20'000, 'n');
    const KSScope longScope[] = {{longName.c_str(), 1, 0}, {longName.c_str(), 1, 2}, {nullptr, 0, 0}};
    std::u16string text;  // pieces of it end everywhere in a pair
    std::string utf8;
    for (int i = 0; i < 9'001; ++i) {
        text += i % 7 ? u"\U0001F600" : u"&";
        utf8 += i % 7 ? "\xf0\x9f\x98\x80" : "&amp;";
    }
    EXPECT_EQ(written([&](Out& out) {
                  out.pushScope(longScope);
                  out.startElement(1);
                  out.writeAttribute(2, units(text));
                  out.writeValue(units(text));
                  out.endElement();
              }),
              '<' + longName + ' ' + longName + "=\"" + utf8 + "\">" + utf8 + "</" + longName + ">\n");
}

template <class Exception>
bool throws(const std::function<void()>& work) {
    try {
        work();
    } catch (const Exception& exception) {
        return typeid(exception) == typeid(Exception);
    } catch (...) {
    }
    return false;
}
bool scopeUndefined(const std::function<void()>& work) { return throws<KSException_ScopeUndefined>(work); }
bool noElement(const std::function<void()>& work) { return throws<KSException_NoElementDefined>(work); }
bool noAttribute(const std::function<void()>& work) { return throws<KSException_AttributeUndefined>(work); }

struct Misuse {
    const char* name;
    bool (*exception)(const std::function<void()>&);
    Write before, misuse, after;
    const char* message;
    const char* body;
};
const auto openScene = [](Out& out) { out.startElement(scene); };
const auto end = [](Out& out) { out.endElement(); };
const auto nothing = [](Out&) {};
const char* const endMessage = "endElement() called without startElement()!\n";

const Misuse misuses[] = {
    {"EndWithoutStart", noElement, nothing, end, nothing, endMessage, ""},
    {"NumberWithoutElement", noElement, nothing, [](Out& out) { out.writeValue(1.0); }, nothing, endMessage,
     ""},
    {"IdentifierWithoutElement", noElement, nothing, [](Out& out) { out.writeValue(KSUUID()); }, nothing,
     endMessage, ""},
    {"TextWithoutElement", noElement, nothing, [](Out& out) { out.writeValue(KSString("x")); }, nothing,
     "value not within an element body!\n", ""},
    // The flags are set, the ">" is lost: the end tag is that of an element with children.
    {"NullScope", scopeUndefined, openScene,
     [](Out& out) {
         out.pushScope(nullptr);
         out.startElement(layer);
     },
     end, "scope not defined!\n", "<scene</scene>\n"},
    {"NullScopeAtTop", scopeUndefined, nothing,
     [](Out& out) {
         out.pushScope(nullptr);
         out.startElement(layer);
     },
     nothing, "scope not defined!\n", ""},
    {"UnknownToken", noElement, openScene, [](Out& out) { out.startElement(odd); }, end,
     "Token not defined in scope scene!\n", "<scene>\n</scene>\n"},
    {"UnknownTokenAtTop", noElement, nothing, [](Out& out) { out.startElement(odd); }, nothing,
     "Token not defined in scope scene!\n", ""},
    {"AttributeTokenIsNoElement", noElement, nothing, [](Out& out) { out.startElement(version); }, nothing,
     "Token not defined in scope scene!\n", ""},
    {"AttributeWithoutElement", noElement, [](Out& out) { out.pushScope(nullptr); },
     [](Out& out) { out.writeAttribute(version, 1); }, nothing, "", ""},
    {"AttributeInNullScope", scopeUndefined,
     [](Out& out) {
         out.startElement(scene);
         out.pushScope(nullptr);
     },
     [](Out& out) { out.writeAttribute(version, 1); }, end, "", "<scene/>\n"},
    {"AttributeOfAnotherElement", noAttribute, openScene,
     [](Out& out) { out.writeAttribute(name, KSString("x")); }, end, "", "<scene/>\n"},
    {"UnknownAttribute", noAttribute, openScene, [](Out& out) { out.writeAttribute(extra, KSUUID()); }, end,
     "", "<scene/>\n"},
    {"ElementEntryIsNoAttribute", noAttribute, openScene, [](Out& out) { out.writeAttribute(99, 1); }, end,
     "", "<scene/>\n"},
};
class KSXMLWriteStreamMisuse : public testing::TestWithParam<Misuse> {};
TEST_P(KSXMLWriteStreamMisuse, SaysSoThrowsAndKeepsWhatWasWritten) {
    const Misuse& row = GetParam();
    const std::string body = written([&](Out& out) {
        row.before(out);
        testing::internal::CaptureStdout();
        const bool thrown = row.exception([&] { row.misuse(out); });
        std::fflush(stdout);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), row.message);
        EXPECT_TRUE(thrown);
        row.after(out);
    });
    EXPECT_EQ(body, row.body);
}
INSTANTIATE_TEST_SUITE_P(Rows, KSXMLWriteStreamMisuse, testing::ValuesIn(misuses),
                         [](const auto& row) { return row.param.name; });

TEST(KSXMLWriteStream, WithoutAnyScopeNothingIsDefined) {
    const Folder folder;
    KSFileWriteStream file(KSURL(folder.file("x.xml").c_str(), false));
    Out out(file);
    testing::internal::CaptureStdout();
    EXPECT_TRUE(scopeUndefined([&] { out.startElement(scene); }));
    out.popScope();
    EXPECT_TRUE(scopeUndefined([&] { out.startElement(scene); }));
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "scope not defined!\nscope not defined!\n");
}

TEST(KSXMLWriteStream, NamesItsFileAndReportsAFullDisk) {
    KSFileWriteStream file(KSURL("/dev/full", false));
    Out out(file);
    out.pushScope(mainScope);
    char* path = out.getURL().getAsFileSystemString().createUTF8Str();
    EXPECT_STREQ(path, "/dev/full");
    std::free(path);
    EXPECT_TRUE(throws<KSException_WriteError>([&] {
        for (int i = 0; i < 10'000; ++i) out.startElement(scene);
    }));
}

}  // namespace
