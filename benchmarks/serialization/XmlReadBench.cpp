// Reading a scene of 100,000 layers, each attribute and value taken out as what it is. Bytes a second are
// bytes of the document.
#include "../peers/XmlReadJob.h"

#include <kestrel/Kestrel.h>

#include <benchmark/benchmark.h>

#include <charconv>
#include <cstdio>
#include <random>

const std::string& getXmlReadDocument() {
    static const std::string document = [] {
        std::mt19937 random(2006);
        std::string text =
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE zuxmlscene>\n<zuml version=\"2.1\">\n\n";
        for (int i = 0; i < 100000; ++i) {
            char line[256];
            const auto next = [&](double scale) {
                return static_cast<double>(random()) / 4294967296.0 * scale;
            };
            const double opacity = next(1), x = next(1000), value = next(10000);
            std::snprintf(line, sizeof line,
                          "\t<layer name=\"Layer %d\" opacity=\"%.10g\" width=\"%d\" height=\"1080\" "
                          "x=\"%.10g\">%.10g</layer>\n",
                          i, opacity, 1920 + i % 7, x, value);
            text += line;
        }
        return text + "\n</zuml>\n";
    }();
    return document;
}

namespace {

// A reader that knows this document's layout and nothing of XML: the expected result.
double doubleAfter(const std::string& text, std::size_t& place, const char* key) {
    place = text.find(key, place) + std::char_traits<char>::length(key);
    return std::strtod(text.c_str() + place, nullptr);
}

}  // namespace

const XmlReadResult& getXmlReadExpected() {
    static const XmlReadResult expected = [] {
        XmlReadResult result;
        const std::string& text = getXmlReadDocument();
        for (std::size_t place = text.find("<layer"); place != std::string::npos;
             place = text.find("<layer", place)) {
            ++result.layers;
            place = text.find('"', place) + 1;
            result.nameUnits += text.find('"', place) - place;
            result.doubles += doubleAfter(text, place, "opacity=\"");
            result.integers += static_cast<long long>(doubleAfter(text, place, "width=\""));
            result.integers += static_cast<long long>(doubleAfter(text, place, "height=\""));
            result.doubles += doubleAfter(text, place, "x=\"");
            result.doubles += doubleAfter(text, place, ">");
        }
        return result;
    }();
    return expected;
}

namespace {

constexpr KSScope scope[] = {{"zuml", 1, 0},   {"layer", 2, 0},   {"name", 2, 10}, {"opacity", 2, 11},
                             {"width", 2, 12}, {"height", 2, 13}, {"x", 2, 14},    {nullptr, 0, 0}};

class Layers : public KSSerializer {
public:
    XmlReadResult result;

    void writeHeader(KSSerializerWriteStream&, bool) override {}
    void writeBody(KSSerializerWriteStream&, bool, bool) override {}
    void markFactoriesForSerialization(KSSerializerWriteStream&, bool) override {}
    bool parseBegin(KSSerializerReadStream& in) override {
        in.pushScope(scope);
        return true;
    }
    bool parseEnd(KSSerializerReadStream&) override { return true; }
    bool parseElement(KSSerializerReadStream&, KSStreamElement& layer) override {
        if (layer.getToken() != 2) return true;
        KSString name;
        double opacity = 0, x = 0, value = 0;
        int width = 0, height = 0;
        layer.getAttributeAsString(10, &name);
        layer.getAttributeAsDouble(11, &opacity);
        layer.getAttributeAsInt32(12, &width);
        layer.getAttributeAsInt32(13, &height);
        layer.getAttributeAsDouble(14, &x);
        layer.getAsDouble(&value);
        ++result.layers;
        result.nameUnits += name.size();
        result.integers += width;
        result.integers += height;
        result.doubles += opacity;
        result.doubles += x;
        result.doubles += value;
        return true;
    }
};

// The document as the object that a reader shares. The others, too, are given theirs in memory.
CFDataRef getDocumentData(const std::string& document) {
    static const CFDataRef data =
        CFDataCreate(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(document.data()),
                     static_cast<CFIndex>(document.size()));
    return data;
}

XmlReadResult readWithKestrel(const std::string& document) {
    Layers layers;
    KSXMLReadStream stream(getDocumentData(document), KSURL());
    stream.pushHandler(&layers);
    stream.parse();
    return layers.result;
}

// The same through the callbacks of the public parser: what nodes of text objects cost.
XmlReadResult parseWithCallbacks(const std::string& document) {
    CFDataRef data = getDocumentData(document);
    XmlReadResult result;
    CFXMLParserCallBacks callbacks{};
    callbacks.createXMLStructure = [](CFXMLParserRef, CFXMLNodeRef node, void* info) -> void* {
        if (CFXMLNodeGetTypeCode(node) == kCFXMLNodeTypeElement) {
            const auto* element = static_cast<const CFXMLElementInfo*>(CFXMLNodeGetInfoPtr(node));
            if (CFDictionaryGetCount(element->attributes) == 5) ++static_cast<XmlReadResult*>(info)->layers;
        }
        return info;
    };
    CFXMLParserContext context{};
    context.info = &result;
    CFXMLParserRef parser =
        CFXMLParserCreate(kCFAllocatorDefault, data, nullptr, kCFXMLParserNoOptions, 1, &callbacks, &context);
    CFXMLParserParse(parser);
    CFRelease(parser);
    return result;
}

template <auto Read>
void readXml(benchmark::State& state) {
    const std::string& document = getXmlReadDocument();
    if (Read(document) != getXmlReadExpected())
        return state.SkipWithError("differs from what is in the document");
    for (auto _ : state) benchmark::DoNotOptimize(Read(document));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(document.size()));
}

void eventsOnly(benchmark::State& state) {
    const std::string& document = getXmlReadDocument();
    if (parseWithCallbacks(document).layers != getXmlReadExpected().layers)
        return state.SkipWithError("differs from what is in the document");
    for (auto _ : state) benchmark::DoNotOptimize(parseWithCallbacks(document));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(document.size()));
}

BENCHMARK(readXml<readWithKestrel>)->Name("XmlRead/Kestrel");
BENCHMARK(eventsOnly)->Name("XmlRead/KestrelCallbacksWithoutExtraction");
#if KESTREL_PEER_PUGIXML
BENCHMARK(readXml<readWithPugixml>)->Name("XmlRead/pugixml");
#endif
#if KESTREL_PEER_LIBXML2
BENCHMARK(readXml<readWithLibxml2>)->Name("XmlRead/libxml2");
#endif
#if KESTREL_PEER_EXPAT
BENCHMARK(readXml<readWithExpat>)->Name("XmlRead/expat");
#endif

}  // namespace
