// Scene documents from anywhere: through the reader with a tree of handlers that pull out every attribute
// and value in every way, and through the tokenizer beside expat, which must agree.
#include "../tests/platform/XmlVerdict.h"

#include <kestrel/Kestrel.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

constexpr KSScope outerScope[] = {{"zuml", 1, 0}, {"a", 2, 0},    {"x", 2, 1},    {"x", 2, 2},
                                  {"name", 2, 3}, {"stop", 3, 0}, {"skip", 4, 0}, {"b", 5, 0},
                                  {"id", 5, 1},   {"x", 1, 1},    {nullptr, 0, 0}};
constexpr KSScope innerScope[] = {{"b", 5, 0}, {"id", 5, 1}, {"*", 2, 0}, {"x", 2, 1}, {nullptr, 0, 0}};

void takeEverything(KSStreamElement& element) {
    int i = 0;
    unsigned int u = 0;
    long long l = 0;
    unsigned long long ul = 0;
    float f = 0;
    double d = 0;
    bool b = false;
    KSString s;
    for (unsigned int token = 0; token < 4; ++token) {
        element.getAttributeAsInt32(token, &i);
        element.getAttributeAsUInt32(token, &u);
        element.getAttributeAsInt64(token, &l);
        element.getAttributeAsUInt64(token, &ul);
        element.getAttributeAsFloat(token, &f);
        element.getAttributeAsDouble(token, &d);
        element.getAttributeAsBool(token, &b);
        element.getAttributeAsString(token, &s);
        std::free(element.getAttributeAsCString(token));
        delete element.getAttributeAsUUID(token);
    }
    element.getAsString(&s);
    for (int count = 0; count < 8; ++count) {
        delete element.getAsUUID();
        element.getAsInt32(&i);
        element.getAsDouble(&d);
        element.getAsBool(&b);
        element.getAsUInt64(&ul);
    }
}

class Handler : public KSSerializer {
public:
    explicit Handler(const KSScope* scope, Handler* inner) : m_scope(scope), m_inner(inner) {}

    void writeHeader(KSSerializerWriteStream&, bool) override {}
    void writeBody(KSSerializerWriteStream&, bool, bool) override {}
    void markFactoriesForSerialization(KSSerializerWriteStream&, bool) override {}
    bool parseBegin(KSSerializerReadStream& in) override {
        in.pushScope(m_scope);
        return true;
    }
    bool parseEnd(KSSerializerReadStream& in) override {
        if (in.currentElement()) takeEverything(*in.currentElement());
        return true;
    }
    bool parseElement(KSSerializerReadStream& in, KSStreamElement& element) override {
        takeEverything(element);
        if (element.getToken() == 2 && m_inner) {
            in.pushHandler(m_inner);
            in.pushHandler(this);
        }
        if (element.getToken() == 3) element.isProcessed() && m_inner ? in.stopParse() : in.abortParse();
        if (element.getToken() == 4) in.ignoreElement();
        return false;
    }

private:
    const KSScope* m_scope;
    Handler* m_inner;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    CFDataRef data = CFDataCreate(kCFAllocatorDefault, bytes, static_cast<CFIndex>(size));
    Handler inner(innerScope, nullptr), outer(outerScope, &inner);
    {
        KSXMLReadStream stream(data, KSURL());
        stream.pushHandler(&outer);
        stream.parse();
        if (stream.currentHandler()) std::abort();
    }
    // The public callbacks, with every node made.
    CFXMLParserCallBacks callbacks{};
    callbacks.createXMLStructure = [](CFXMLParserRef parser, CFXMLNodeRef node, void*) -> void* {
        return CFXMLNodeGetTypeCode(node) == kCFXMLNodeTypeComment ? nullptr : parser;
    };
    CFXMLParserRef parser =
        CFXMLParserCreate(kCFAllocatorDefault, data, nullptr, kCFXMLParserNoOptions, 1, &callbacks, nullptr);
    CFXMLParserParse(parser);
    CFRelease(parser);
    CFRelease(data);

    const std::string difference = disagreement({reinterpret_cast<const char*>(bytes), size});
    if (!difference.empty()) {
        std::fprintf(stderr, "%s", difference.c_str());
        std::abort();
    }
    return 0;
}
