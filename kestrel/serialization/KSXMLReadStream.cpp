#include <kestrel/serialization/KSXMLReadStream.h>

#include <kestrel/platform/CFURL.h>
#include <kestrel/platform/detail/XmlParser.h>
#include <kestrel/platform/detail/XmlReferences.h>

#include <algorithm>
#include <array>
#include <cstdio>

using kestrel::detail::XmlEvent;
using kestrel::detail::XmlTokenizer;

namespace {

constexpr std::size_t longestElementName = 511;  // longer names belong to no scope

bool isElementName(std::string_view name) {
    return name.size() <= longestElementName &&
           std::all_of(name.begin(), name.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

struct NamedText {
    std::string_view name;
    std::string_view text;
};
constexpr auto namedTexts = std::to_array<NamedText>(
    {{"amp", "&"}, {"lt", "<"}, {"gt", ">"}, {"quot", "\""}, {"apos", "'"}, {"space", " "}});

// What a reference gives inside text.
std::string textOfReference(std::string_view name) {
    if (name.starts_with('#')) {
        const auto code = static_cast<unsigned char>(kestrel::detail::xmlReferencedCharacter(name) & 0xFF);
        if (code < 0x80) return {static_cast<char>(code)};
        return {static_cast<char>(0xC0 | code >> 6), static_cast<char>(0x80 | (code & 0x3F))};
    }
    for (const NamedText& named : namedTexts)
        if (named.name == name) return std::string(named.text);
    return {};
}

}  // namespace

/// Turns the parser's events into elements. It takes them straight from the parser, where the callbacks of
/// CFXMLParser would have each name and value made into text objects first.
class KSXMLReadStream::Reader {
public:
    explicit Reader(KSXMLReadStream& stream) : m_stream(stream) {}

    bool startElement(XmlTokenizer& tokens) {
        KSStreamElement* parent = m_stream.currentElement();
        if (parent && !parent->isProcessed()) m_stream.processElement(*parent);

        const std::string_view tag = tokens.getName();
        if (!isElementName(tag)) return false;
        std::array<char, longestElementName + 1> name;
        *std::copy(tag.begin(), tag.end(), name.begin()) = '\0';
        KSStreamElement* element = m_stream.getElementInfo(name.data());
        if (!element) return false;
        m_stream.pushElement(element);
        tokens.swapAttributes(element->m_slices);
        return true;
    }

    void endElement() {
        if (KSStreamElement* element = m_stream.currentElement()) {
            if (!element->isProcessed()) m_stream.processElement(*element);
            // Several handlers may have been pushed while this element was processed.
            while (m_stream.currentHandlerElement() == element) m_stream.popHandler();
            m_stream.popElement();
        }
        m_stream.m_afterEntity = false;
    }

    void other(XmlEvent event, const XmlTokenizer& tokens) {
        KSStreamElement* element = m_stream.currentElement();
        if (!element) return;
        if (event == XmlEvent::Text) {
            element->appendSlice(tokens.getText(), !m_stream.m_afterEntity);
            m_stream.m_afterEntity = false;
        } else if (event == XmlEvent::Reference) {
            element->appendText(textOfReference(tokens.getName()));
            m_stream.m_afterEntity = true;
        }
    }

private:
    KSXMLReadStream& m_stream;
};

KSXMLReadStream::KSXMLReadStream(const KSURL& url) : m_url(url) {
    CFURLCreateDataAndPropertiesFromResource(kCFAllocatorDefault, m_url.cf_url(), &m_document, nullptr,
                                             nullptr, nullptr);
    createParser();
}

KSXMLReadStream::KSXMLReadStream(CFDataRef document, const KSURL& url)
    : m_document(static_cast<CFDataRef>(CFRetain(document))), m_url(url) {
    createParser();
}

KSXMLReadStream::~KSXMLReadStream() {
    CFRelease(m_parser);
    CFRelease(m_document);
}

void KSXMLReadStream::createParser() {
    CFXMLParserCallBacks callbacks{};
    callbacks.handleError = &KSXMLReadStream::handleError;
    CFXMLParserContext context{};
    context.info = this;
    m_parser = CFXMLParserCreate(kCFAllocatorDefault, m_document, m_url.cf_url(), kCFXMLParserNoOptions, 1,
                                 &callbacks, &context);
}

bool KSXMLReadStream::parse() {
    Reader reader(*this);
    bool done = m_parser && m_parser->parse(reader);
    if (!done && m_parser) done = CFXMLParserGetStatusCode(m_parser) == kCFXMLStatusParseSuccessful;
    m_afterEntity = false;
    popAllHandlers();
    return done;
}

void KSXMLReadStream::abortParse() {
    CFXMLParserAbort(m_parser, kCFXMLErrorMalformedDocument, CFSTR("Parse Aborted"));
}

void KSXMLReadStream::stopParse() {
    CFXMLParserAbort(m_parser, kCFXMLStatusParseSuccessful, CFSTR("Parse Stopped"));
}

std::size_t KSXMLReadStream::getOffset() const { return m_parser ? m_parser->getOffset() : 0; }

std::size_t KSXMLReadStream::getSize() const { return m_parser ? m_parser->getSize() : 0; }

KSString KSXMLReadStream::getErrorDescription() const {
    CFStringRef text = CFXMLParserCopyErrorDescription(m_parser);
    KSString description(text);
    CFRelease(text);
    return description;
}

Boolean KSXMLReadStream::handleError(CFXMLParserRef parser, CFXMLParserStatusCode status, void* info) {
    if (status == kCFXMLStatusParseSuccessful) return false;
    const auto place = parser->locate();
    std::fprintf(stderr, "Parse error (%d) %s on line %d, character %d\n", static_cast<int>(status),
                 parser->getErrorDescription().c_str(), static_cast<int>(place.line),
                 static_cast<int>(place.column));
    static_cast<KSXMLReadStream*>(info)->m_url.debugShow();
    return false;
}
