#include <kestrel/platform/CFXMLParser.h>

#include <kestrel/platform/CFData.h>
#include <kestrel/platform/CFURL.h>
#include <kestrel/platform/detail/StringObject.h>
#include <kestrel/platform/detail/TextEncoding.h>
#include <kestrel/platform/detail/Utf8.h>
#include <kestrel/platform/detail/XmlNode.h>
#include <kestrel/platform/detail/XmlParser.h>

#include <vector>

using kestrel::detail::XmlAttribute;
using kestrel::detail::XmlEvent;
using kestrel::detail::XmlTokenizer;

namespace {

std::string_view bytesOf(CFDataRef data) {
    return {reinterpret_cast<const char*>(CFDataGetBytePtr(data)),
            static_cast<std::size_t>(CFDataGetLength(data))};
}

CFStringRef makeString(std::string_view utf8) {
    return CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(utf8.data()),
                                   static_cast<CFIndex>(utf8.size()), kCFStringEncodingUTF8, false);
}

CFDictionaryRef makeAttributes(const std::vector<XmlAttribute>& attributes) {
    std::vector<const void*> keys, values;
    for (const XmlAttribute& attribute : attributes) {
        keys.push_back(makeString(attribute.name));
        values.push_back(makeString(attribute.value));
    }
    CFDictionaryRef dictionary =
        CFDictionaryCreate(kCFAllocatorDefault, keys.data(), values.data(), static_cast<CFIndex>(keys.size()),
                           &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    for (const void* key : keys) CFRelease(key);
    for (const void* value : values) CFRelease(value);
    return dictionary;
}

CFStringRef makeIdentifier(std::string_view literal) {
    return literal.data() ? makeString(literal) : nullptr;
}

// Turns events into nodes and hands them to the callbacks.
class NodeSink {
public:
    explicit NodeSink(CFXMLParserRef parser) : m_parser(parser), m_callbacks(parser->getCallbacks()) {}

    void startDocument() {
        const CFXMLDocumentInfo info{m_parser->getSource(),
                                     kestrel::detail::encodingOfName(m_parser->getEncoding().c_str())};
        m_structures.push_back(create(kCFXMLNodeTypeDocument, {}, info));
    }
    void endDocument() { end(m_structures.front()); }

    bool startElement(const XmlTokenizer& tokens) {
        const CFXMLElementInfo info{makeAttributes(tokens.getAttributes()), tokens.isEmptyElement()};
        void* structure = create(kCFXMLNodeTypeElement, tokens.getName(), info);
        if (!structure) return false;
        addChild(structure);
        m_structures.push_back(structure);
        return true;
    }
    void endElement() {
        void* structure = m_structures.back();
        m_structures.pop_back();
        end(structure);
    }
    void other(XmlEvent event, const XmlTokenizer& tokens) {
        void* structure = createLeaf(event, tokens);
        if (!structure) return;
        addChild(structure);
        end(structure);
    }

private:
    void* createLeaf(XmlEvent event, const XmlTokenizer& tokens) {
        switch (event) {
            case XmlEvent::Text: {
                const bool isBlank = tokens.getText().find_first_not_of(" \t\r\n") == std::string_view::npos;
                return create(isBlank ? kCFXMLNodeTypeWhitespace : kCFXMLNodeTypeText, tokens.getText(), {});
            }
            case XmlEvent::Reference:
                return create(
                    kCFXMLNodeTypeEntityReference, tokens.getName(),
                    CFXMLEntityReferenceInfo{tokens.getName()[0] == '#' ? kCFXMLEntityTypeCharacter
                                                                        : kCFXMLEntityTypeParsedInternal});
            case XmlEvent::CData:
                return create(kCFXMLNodeTypeCDATASection, tokens.getText(), {});
            case XmlEvent::Comment:
                return create(kCFXMLNodeTypeComment, tokens.getText(), {});
            case XmlEvent::DocumentType:
                return create(kCFXMLNodeTypeDocumentType, tokens.getName(),
                              CFXMLDocumentTypeInfo{{makeIdentifier(tokens.getSystemId()),
                                                     makeIdentifier(tokens.getPublicId())}});
            default:  // instructions, and the declaration, which is one for the callbacks
                return create(kCFXMLNodeTypeProcessingInstruction, tokens.getName(),
                              CFXMLProcessingInstructionInfo{makeString(tokens.getText())});
        }
    }

    void* create(CFXMLNodeTypeCode kind, std::string_view string, __CFXMLNode::Info info) {
        const auto* node = new __CFXMLNode(kind, makeString(string), info, m_parser->getNodeVersion());
        void* structure = m_callbacks.createXMLStructure
                              ? m_callbacks.createXMLStructure(m_parser, node, m_parser->getInfo())
                              : nullptr;
        CFRelease(node);
        return structure;
    }
    void addChild(void* child) {
        void* parent = m_structures.back();
        if (parent && m_callbacks.addChild)
            m_callbacks.addChild(m_parser, parent, child, m_parser->getInfo());
    }
    void end(void* structure) {
        if (structure && m_callbacks.endXMLStructure)
            m_callbacks.endXMLStructure(m_parser, structure, m_parser->getInfo());
    }

    CFXMLParserRef m_parser;
    const CFXMLParserCallBacks& m_callbacks;
    std::vector<void*> m_structures;  // the document's, then those of the open elements
};

}  // namespace

