// kestrel/platform/detail/XmlEncoding.h - a document in any encoding, as UTF-8.
#pragma once

#include <kestrel/platform/CFXMLParser.h>

#include <string>
#include <string_view>

namespace kestrel::detail {

/// The text of an XML document in UTF-8: its own bytes when they are UTF-8, else converted as a whole.
///
/// The encoding is that of a byte order mark, else that of the first bytes (UTF-16, UTF-32, EBCDIC), else
/// what the XML declaration says, else UTF-8. A mark has the last word over a declaration.
///
/// Ownership  borrows bytes, which must outlive it and what it hands out.
/// Errors     an unknown encoding leaves an empty text; bytes that the encoding does not know leave the
///            text up to them. getStatus() and getReason() say what happened.
/// Source     XML 1.0, fifth edition, 4.3.3 and appendix F.
class XmlEncodedText {
public:
    explicit XmlEncodedText(std::string_view bytes);
    XmlEncodedText(const XmlEncodedText&) = delete;
    XmlEncodedText& operator=(const XmlEncodedText&) = delete;

    std::string_view getUtf8() const { return m_isConverted ? std::string_view(m_converted) : m_bytes; }
    const std::string& getEncoding() const { return m_encoding; }
    CFIndex getStatus() const { return m_status; }
    const std::string& getReason() const { return m_reason; }

private:
    void convert();

    std::string_view m_bytes;
    bool m_isConverted = false;
    std::string m_converted;
    std::string m_encoding;
    CFIndex m_status = kCFXMLStatusParseSuccessful;
    std::string m_reason;
};

}  // namespace kestrel::detail
