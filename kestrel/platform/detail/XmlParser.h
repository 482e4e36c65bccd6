// kestrel/platform/detail/XmlParser.h - the object behind CFXMLParserRef, and the way into it without nodes.
#pragma once

#include <kestrel/platform/CFXMLParser.h>
#include <kestrel/platform/detail/XmlEncoding.h>
#include <kestrel/platform/detail/XmlTokenizer.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

/// Runs a tokenizer over a document and keeps how that ended.
struct __CFXMLParser final : kestrel::detail::PlatformObject {
public:
    /// Keeps data and source; callbacks and context as CFXMLParserCreate says.
    __CFXMLParser(CFDataRef data, CFURLRef source, CFIndex nodeVersion, const CFXMLParserCallBacks* callbacks,
                  const CFXMLParserContext* context);
    ~__CFXMLParser() override;
    std::string describe() const override { return "XML parser"; }

    /// Parses the document into sink, once; as CFXMLParserParse, whose callbacks it leaves alone but for
    /// handleError. The sink has
    ///     bool startElement(XmlTokenizer&)                false skips the element with all it contains;
    ///                                                     may take the attributes
    ///     void endElement()                               the end of an element that was not skipped
    ///     void other(XmlEvent, const XmlTokenizer&)       everything else outside skipped elements
    /// and may call abort().
    template <typename Sink>
    bool parse(Sink& sink);
    void abort(CFXMLParserStatusCode status, std::string description);

    CFXMLParserStatusCode getStatus() const { return m_status; }
    const std::string& getErrorDescription() const { return m_description; }
    kestrel::detail::XmlLocation locate() const { return m_tokens.locate(); }
    std::size_t getOffset() const { return m_tokens.getOffset(); }
    std::size_t getSize() const { return m_text.getUtf8().size(); }
    const std::string& getEncoding() const { return m_text.getEncoding(); }
    CFURLRef getSource() const { return m_source; }
    CFIndex getNodeVersion() const { return m_nodeVersion; }
    const CFXMLParserCallBacks& getCallbacks() const { return m_callbacks; }
    void* getInfo() const { return m_context.info; }

private:
    bool finish(CFXMLParserStatusCode status);

    CFDataRef m_data;
    CFURLRef m_source;
    CFIndex m_nodeVersion;
    CFXMLParserCallBacks m_callbacks{};
    CFXMLParserContext m_context{};
    kestrel::detail::XmlEncodedText m_text;
    kestrel::detail::XmlTokenizer m_tokens;
    CFXMLParserStatusCode m_status = kCFXMLStatusParseNotBegun;
    std::string m_description;
};

template <typename Sink>
bool __CFXMLParser::parse(Sink& sink) {
    using kestrel::detail::XmlEvent;
    if (m_status != kCFXMLStatusParseNotBegun) return false;
    m_status = kCFXMLStatusParseInProgress;
    std::size_t skipped = 0;  // open elements inside, and including, one that the sink does not want
    while (m_status == kCFXMLStatusParseInProgress) {
        const XmlEvent event = m_tokens.next();
        switch (event) {
            case XmlEvent::StartElement:
                if (skipped || !sink.startElement(m_tokens)) ++skipped;
                break;
            case XmlEvent::EndElement:
                if (skipped)
                    --skipped;
                else
                    sink.endElement();
                break;
            case XmlEvent::End:
                m_status = kCFXMLStatusParseSuccessful;
                return true;
            case XmlEvent::Error:
                m_description = m_tokens.getDescription();
                return finish(static_cast<CFXMLParserStatusCode>(m_tokens.getStatus()));
            default:
                if (!skipped) sink.other(event, std::as_const(m_tokens));
        }
    }
    return finish(m_status);
}