__CFXMLParser::__CFXMLParser(CFDataRef data, CFURLRef source, CFIndex nodeVersion,
                             const CFXMLParserCallBacks* callbacks, const CFXMLParserContext* context)
    : m_data(static_cast<CFDataRef>(CFRetain(data))),
      m_source(static_cast<CFURLRef>(CFRetain(source))),
      m_nodeVersion(nodeVersion),
      m_text(bytesOf(data)),
      m_tokens(m_text.getUtf8(), m_text.getStatus(), m_text.getReason()) {
    if (callbacks) m_callbacks = *callbacks;
    if (context) m_context = *context;
    if (m_context.retain) m_context.retain(m_context.info);
}

__CFXMLParser::~__CFXMLParser() {
    if (m_context.release) m_context.release(m_context.info);
    CFRelease(m_source);
    CFRelease(m_data);
}

void __CFXMLParser::abort(CFXMLParserStatusCode status, std::string description) {
    if (m_status != kCFXMLStatusParseInProgress && m_status != kCFXMLStatusParseNotBegun) return;
    m_status = status;
    m_description = std::move(description);
}

bool __CFXMLParser::finish(CFXMLParserStatusCode status) {
    m_status = status;
    if (m_callbacks.handleError) m_callbacks.handleError(this, status, m_context.info);
    return false;
}

CFXMLParserRef CFXMLParserCreate(CFAllocatorRef, CFDataRef data, CFURLRef source, CFOptionFlags,
                                 CFIndex nodeVersion, const CFXMLParserCallBacks* callbacks,
                                 const CFXMLParserContext* context) {
    return data ? new __CFXMLParser(data, source, nodeVersion, callbacks, context) : nullptr;
}

Boolean CFXMLParserParse(CFXMLParserRef parser) {
    if (!parser || parser->getStatus() != kCFXMLStatusParseNotBegun) return false;
    NodeSink sink(parser);
    sink.startDocument();
    if (!parser->parse(sink)) return false;
    sink.endDocument();
    return true;
}

void CFXMLParserAbort(CFXMLParserRef parser, CFXMLParserStatusCode status, CFStringRef description) {
    if (parser) parser->abort(status, kestrel::detail::utf8Of(kestrel::detail::unitsOf(description)));
}

CFXMLParserStatusCode CFXMLParserGetStatusCode(CFXMLParserRef parser) {
    return parser ? parser->getStatus() : kCFXMLErrorNoData;
}

CFStringRef CFXMLParserCopyErrorDescription(CFXMLParserRef parser) {
    return makeString(parser ? std::string_view(parser->getErrorDescription()) : std::string_view());
}

CFIndex CFXMLParserGetLineNumber(CFXMLParserRef parser) {
    return parser ? static_cast<CFIndex>(parser->locate().line) : 0;
}

CFIndex CFXMLParserGetLocation(CFXMLParserRef parser) {
    return parser ? static_cast<CFIndex>(parser->locate().column) : 0;
}

CFURLRef CFXMLParserGetSourceURL(CFXMLParserRef parser) { return parser ? parser->getSource() : nullptr; }
