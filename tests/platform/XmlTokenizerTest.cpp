#include "XmlVerdict.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

using namespace std::string_literals;
using namespace kestrel::detail;

namespace {

struct CorpusRow {
    const char* name;
    std::string document;
    bool wellFormed;
};

// Small documents around each rule of well-formedness: the last one that holds, the first one that breaks.
const std::vector<CorpusRow> corpus = {
    // Documents
    {"EmptyElement", "<a/>", true},
    {"StartAndEnd", "<a></a>", true},
    {"BlanksAround", " \t\r\n<a/>\n\n", true},
    {"Nothing", "", false},
    {"OnlyBlanks", " \n", false},
    {"OnlyComment", "<!-- a -->", false},
    {"OnlyDeclaration", "<?xml version='1.0'?>", false},
    {"TwoRoots", "<a/><b/>", false},
    {"TextBefore", "x<a/>", false},
    {"TextAfter", "<a/>x", false},
    {"ReferenceAfter", "<a/>&amp;", false},
    {"CharacterReferenceAfter", "<a/>&#32;", false},
    {"SectionAfter", "<a/><![CDATA[]]>", false},
    {"CommentsAround", "<!--1--><a/><!--2-->", true},
    {"ByteOrderMark", "\xEF\xBB\xBF<a/>", true},
    {"ByteOrderMarkTwice", "\xEF\xBB\xBF\xEF\xBB\xBF<a/>", false},
    {"Unclosed", "<a>", false},
    {"UnclosedInner", "<a><b></a>", false},
    {"Crossed", "<a><b></a></b>", false},
    {"EndOnly", "</a>", false},
    {"EndTwice", "<a></a></a>", false},
    {"Nested", "<a><b><c/></b><b/></a>", true},
    // The XML declaration
    {"Version", "<?xml version=\"1.0\"?><a/>", true},
    {"VersionOneOne", "<?xml version=\"1.1\"?><a/>", true},
    {"EncodingUtf8", "<?xml version='1.0' encoding='UTF-8'?><a/>", true},
    {"Standalone", "<?xml version='1.0' encoding='utf-8' standalone='yes' ?><a/>", true},
    {"StandaloneAlone", "<?xml version='1.0' standalone='no'?><a/>", true},
    {"StandaloneMaybe", "<?xml version='1.0' standalone='maybe'?><a/>", false},
    {"StandaloneFirst", "<?xml version='1.0' standalone='no' encoding='UTF-8'?><a/>", false},
    {"EncodingFirst", "<?xml encoding='UTF-8' version='1.0'?><a/>", false},
    {"NoVersion", "<?xml encoding='UTF-8'?><a/>", false},
    {"NothingDeclared", "<?xml ?><a/>", false},
    {"NoBlankBetween", "<?xml version='1.0'encoding='UTF-8'?><a/>", false},
    {"BlanksAroundEquals", "<?xml version = '1.0'\n?><a/>", true},
    {"UnquotedVersion", "<?xml version=1.0?><a/>", false},
    {"MixedQuotes", "<?xml version='1.0\"?><a/>", false},
    {"EncodingWithBlank", "<?xml version='1.0' encoding='UTF 8'?><a/>", false},
    {"EncodingEmpty", "<?xml version='1.0' encoding=''?><a/>", false},
    {"UnknownPart", "<?xml version='1.0' color='red'?><a/>", false},
    {"NotClosed", "<?xml version='1.0'><a/>", false},
    {"DeclarationTwice", "<?xml version='1.0'?><?xml version='1.0'?><a/>", false},
    {"DeclarationLate", " <?xml version='1.0'?><a/>", false},
    {"DeclarationAfterComment", "<!----><?xml version='1.0'?><a/>", false},
    {"DeclarationInside", "<a><?xml version='1.0'?></a>", false},
    // Processing instructions
    {"Instruction", "<?go on?><a><?go?><?go   ?></a><?go ?b?>", true},
    {"InstructionQuestion", "<a><?go a?\?></a>", true},
    {"InstructionUpperXml", "<a><?XML a?></a>", false},
    {"InstructionMixedXml", "<?xMl a?><a/>", false},
    {"InstructionXmlPrefix", "<?xmlish a?><a><?xml-style a?></a>", true},
    {"InstructionNoTarget", "<a><?\?></a>", false},
    {"InstructionBlankTarget", "<a><? go?></a>", false},
    {"InstructionBadTarget", "<a><?1go?></a>", false},
    {"InstructionNoBlank", "<a><?go$?></a>", false},
    {"InstructionUnclosed", "<a><?go", false},
    {"InstructionClosedByGreater", "<a><?go ></a>", false},
    {"InstructionShared", "<a><?go?></a", false},
    // Comments
    {"Comment", "<a><!-- b & < ]]> --></a>", true},
    {"CommentEmpty", "<a><!----></a>", true},
    {"CommentHyphen", "<a><!-- - --></a>", true},
    {"CommentTwoHyphens", "<a><!-- -- --></a>", false},
    {"CommentThreeHyphens", "<a><!-- ---></a>", false},
    {"CommentShort", "<a><!--></a>", false},
    {"CommentShorter", "<a><!---></a>", false},
    {"CommentShortThenLong", "<a><!--> --></a>", true},
    {"CommentUnclosed", "<a><!-- </a>", false},
    {"CommentOneHyphen", "<a><!- b --></a>", false},
    // CDATA sections
    {"Section", "<a><![CDATA[<b>&c;]]></a>", true},
    {"SectionEmpty", "<a><![CDATA[]]></a>", true},
    {"SectionBrackets", "<a><![CDATA[]]]]></a>", true},
    {"SectionInSection", "<a><![CDATA[<![CDATA[]]></a>", true},
    {"SectionTwoEnds", "<a><![CDATA[]]>]]></a>", false},
    {"SectionLowerCase", "<a><![cdata[]]></a>", false},
    {"SectionBlank", "<a><![ CDATA[]]></a>", false},
    {"SectionUnclosed", "<a><![CDATA[ ]] > </a>", false},
    {"SectionBefore", "<![CDATA[]]><a/>", false},
    // Text
    {"Text", "<a>one > two ]] three ]> \" ' =</a>", true},
    {"TextSectionEnd", "<a>]]></a>", false},
    {"TextSectionEndLonger", "<a>x]]]></a>", false},
    {"TextSectionEndSplit", "<a>]]&gt;]<b/>]></a>", true},
    {"TextBareAmpersand", "<a>a & b</a>", false},
    {"TextLess", "<a>a < b</a>", false},
    {"TextLessAtEnd", "<a>a<", false},
    // Tags
    {"TagBlankFirst", "< a/>", false},
    {"TagNothing", "<>", false},
    {"TagBlankBeforeClose", "<a ></a\n>", true},
    {"TagBlankInEnd", "<a></ a>", false},
    {"TagAttributeInEnd", "<a></a b='c'>", false},
    {"TagSlashBlank", "<a/ >", false},
    {"TagSlashOnly", "<a/", false},
    {"TagUnended", "<a", false},
    {"TagNotEnded", "<a<b/></a>", false},
    {"TagEndNotEnded", "<a></a", false},
    {"TagEndTooShort", "<abc></ab>", false},
    {"TagEndTooLong", "<ab></abc>", false},
    {"TagCase", "<a></A>", false},
    {"TagBang", "<a><!b></a>", false},
    {"TagDoctypeInside", "<a><!DOCTYPE a></a>", false},
    // Names
    {"NameColonUnderscore", "<:_a.-1><_:/></:_a.-1>", true},
    {"NameDigit", "<1/>", false},
    {"NameHyphen", "<-a/>", false},
    {"NameDot", "<.a/>", false},
    {"NameDollar", "<a$/>", false},
    {"NameLatin", "<\xC3\xA9t\xC3\xA9></\xC3\xA9t\xC3\xA9>", true},
    {"NameCjk", "<\xE6\x97\xA5\xE6\x9C\xAC \xE5\x90\x8D='1'/>", true},
    {"NameTimes", "<\xC3\x97/>", false},
    {"NameCombiningFirst", "<\xCC\x81/>", false},
    {"NameMiddleDot", "<a\xC2\xB7/>", true},
    {"NameCutSequence", "<a\xC3", false},
    // Attributes
    {"Attributes", "<a b='1' c=\"2\"\n\td = '3'/>", true},
    {"AttributeQuotes", "<a b='\"' c=\"'\"/>", true},
    {"AttributeGreater", "<a b='>'/>", true},
    {"AttributeSectionEnd", "<a b=']]>'/>", true},
    {"AttributeLess", "<a b='<'/>", false},
    {"AttributeBareAmpersand", "<a b='&'/>", false},
    {"AttributeReferences", "<a b='&lt;&amp;&#60;&#x3C;'/>", true},
    {"AttributeLineEnds", "<a b='1\r\n2\t3\n4\r5&#10;'/>", true},
    {"AttributeUnquoted", "<a b=1/>", false},
    {"AttributeNoValue", "<a b/>", false},
    {"AttributeNoName", "<a ='1'/>", false},
    {"AttributeNoBlank", "<a b='1'c='2'/>", false},
    {"AttributeNoBlankFirst", "<a'1'/>", false},
    {"AttributeUnclosed", "<a b='1/>", false},
    {"AttributeWrongQuote", "<a b='1\"/>", false},
    {"AttributeTwice", "<a b='1' b='2'/>", false},
    {"AttributeTwiceApart", "<a b='1' c='1' b='1'/>", false},
    {"AttributeCaseDiffers", "<a b='1' B='1'/>", true},
    {"AttributeTwiceAmongMany",
     "<a a1='' a2='' a3='' a4='' a5='' a6='' a7='' a8='' a9='' aa='' ab='' ac='' ad='' a5=''/>", false},
    {"AttributeMany",
     "<a a1='' a2='' a3='' a4='' a5='' a6='' a7='' a8='' a9='' aa='' ab='' ac='' ad='' ae=''/>", true},
    {"AttributeDigitName", "<a 1='1'/>", false},
    // References
    {"Predefined", "<a>&amp;&lt;&gt;&quot;&apos;</a>", true},
    {"Decimal", "<a>&#9;&#10;&#13;&#32;&#55295;&#57344;&#65533;&#65536;&#1114111;</a>", true},
    {"Hexadecimal", "<a>&#x9;&#xa;&#xD;&#x20;&#xd7fF;&#xE000;&#xFFFD;&#x10000;&#x10ffff;</a>", true},
    {"LeadingZeros", "<a>&#000000000000000000065;&#x00000000000000000041;</a>", true},
    {"Zero", "<a>&#0;</a>", false},
    {"Control", "<a>&#x1F;</a>", false},
    {"Surrogate", "<a>&#xD800;</a>", false},
    {"LastSurrogate", "<a>&#57343;</a>", false},
    {"NonCharacter", "<a>&#xFFFE;</a>", false},
    {"TooLarge", "<a>&#x110000;</a>", false},
    {"FarTooLarge", "<a>&#99999999999999999999999;</a>", false},
    {"ControlInAttribute", "<a b='&#1;'/>", false},
    {"UpperX", "<a>&#X41;</a>", false},
    {"NoDigits", "<a>&#;</a>", false},
    {"NoHexDigits", "<a>&#x;</a>", false},
    {"HexDigitInDecimal", "<a>&#6a;</a>", false},
    {"NoSemicolon", "<a>&amp</a>", false},
    {"NoSemicolonDecimal", "<a>&#65</a>", false},
    {"BlankInReference", "<a>&amp ;</a>", false},
    {"BlankBeforeName", "<a>& amp;</a>", false},
    {"EmptyReference", "<a>&;</a>", false},
    {"DigitReference", "<a>&1;</a>", false},
    {"CutReference", "<a>&am", false},
    // Characters
    {"Tab", "<a>\t\r\n</a>", true},
    {"Delete", "<a>\x7F</a>", true},
    {"Nul", "<a>\0</a>"s, false},
    {"NulInName", "<a\0/>"s, false},
    {"NulAfter", "<a/>\0"s, false},
    {"NulInComment", "<a><!--\0--></a>"s, false},
    {"NulInSection", "<a><![CDATA[\0]]></a>"s, false},
    {"NulInInstruction", "<a><?go \0?></a>"s, false},
    {"NulInAttribute", "<a b='\0'/>"s, false},
    {"Escape", "<a>\x1B</a>", false},
    {"ControlInTag", "<a \x0B/>", false},
    {"TwoBytes", "<a>\xC2\x80\xDF\xBF</a>", true},
    {"ThreeBytes", "<a>\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBD</a>", true},
    {"FourBytes", "<a>\xF0\x90\x80\x80\xF4\x8F\xBF\xBF</a>", true},
    {"ContinuationFirst", "<a>\x80</a>", false},
    {"OverlongTwo", "<a>\xC0\x80</a>", false},
    {"OverlongSlash", "<a>\xC1\xBF</a>", false},
    {"OverlongThree", "<a>\xE0\x9F\xBF</a>", false},
    {"OverlongFour", "<a>\xF0\x8F\xBF\xBF</a>", false},
    {"EncodedSurrogate", "<a>\xED\xA0\x80</a>", false},
    {"EncodedNonCharacter", "<a>\xEF\xBF\xBE</a>", false},
    {"EncodedNonCharacterLast", "<a>\xEF\xBF\xBF</a>", false},
    {"AboveUnicode", "<a>\xF4\x90\x80\x80</a>", false},
    {"FiveBytes", "<a>\xF8\x88\x80\x80\x80</a>", false},
    {"CutByTag", "<a>\xE2\x82</a>", false},
    {"CutByEnd", "<a>\xE2\x82", false},
    {"BadInComment", "<a><!-- \xFF --></a>", false},
    {"BadAfter", "<a/>\xFF", false},
    // Document types
    {"Doctype", "<!DOCTYPE a><a/>", true},
    {"DoctypeOtherRoot", "<!DOCTYPE b><a/>", true},
    {"DoctypeSystem", "<!DOCTYPE a SYSTEM 'x.dtd' ><a/>", true},
    {"DoctypePublic", "<!DOCTYPE a PUBLIC '-//X//Y' \"x.dtd\"><a/>", true},
    {"DoctypePublicAlone", "<!DOCTYPE a PUBLIC '-//X//Y'><a/>", false},
    {"DoctypePublicCharacter", "<!DOCTYPE a PUBLIC '{}' 'x'><a/>", false},
    {"DoctypeNoBlank", "<!DOCTYPEa><a/>", false},
    {"DoctypeNoName", "<!DOCTYPE ><a/>", false},
    {"DoctypeLowerCase", "<!doctype a><a/>", false},
    {"DoctypeTwice", "<!DOCTYPE a><!DOCTYPE a><a/>", false},
    {"DoctypeAfter", "<a/><!DOCTYPE a>", false},
    {"DoctypeUnclosed", "<!DOCTYPE a", false},
    {"DoctypeJunk", "<!DOCTYPE a b><a/>", false},
    {"DoctypeSystemUnquoted", "<!DOCTYPE a SYSTEM x><a/>", false},
    {"DoctypeSystemNoBlank", "<!DOCTYPE a SYSTEM'x'><a/>", false},
};

class XmlCorpus : public testing::TestWithParam<CorpusRow> {};
TEST_P(XmlCorpus, HasTheVerdictOfTheTableAndOfExpat) {
    const XmlVerdict verdict = tokenizerVerdict(GetParam().document);
    EXPECT_EQ(verdict.wellFormed, GetParam().wellFormed) << verdict.reason;
    EXPECT_EQ(verdict.wellFormed, verdict.reason.empty()) << "an error says why, and only an error";
    EXPECT_EQ(disagreement(GetParam().document), "");
}
INSTANTIATE_TEST_SUITE_P(Documents, XmlCorpus, testing::ValuesIn(corpus),
                         [](const auto& row) { return std::string(row.param.name); });

// Every document of the table cut at every byte, and damaged in thousands of ways with a fixed seed.
TEST(XmlTokenizer, AgreesWithExpatOnDamagedDocuments) {
    std::mt19937 random(1998);
    const std::string_view pieces[] = {
        "<",  ">", "&", ";",  "/", "'",   "\"",        "]]>",         "--",       "<!--", "-->",  "<?",
        "?>", "=", " ", "\r", "a", "&#x", "<![CDATA[", "<!DOCTYPE a", "\xC3\xA9", "\xE2", "\x01", "b='1'"};
    int compared = 0;
    for (const CorpusRow& row : corpus) {
        for (std::size_t size = 0; size < row.document.size(); ++size) {
            const std::string cut = row.document.substr(0, size);
            ASSERT_EQ(disagreement(cut), "") << cut;
        }
        for (int round = 0; round < 60; ++round) {
            std::string damaged = row.document;
            for (auto edits = 1 + random() % 3; edits > 0; --edits) {
                const std::size_t place = random() % (damaged.size() + 1);
                const std::string_view piece = pieces[random() % std::size(pieces)];
                if (random() % 2)
                    damaged.insert(place, piece);
                else
                    damaged.replace(place, random() % 3, random() % 2 ? piece : std::string_view());
            }
            ASSERT_EQ(disagreement(damaged), "") << damaged;
            ++compared;
        }
    }
    EXPECT_GT(compared, 5000);
}

// What the two do not claim alike, or what expat does not say at all.
struct OwnRow {
    const char* name;
    std::string document;
    bool wellFormed;
};
const std::vector<OwnRow> ownRows = {
    {"UndeclaredEntity", "<a b='&c;'>&d;</a>", true},
    {"VersionTwo", "<?xml version='2.0'?><a/>", false},
    {"VersionBare", "<?xml version='1.'?><a/>", false},
    {"FifthEditionName", "<\xE2\xB0\xBF\xF0\x90\x90\x80/>", true},
    {"Subset", "<!DOCTYPE a [<!ELEMENT a ANY> %b; <!ENTITY c 'x>]]>'> <!--]>--><?d ]>?> ] ><a>&c;</a>", true},
    {"SubsetAttlist", "<!DOCTYPE a SYSTEM 'x' [<!ATTLIST a b CDATA '<'><!NOTATION n SYSTEM \"y\">]><a/>",
     true},
    {"SubsetUnclosed", "<!DOCTYPE a [<!ELEMENT a ANY> <a/>", false},
    {"SubsetElement", "<!DOCTYPE a [<a/>]><a/>", false},
    {"SubsetText", "<!DOCTYPE a [b]><a/>", false},
    {"SubsetUnknown", "<!DOCTYPE a [<!THING a>]><a/>", false},
    {"SubsetNoBlank", "<!DOCTYPE a [<!ELEMENTa ANY>]><a/>", false},
    {"SubsetLiteralUnclosed", "<!DOCTYPE a [<!ENTITY b \"c>]><a/>", false},
    {"SubsetTagInDeclaration", "<!DOCTYPE a [<!ENTITY b <!ENTITY c ''>]><a/>", false},
    {"SubsetComment", "<!DOCTYPE a [<!-- -- -->]><a/>", false},
    {"SubsetInstruction", "<!DOCTYPE a [<?xml a?>]><a/>", false},
    {"SubsetPercent", "<!DOCTYPE a [% b;]><a/>", false},
    {"SubsetControl", "<!DOCTYPE a [<!ENTITY b '\x02'>]><a/>", false},
};
class XmlOwnVerdict : public testing::TestWithParam<OwnRow> {};
TEST_P(XmlOwnVerdict, IsThatOfTheTable) {
    const XmlVerdict verdict = tokenizerVerdict(GetParam().document);
    EXPECT_EQ(verdict.wellFormed, GetParam().wellFormed) << verdict.reason;
}
INSTANTIATE_TEST_SUITE_P(Documents, XmlOwnVerdict, testing::ValuesIn(ownRows),
                         [](const auto& row) { return std::string(row.param.name); });

struct PlaceRow {
    const char* name;
    std::string document;
    CFIndex status;
    std::size_t line;
    std::size_t column;
    const char* description;
};
const std::vector<PlaceRow> placeRows = {
    {"MismatchedEnd", "<a>\n  <b>\n</c>", kCFXMLErrorMalformedCloseTag, 3, 1,
     "\"</c>\" where \"</b>\" is expected"},
    {"ReturnsCountOnce", "<a>\r\n\r\r\n  <", kCFXMLErrorUnexpectedEOF, 4, 4,
     "the document ends inside the element \"a\""},
    {"CharactersNotBytes", "<a>\xE6\x97\xA5\xF0\x9F\x98\x80 & </a>", kCFXMLErrorMalformedParsedCharacterData,
     1, 7, "\"&\" starts no reference"},
    {"BadByteBeforeLaterFault", "<a>\n\xFF</b>", kCFXMLErrorEncodingConversionFailure, 2, 1,
     "bytes that are no UTF-8"},
    {"ControlBeforeEnd", "<a>\x01", kCFXMLErrorMalformedDocument, 1, 4,
     "a character that XML does not allow"},
    {"FaultBeforeBadByte", "<a></b>\xFF", kCFXMLErrorMalformedCloseTag, 1, 4,
     "\"</b>\" where \"</a>\" is expected"},
    {"AttributeTwice", "<a x='1'\n y='2'\n x='3'/>", kCFXMLErrorMalformedStartTag, 3, 2,
     "attribute \"x\" stands twice"},
    {"CharacterReference", "<a b='&#2;'/>", kCFXMLErrorMalformedCharacterReference, 1, 7,
     "\"&#2;\" refers to no character of XML"},
    {"Comment", "<a><!-- a -- b --></a>", kCFXMLErrorMalformedComment, 1, 11, "\"--\" in a comment"},
    {"Empty", "", kCFXMLErrorNoData, 1, 1, "the document is empty"},
    {"NoElement", "<!-- a -->\n", kCFXMLErrorElementlessDocument, 2, 1, "the document has no element"},
    {"CutInDoctype", "<!DOCTYPE a", kCFXMLErrorUnexpectedEOF, 1, 12, "the document ends too early"},
    {"TextOutside", "<a/>\n x", kCFXMLErrorMalformedDocument, 2, 2, "text outside the root element"},
};
class XmlFaultPlace : public testing::TestWithParam<PlaceRow> {};
TEST_P(XmlFaultPlace, IsReported) {
    XmlTokenizer tokens(GetParam().document);
    while (tokens.next() < XmlEvent::End) {
    }
    EXPECT_EQ(tokens.next(), XmlEvent::Error) << "the error stays";
    EXPECT_EQ(tokens.getStatus(), GetParam().status);
    EXPECT_EQ(tokens.locate().line, GetParam().line);
    EXPECT_EQ(tokens.locate().column, GetParam().column);
    EXPECT_EQ(tokens.getDescription(), GetParam().description);
}
INSTANTIATE_TEST_SUITE_P(Faults, XmlFaultPlace, testing::ValuesIn(placeRows),
                         [](const auto& row) { return std::string(row.param.name); });

struct Event {
    XmlEvent kind;
    std::string name;
    std::string text;
    bool operator==(const Event&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Event& event) {
    return out << static_cast<int>(event.kind) << '[' << event.name << "][" << event.text << ']';
}

TEST(XmlTokenizer, TellsReferencesFromTextAndSplitsNothingElse) {
    const std::string document =
        "<?xml version='1.0'?><!DOCTYPE a PUBLIC 'p' 's'><a x='&amp;\t1'> b]]c&amp;d<!--e--><![CDATA[f&g;]]>"
        "<h/>&#x20AC;\xE2\x82\xAC<?i  j ?></a>";
    XmlTokenizer tokens(document);
    std::vector<Event> events;
    while (tokens.next() != XmlEvent::End) {
    }
    XmlTokenizer again(document);
    for (XmlEvent kind = again.next(); kind < XmlEvent::End; kind = again.next()) {
        const bool named = kind != XmlEvent::Text && kind != XmlEvent::CData && kind != XmlEvent::Comment;
        const bool hasText = kind != XmlEvent::StartElement && kind != XmlEvent::EndElement &&
                             kind != XmlEvent::Reference && kind != XmlEvent::DocumentType;
        events.push_back(
            {kind, named ? std::string(again.getName()) : "", hasText ? std::string(again.getText()) : ""});
        if (events.size() == 3) {
            ASSERT_EQ(again.getAttributes().size(), 1u);
            EXPECT_EQ(again.getAttributes()[0].value, "&amp;\t1");
            EXPECT_TRUE(again.getAttributes()[0].hasReferences);
            EXPECT_EQ(again.getPublicId(), "p");
            EXPECT_EQ(again.getSystemId(), "s");
        }
    }
    using enum XmlEvent;
    const std::vector<Event> expected = {{Declaration, "xml", "version='1.0'"},
                                         {DocumentType, "a", ""},
                                         {StartElement, "a", ""},
                                         {Text, "", " b]]c"},
                                         {Reference, "amp", ""},
                                         {Text, "", "d"},
                                         {Comment, "", "e"},
                                         {CData, "", "f&g;"},
                                         {StartElement, "h", ""},
                                         {EndElement, "h", ""},
                                         {Reference, "#x20AC", ""},
                                         {Text, "", "\xE2\x82\xAC"},
                                         {ProcessingInstruction, "i", "j "},
                                         {EndElement, "a", ""}};
    EXPECT_EQ(events, expected);
}

TEST(XmlTokenizer, EventsBeforeAFaultAreDelivered) {
    XmlTokenizer tokens("<a>one<b/>\x02</a>");
    std::vector<XmlEvent> kinds;
    do kinds.push_back(tokens.next());
    while (kinds.back() < XmlEvent::End);
    using enum XmlEvent;
    EXPECT_EQ(kinds, (std::vector{StartElement, Text, StartElement, EndElement, Error}));
}

TEST(XmlTokenizer, SurvivesDepthAndSizeAndEntityBombs) {
    std::string deep;
    for (int i = 0; i < 100000; ++i) deep += "<d>";
    XmlTokenizer unclosed(deep);
    while (unclosed.next() < XmlEvent::End) {
    }
    EXPECT_EQ(unclosed.getDepth(), 100000u);
    for (int i = 0; i < 100000; ++i) deep += "</d>";
    EXPECT_TRUE(tokenizerVerdict(deep).wellFormed);

    const std::string large(64 << 20, 'x');
    const std::string wide = "<a b='" + large + "'/>";
    XmlTokenizer tokens(wide);
    ASSERT_EQ(tokens.next(), XmlEvent::StartElement);
    EXPECT_EQ(tokens.getAttributes()[0].value.size(), large.size());
    EXPECT_EQ(tokens.getAttributes()[0].value.data(), wide.data() + 6) << "a slice, not a copy";

    std::string bomb = "<!DOCTYPE a [<!ENTITY e0 'lol'>";
    for (int i = 1; i < 10; ++i) {
        bomb += "<!ENTITY e" + std::to_string(i) + " '";
        for (int j = 0; j < 10; ++j) bomb += "&e" + std::to_string(i - 1) + ";";
        bomb += "'>";
    }
    bomb += "]><a>&e9;</a>";
    EXPECT_EQ(tokenizerVerdict(bomb).log, "<!a><a></a>");
}

TEST(XmlTokenizer, ManyAttributesAreCheckedInLessThanQuadraticTime) {
    std::string document = "<a";
    for (int i = 0; i < 200000; ++i) document += " n" + std::to_string(i) + "=''";
    EXPECT_TRUE(tokenizerVerdict(document + "/>").wellFormed);
    EXPECT_FALSE(tokenizerVerdict(document + " n777=''/>").wellFormed);
}

}  // namespace
