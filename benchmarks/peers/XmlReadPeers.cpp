// The job of XmlReadJob.h on other libraries, each in the fastest way that it offers.
#include "XmlReadJob.h"

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace {

double toDouble(std::string_view text) {
    double value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

void addAttribute(XmlReadResult& result, std::string_view name, std::string_view value) {
    if (name == "name") {
        ++result.layers;
        result.nameUnits += std::string(value).size();
    } else if (name == "width" || name == "height") {
        int number = 0;
        std::from_chars(value.data(), value.data() + value.size(), number);
        result.integers += number;
    } else if (name == "opacity" || name == "x") {
        result.doubles += toDouble(value);
    }
}

}  // namespace

#if KESTREL_PEER_EXPAT
#include <expat.h>

namespace {
struct ExpatState {
    XmlReadResult result;
    std::string value;
    bool isLayer = false;
};
}  // namespace

XmlReadResult readWithExpat(const std::string& document) {
    ExpatState state;
    XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetUserData(parser, &state);
    XML_SetElementHandler(
        parser,
        [](void* data, const char* name, const char** attributes) {
            auto& s = *static_cast<ExpatState*>(data);
            s.isLayer = std::strcmp(name, "layer") == 0;
            s.value.clear();
            if (!s.isLayer) return;
            for (; *attributes; attributes += 2) addAttribute(s.result, attributes[0], attributes[1]);
        },
        [](void* data, const char*) {
            auto& s = *static_cast<ExpatState*>(data);
            if (s.isLayer) s.result.doubles += toDouble(s.value);
            s.isLayer = false;
        });
    XML_SetCharacterDataHandler(parser, [](void* data, const char* text, int size) {
        static_cast<ExpatState*>(data)->value.append(text, static_cast<std::size_t>(size));
    });
    XML_Parse(parser, document.data(), static_cast<int>(document.size()), 1);
    XML_ParserFree(parser);
    return state.result;
}
#endif

#if KESTREL_PEER_PUGIXML
#include <pugixml.hpp>

XmlReadResult readWithPugixml(const std::string& document) {
    XmlReadResult result;
    pugi::xml_document tree;
    if (!tree.load_buffer(document.data(), document.size())) return result;
    for (const pugi::xml_node layer : tree.document_element().children("layer")) {
        for (const pugi::xml_attribute attribute : layer.attributes())
            addAttribute(result, attribute.name(), attribute.value());
        result.doubles += toDouble(layer.child_value());
    }
    return result;
}
#endif

#if KESTREL_PEER_LIBXML2
#include <libxml/xmlreader.h>

XmlReadResult readWithLibxml2(const std::string& document) {
    XmlReadResult result;
    xmlTextReaderPtr reader = xmlReaderForMemory(document.data(), static_cast<int>(document.size()), nullptr,
                                                 nullptr, XML_PARSE_HUGE);
    const auto text = [](const xmlChar* chars) {
        return chars ? std::string_view(reinterpret_cast<const char*>(chars)) : std::string_view();
    };
    bool isLayer = false;
    while (xmlTextReaderRead(reader) == 1) {
        const int type = xmlTextReaderNodeType(reader);
        if (type == XML_READER_TYPE_ELEMENT) {
            isLayer = text(xmlTextReaderConstName(reader)) == "layer";
            while (isLayer && xmlTextReaderMoveToNextAttribute(reader) == 1)
                addAttribute(result, text(xmlTextReaderConstName(reader)),
                             text(xmlTextReaderConstValue(reader)));
        } else if (type == XML_READER_TYPE_TEXT && isLayer) {
            result.doubles += toDouble(text(xmlTextReaderConstValue(reader)));
        } else if (type == XML_READER_TYPE_END_ELEMENT) {
            isLayer = false;
        }
    }
    xmlFreeTextReader(reader);
    return result;
}
#endif
