// kestrel/platform/detail/XmlTokenizer.h - a strict, streaming reader of XML 1.0 (fifth edition) in memory.
#pragma once

#include <kestrel/platform/CFXMLParser.h>
#include <kestrel/platform/detail/XmlNames.h>
#include <kestrel/platform/detail/XmlScan.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel::detail {

enum class XmlEvent {
    Declaration,            ///< getText(): what stands between "<?xml" and "?>"
    DocumentType,           ///< getName(); getPublicId() and getSystemId() when there are any
    StartElement,           ///< getName(), getAttributes(); an empty-element tag gives an EndElement as well
    EndElement,             ///< getName()
    Text,                   ///< getText(): one run of literal characters, never empty
    Reference,              ///< getName(): "amp", "#65", "#x41"; never expanded
    CData,                  ///< getText()
    Comment,                ///< getText()
    ProcessingInstruction,  ///< getName(), getText()
    End,                    ///< the document was well-formed to its end
    Error                   ///< getStatus(), getDescription(), locate(); every further event is an Error too
};

struct XmlAttribute {
    std::string_view name;
    std::string_view value;  ///< between the quotes, references and white space as they stand
    bool hasReferences;      ///< whether value holds an "&"
    bool hasWideName;        ///< whether name holds characters above ASCII
};

/// Where something stands in a document: both count from 1, columns in characters.
struct XmlLocation {
    std::size_t line;
    std::size_t column;
};

/// Reads a document event by event and checks its well-formedness: names, tags that match, unique
/// attributes, characters, references, comments, sections, one root, the XML declaration.
///
/// Shape      everything it hands out is a slice of the document, valid as long as the document is.
/// Kept       references are checked in form and never expanded, declared or not; nothing external is
///            loaded. White space and line ends are handed out as they stand, in attribute values too, so
///            that what a writer wrote comes back unit for unit. An internal subset is skipped: its
///            comments, instructions, declarations and literals are told apart, declarations not read.
/// Memory     a slice for each open element and for each attribute of the current tag.
/// Errors     the first one ends the document. It is reported after every event that ends before it.
/// Source     Extensible Markup Language (XML) 1.0, fifth edition; numbers in brackets are productions.
/// Example
///     XmlTokenizer tokens("<a b='1'>text</a>");
///     while (tokens.next() < XmlEvent::End) ...
class XmlTokenizer {
public:
    /// Reads document, which is in UTF-8 (a byte order mark is skipped). If cutStatus is not 0, the
    /// document is only what could be converted: what follows it is reported as cutReason.
    explicit XmlTokenizer(std::string_view document, CFIndex cutStatus = 0, std::string cutReason = {});

    XmlEvent next();

    std::string_view getName() const { return m_name; }
    std::string_view getText() const { return m_text; }
    const std::vector<XmlAttribute>& getAttributes() const { return m_attributes; }
    /// Hands the attributes over, for a vector whose memory is used for those of later tags.
    void swapAttributes(std::vector<XmlAttribute>& other) { m_attributes.swap(other); }
    /// Whether the start tag that was read last was an empty-element tag.
    bool isEmptyElement() const { return m_emptyElement; }
    std::string_view getPublicId() const { return m_publicId; }
    std::string_view getSystemId() const { return m_systemId; }
    /// The number of elements that are open.
    std::size_t getDepth() const { return m_open.size(); }

    CFIndex getStatus() const { return m_status; }
    const std::string& getDescription() const { return m_description; }
    /// Where the event that was read last starts, or where the error is. Asking in document order costs
    /// one pass over the document in all.
    XmlLocation locate() const;
    /// The same place as a number of bytes from the start of the text.
    std::size_t getOffset() const { return static_cast<std::size_t>(m_eventStart - m_begin); }

private:
    enum class Stage { Start, Prolog, AfterDocumentType, Content, Epilog, Done };

    [[gnu::always_inline]] inline XmlEvent scan();
    XmlEvent scanOutsideRoot();
    XmlEvent scanStartTag();
    XmlEvent scanEndTag();
    XmlEvent scanText();
    XmlEvent scanComment();
    XmlEvent scanCData();
    XmlEvent scanInstruction();
    [[gnu::always_inline]] inline bool scanAttribute(const char*& place);
    const char* findValue(const char* nameEnd, std::string_view name);
    bool checkAttributeNames();
    const char* scanReference(const char* ampersand);
    const char* scanCharacterReference(const char* ampersand);

    // The prolog, in XmlProlog.cpp.
    XmlEvent scanDeclaration();
    XmlEvent scanDocumentType();
    const char* skipInternalSubset(const char* place);
    const char* skipSubsetDeclaration(const char* place);
    const char* skipLiteral(const char* quote);
    const char* skipExternalId(const char* place);
    const char* skipComment(const char* place);
    const char* skipInstruction(const char* place);

    [[gnu::cold]] XmlEvent fail(CFIndex status, const char* place, std::string description);
    [[gnu::cold]] const char* failAt(CFIndex status, const char* place, std::string description) {
        fail(status, place, std::move(description));
        return nullptr;
    }

    // The byte at place, 0 (which no document may hold) at the end.
    char at(const char* place) const { return place < m_end ? *place : '\0'; }
    bool startsWith(const char* place, std::string_view text) const {
        return std::string_view(place, static_cast<std::size_t>(m_end - place)).starts_with(text);
    }
    const char* find(const char* place, std::string_view text) const;
    const char* skipSpace(const char* place) const {
        while (place < m_end && isXmlByte(*place, xmlBlank)) ++place;
        return place;
    }
    // The end of the name at place; place itself where none starts.
    const char* skipName(const char* place) const {
        const char* end = place;
        if (end < m_end && isXmlByte(*end, xmlNameStart))
            while (++end < m_end && isXmlByte(*end, xmlName)) {
            }
        const bool isAscii = end == m_end || static_cast<unsigned char>(*end) < 0x80;
        return isAscii ? end : skipWideName(place);
    }
    // The same in a start tag, where names are looked at once and in order; whether it is a wide name.
    const char* skipTagName(const char* place, bool& isWide) {
        const bool isName = place < m_end && isXmlByte(*place, xmlNameStart);
        const char* end = isName ? m_scanner.findNameEnd(place + 1) : place;
        isWide = end < m_end && static_cast<unsigned char>(*end) >= 0x80;
        return isWide ? skipWideName(place) : end;
    }
    const char* skipWideName(const char* place) const;
    static std::string_view slice(const char* from, const char* to) {
        return {from, static_cast<std::size_t>(to - from)};
    }

    const char* m_begin;
    const char* m_end;
    const char* m_position;
    const char* m_eventStart;
    XmlScanner m_scanner;
    Stage m_stage = Stage::Start;
    bool m_emptyElement = false;
    bool m_endPending = false;  // an empty-element tag was read, its end is the next event
    std::string_view m_name;
    std::string_view m_text;
    std::string_view m_publicId;
    std::string_view m_systemId;
    std::vector<XmlAttribute> m_attributes;
    std::uint64_t m_nameSigns = 0;  // of the attributes' names
    bool m_namesMayRepeat = false;
    std::vector<std::string_view> m_open;
    std::vector<std::string_view> m_sortedNames;  // scratch of checkAttributeNames
    CFIndex m_status = 0;
    std::string m_description;
    CFIndex m_cutStatus;
    std::string m_cutReason;
    mutable const char* m_located;  // how far locate() has counted
    mutable XmlLocation m_location{1, 1};
};

}  // namespace kestrel::detail
