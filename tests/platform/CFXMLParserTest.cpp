#include <kestrel/platform/CFData.h>
#include <kestrel/platform/CFXMLParser.h>

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace {

using Log = std::vector<std::string>;

std::string utf8(CFStringRef string) {
    if (!string) return "(null)";
    std::string text(static_cast<std::size_t>(CFStringGetLength(string)) * 3 + 1, '\0');
    CFStringGetCString(string, text.data(), static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8);
    return text.c_str();
}

CFStringRef makeString(const std::string& text) {
    return CFStringCreateWithCString(kCFAllocatorDefault, text.c_str(), kCFStringEncodingUTF8);
}

// How the log says that handleError was called.
std::string told(CFIndex status) { return std::to_string(status).insert(0, 1, '!'); }

// Logs every callback; a structure is the name of what was made, and elements named "skip" are not wanted.
struct Listener {
    Log log;
    std::map<std::string, int> references;  // what retain and release of the context saw
    std::function<void(CFXMLParserRef, const std::string&)> onNode;
    std::vector<std::string*> structures;

    ~Listener() {
        for (std::string* structure : structures) delete structure;
    }

    static std::string describe(CFXMLNodeRef node) {
        const std::string text = utf8(CFXMLNodeGetString(node));
        const void* info = CFXMLNodeGetInfoPtr(node);
        std::string result = std::to_string(CFXMLNodeGetTypeCode(node));
        result.append(":").append(text);
        switch (CFXMLNodeGetTypeCode(node)) {
            case kCFXMLNodeTypeElement: {
                const auto* element = static_cast<const CFXMLElementInfo*>(info);
                const CFIndex count = CFDictionaryGetCount(element->attributes);
                std::vector<const void*> keys(static_cast<std::size_t>(count)), values(keys.size());
                CFDictionaryGetKeysAndValues(element->attributes, keys.data(), values.data());
                for (std::size_t i = 0; i < keys.size(); ++i)
                    result.append(" ")
                        .append(utf8(static_cast<CFStringRef>(keys[i])))
                        .append("=")
                        .append(utf8(static_cast<CFStringRef>(values[i])));
                return result + (element->isEmpty ? "/" : "");
            }
            case kCFXMLNodeTypeProcessingInstruction:
                return result + " " +
                       utf8(static_cast<const CFXMLProcessingInstructionInfo*>(info)->dataString);
            case kCFXMLNodeTypeDocumentType: {
                const auto& id = static_cast<const CFXMLDocumentTypeInfo*>(info)->externalID;
                return result + " " + utf8(id.publicID) + " " + utf8(id.systemID);
            }
            case kCFXMLNodeTypeEntityReference:
                return result.append(" ").append(
                    std::to_string(static_cast<const CFXMLEntityReferenceInfo*>(info)->entityType));
            case kCFXMLNodeTypeDocument:
                return result +
                       (static_cast<const CFXMLDocumentInfo*>(info)->encoding == kCFStringEncodingUTF8
                            ? "UTF-8"
                            : "other");
            default:
                EXPECT_EQ(info, nullptr);
                return result;
        }
    }

    CFXMLParserRef makeParser(const std::string& document) {
        CFXMLParserCallBacks callbacks{};
        callbacks.createXMLStructure = [](CFXMLParserRef parser, CFXMLNodeRef node, void* info) -> void* {
            auto& self = *static_cast<Listener*>(info);
            const std::string text = describe(node);
            self.log.push_back(std::string(text).insert(0, 1, '+'));
            if (self.onNode) self.onNode(parser, text);
            if (text.starts_with("2:skip")) return nullptr;
            return self.structures.emplace_back(new std::string(text.substr(0, text.find(' '))));
        };
        callbacks.addChild = [](CFXMLParserRef, void* parent, void* child, void* info) {
            static_cast<Listener*>(info)->log.push_back(*static_cast<std::string*>(parent) + ">" +
                                                        *static_cast<std::string*>(child));
        };
        callbacks.endXMLStructure = [](CFXMLParserRef, void* structure, void* info) {
            static_cast<Listener*>(info)->log.push_back(
                std::string(*static_cast<std::string*>(structure)).insert(0, 1, '-'));
        };
        callbacks.handleError = [](CFXMLParserRef, CFXMLParserStatusCode status, void* info) -> Boolean {
            static_cast<Listener*>(info)->log.push_back(told(status));
            return true;
        };
        CFXMLParserContext context{};
        context.info = this;
        context.retain = [](const void* info) {
            ++const_cast<Listener*>(static_cast<const Listener*>(info))->references["retain"];
            return info;
        };
        context.release = [](const void* info) {
            ++const_cast<Listener*>(static_cast<const Listener*>(info))->references["release"];
        };
        CFDataRef data = CFDataCreate(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(document.data()),
                                      static_cast<CFIndex>(document.size()));
        CFXMLParserRef parser = CFXMLParserCreate(kCFAllocatorDefault, data, nullptr, kCFXMLParserNoOptions,
                                                  1, &callbacks, &context);
        CFRelease(data);
        return parser;
    }
};

TEST(CFXMLParser, CallsBackForEveryPiece) {
    Listener listener;
    CFXMLParserRef parser = listener.makeParser(
        "<?xml version='1.0'?>\n<!DOCTYPE a PUBLIC 'p' 's'><a x='1&amp;' y=''> "
        "<!--c-->t&lt;&#65;<b/><skip><b/>t</skip>"
        "<![CDATA[<]]></a><?go on?>");
    EXPECT_EQ(CFXMLParserGetStatusCode(parser), kCFXMLStatusParseNotBegun);
    EXPECT_TRUE(CFXMLParserParse(parser));
    EXPECT_EQ(CFXMLParserGetStatusCode(parser), kCFXMLStatusParseSuccessful);
    EXPECT_FALSE(CFXMLParserParse(parser)) << "a parser parses once";
    CFRelease(parser);
    EXPECT_EQ(listener.log, (Log{"+1:UTF-8",      "+4:xml version='1.0'",
                                 "1:UTF-8>4:xml", "-4:xml",
                                 "+11:a p s",     "1:UTF-8>11:a",
                                 "-11:a",         "+2:a x=1&amp; y=",
                                 "1:UTF-8>2:a",   "+12: ",
                                 "2:a>12:",       "-12:",
                                 "+5:c",          "2:a>5:c",
                                 "-5:c",          "+6:t",
                                 "2:a>6:t",       "-6:t",
                                 "+10:lt 1",      "2:a>10:lt",
                                 "-10:lt",        "+10:#65 4",
                                 "2:a>10:#65",    "-10:#65",
                                 "+2:b/",         "2:a>2:b/",
                                 "-2:b/",         "+2:skip",
                                 "+7:<",          "2:a>7:<",
                                 "-7:<",          "-2:a",
                                 "+4:go on",      "1:UTF-8>4:go",
                                 "-4:go",         "-1:UTF-8"}));
    EXPECT_EQ(listener.references["retain"], 1);
    EXPECT_EQ(listener.references["release"], 1);
}

TEST(CFXMLParser, AnErrorEndsTheParseAfterWhatStandsBefore) {
    Listener listener;
    CFXMLParserRef parser = listener.makeParser("<a>\n<b/></c>");
    EXPECT_FALSE(CFXMLParserParse(parser));
    EXPECT_EQ(CFXMLParserGetStatusCode(parser), kCFXMLErrorMalformedCloseTag);
    EXPECT_EQ(CFXMLParserGetLineNumber(parser), 2);
    EXPECT_EQ(CFXMLParserGetLocation(parser), 5);
    CFStringRef description = CFXMLParserCopyErrorDescription(parser);
    EXPECT_EQ(utf8(description), "\"</c>\" where \"</a>\" is expected");
    CFRelease(description);
    CFRelease(parser);
    EXPECT_EQ(listener.log.back(), "!8");
    EXPECT_EQ(listener.log[listener.log.size() - 2], "-2:b/");
}

TEST(CFXMLParser, AbortEndsTheParseWithItsStatus) {
    for (const auto status : {kCFXMLErrorMalformedDocument, kCFXMLStatusParseSuccessful}) {
        Listener listener;
        listener.onNode = [&](CFXMLParserRef parser, const std::string& node) {
            if (node.starts_with("2:b")) CFXMLParserAbort(parser, status, CFSTR("enough"));
        };
        CFXMLParserRef parser = listener.makeParser("<a>\n  <b/><c/>");
        EXPECT_FALSE(CFXMLParserParse(parser));
        EXPECT_EQ(CFXMLParserGetStatusCode(parser), status);
        EXPECT_EQ(CFXMLParserGetLineNumber(parser), 2);
        EXPECT_EQ(CFXMLParserGetLocation(parser), 3);
        CFStringRef description = CFXMLParserCopyErrorDescription(parser);
        EXPECT_EQ(utf8(description), "enough");
        CFRelease(description);
        CFRelease(parser);
        EXPECT_EQ(listener.log.back(), told(status)) << "told once, nothing after";
        EXPECT_EQ(listener.log[listener.log.size() - 2], "2:a>2:b/");
    }
}

TEST(CFXMLParser, NullsAreHarmless) {
    EXPECT_EQ(CFXMLParserCreate(kCFAllocatorDefault, nullptr, nullptr, 0, 1, nullptr, nullptr), nullptr);
    EXPECT_FALSE(CFXMLParserParse(nullptr));
    CFXMLParserAbort(nullptr, kCFXMLErrorNoData, nullptr);
    EXPECT_EQ(CFXMLParserGetStatusCode(nullptr), kCFXMLErrorNoData);
    EXPECT_EQ(CFXMLParserGetLineNumber(nullptr), 0);
    EXPECT_EQ(CFXMLNodeGetString(nullptr), nullptr);
    EXPECT_EQ(CFXMLNodeGetInfoPtr(nullptr), nullptr);
    CFDataRef data = CFDataCreate(kCFAllocatorDefault, reinterpret_cast<const UInt8*>("<a/>"), 4);
    CFXMLParserRef parser = CFXMLParserCreate(kCFAllocatorDefault, data, nullptr, 0, 1, nullptr, nullptr);
    EXPECT_TRUE(CFXMLParserParse(parser)) << "without callbacks the document is checked";
    CFRelease(parser);
    CFRelease(data);
}

struct UnescapeRow {
    const char* text;
    const char* plain;
};
constexpr UnescapeRow unescapeRows[] = {
    {"", ""},
    {"plain", "plain"},
    {"&amp;&lt;&gt;&quot;&apos;", "&<>\"'"},
    {"&amp;lt;", "&lt;"},
    {"&#65;&#x42;&#x00043;", "ABC"},
    {"&#8364;&#x20ac;&#x1F600;", "\xE2\x82\xAC\xE2\x82\xAC\xF0\x9F\x98\x80"},
    {"&#0;&#xD800;&#x110000;&#99999999999;", "&#0;&#xD800;&#x110000;&#99999999999;"},
    {"&#;&#x;&#x4g;&#6f;&#X41;", "&#;&#x;&#x4g;&#6f;&#X41;"},
    {"&nobody;", "&nobody;"},
    {"&space;", "&space;"},
    {"a & b; &amp", "a & b; &amp"},
    {"&&amp;&", "&&&"},
    {"&mine;&amp;", "&lt;+"},
    {"&", "&"},
    {";&;", ";&;"},
};

TEST(CFXMLParser, UnescapingReplacesWhatItKnowsOnce) {
    const void* names[] = {CFSTR("mine"), CFSTR("amp"), CFSTR("mine")};
    const void* texts[] = {CFSTR("&lt;"), CFSTR("+"), CFSTR("later")};
    CFDictionaryRef own =
        CFDictionaryCreate(kCFAllocatorDefault, names, texts, 3, &kCFTypeDictionaryKeyCallBacks,
                           &kCFTypeDictionaryValueCallBacks);
    for (const UnescapeRow& row : unescapeRows) {
        const bool usesOwn = std::string(row.text).find("mine") != std::string::npos;
        CFStringRef text = makeString(row.text);
        CFStringRef plain =
            CFXMLCreateStringByUnescapingEntities(kCFAllocatorDefault, text, usesOwn ? own : nullptr);
        EXPECT_EQ(utf8(plain), row.plain) << row.text;
        CFRelease(plain);
        CFRelease(text);
    }
    EXPECT_EQ(CFXMLCreateStringByUnescapingEntities(kCFAllocatorDefault, nullptr, own), nullptr);
    EXPECT_EQ(CFDictionaryGetCount(own), 3);
    EXPECT_EQ(CFDictionaryGetValue(own, CFSTR("mine")), texts[0]);
    EXPECT_EQ(CFDictionaryGetValue(own, CFSTR("other")), nullptr);
    CFRelease(own);
    EXPECT_EQ(CFDictionaryGetCount(nullptr), 0);
    EXPECT_EQ(CFDictionaryGetValue(nullptr, CFSTR("x")), nullptr);
}

}  // namespace
