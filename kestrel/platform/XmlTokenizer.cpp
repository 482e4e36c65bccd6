#include <kestrel/platform/detail/XmlTokenizer.h>

#include <kestrel/platform/detail/XmlNames.h>
#include <kestrel/platform/detail/XmlReferences.h>

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace kestrel::detail {
namespace {

// A message from its pieces; names in it are cut where nobody would read on.
std::string joined(std::initializer_list<std::string_view> pieces) {
    std::string message;
    for (const std::string_view piece : pieces) message.append(piece.substr(0, 100));
    return message;
}

}  // namespace

XmlTokenizer::XmlTokenizer(std::string_view document, CFIndex cutStatus, std::string cutReason)
    : m_begin(document.data() + (document.starts_with("\xEF\xBB\xBF") ? 3 : 0)),
      m_end(document.data() + document.size()),
      m_position(m_begin),
      m_eventStart(m_begin),
      m_scanner(slice(m_begin, m_end)),
      m_cutStatus(cutStatus),
      m_cutReason(std::move(cutReason)),
      m_located(m_begin) {}

inline XmlEvent XmlTokenizer::scan() {
    if (m_stage != Stage::Content) return scanOutsideRoot();
    switch (at(m_position)) {
        case '<':
            switch (at(m_position + 1)) {
                case '/':
                    return scanEndTag();
                case '?':
                    return scanInstruction();
                case '!':
                    if (startsWith(m_position, "<!--")) return scanComment();
                    if (startsWith(m_position, "<![CDATA[")) return scanCData();
                    return fail(kCFXMLErrorMalformedDocument, m_position,
                                "\"<!\" starts neither a comment nor a CDATA section");
                default:
                    return scanStartTag();
            }
        case '&': {
            const char* after = scanReference(m_position);
            if (!after) return XmlEvent::Error;
            m_name = slice(m_position + 1, after - 1);
            m_position = after;
            return XmlEvent::Reference;
        }
        default:
            return scanText();
    }
}

XmlEvent XmlTokenizer::next() {
    if (m_endPending) {  // the name is still that of the empty-element tag
        m_endPending = false;
        m_open.pop_back();
        if (m_open.empty()) m_stage = Stage::Epilog;
        return XmlEvent::EndElement;
    }
    if (m_stage == Stage::Done) return m_status ? XmlEvent::Error : XmlEvent::End;
    m_eventStart = m_position;
    const XmlEvent event = scan();
    // An event is only good once the characters in it are.
    if (event != XmlEvent::Error && m_scanner.findInvalid(m_position))
        return fail(kCFXMLErrorMalformedDocument, m_position, {});
    return event;
}

XmlEvent XmlTokenizer::scanOutsideRoot() {
    if (m_stage == Stage::Start) {
        m_stage = Stage::Prolog;
        if (startsWith(m_position, "<?xml") && isXmlByte(at(m_position + 5), xmlBlank))
            return scanDeclaration();
    }
    m_position = m_eventStart = skipSpace(m_position);
    if (m_position == m_end) {
        if (m_cutStatus || m_stage != Stage::Epilog)
            return fail(m_begin == m_end ? kCFXMLErrorNoData : kCFXMLErrorElementlessDocument, m_position,
                        m_begin == m_end ? "the document is empty" : "the document has no element");
        m_stage = Stage::Done;
        return XmlEvent::End;
    }
    if (startsWith(m_position, "<!--")) return scanComment();
    if (startsWith(m_position, "<?")) return scanInstruction();
    if (startsWith(m_position, "<!DOCTYPE")) {
        if (m_stage == Stage::Prolog) return scanDocumentType();
        return fail(kCFXMLErrorMalformedDTD, m_position,
                    "a document type declaration stands once, before the root element");
    }
    if (*m_position != '<')
        return fail(kCFXMLErrorMalformedDocument, m_position, "text outside the root element");
    const char second = at(m_position + 1);
    if (second == '!')
        return fail(kCFXMLErrorMalformedDocument, m_position,
                    "\"<!\" starts neither a comment nor a document type");
    if (m_stage == Stage::Epilog)
        return fail(kCFXMLErrorMalformedDocument, m_position, "a second root element");
    if (second == '/')
        return fail(kCFXMLErrorMalformedCloseTag, m_position, "an end tag before any start tag");
    m_stage = Stage::Content;
    return scanStartTag();
}

// [41]: reads one attribute at place and moves place behind it. False after a failure.
inline bool XmlTokenizer::scanAttribute(const char*& place) {
    bool isWide = false;
    const char* nameEnd = skipTagName(place, isWide);
    if (nameEnd == place)
        return failAt(kCFXMLErrorMalformedStartTag, place, "an attribute's name or \">\" is expected");
    const std::string_view name = slice(place, nameEnd);
    const char* value = startsWith(nameEnd, "=\"") ? nameEnd + 1 : findValue(nameEnd, name);
    if (!value) return false;
    const char quote = *value++;
    bool hasReferences = false;
    const char* end = value;
    for (;;) {
        end = m_scanner.findQuote(end);
        const char c = at(end);
        if (c == quote) break;
        if (c == '&') {
            hasReferences = true;
            end = scanReference(end);
            if (!end) return false;
        } else if (c == '<' || end == m_end) {
            return failAt(kCFXMLErrorMalformedStartTag, end,
                          joined({"\"<\" in the value of attribute \"", name, "\""}));
        } else {
            ++end;  // the other quote
        }
    }
    // Names whose signs differ differ: most tags need no closer look.
    const std::uint64_t sign = std::uint64_t{1}
                               << ((static_cast<unsigned char>(name[0]) + 5 * name.size()) % 64);
    m_namesMayRepeat |= (m_nameSigns & sign) != 0;
    m_nameSigns |= sign;
    m_attributes.push_back({name, slice(value, end), hasReferences, isWide});
    place = end + 1;
    return true;
}

XmlEvent XmlTokenizer::scanStartTag() {
    bool isWide = false;
    const char* nameEnd = skipTagName(m_position + 1, isWide);
    if (nameEnd == m_position + 1)
        return fail(kCFXMLErrorMalformedStartTag, nameEnd, "\"<\" is not followed by an element's name");
    const std::string_view name = slice(m_position + 1, nameEnd);
    m_attributes.clear();
    m_nameSigns = 0;
    m_namesMayRepeat = false;
    const char* place = nameEnd;
    for (;;) {
        const char* afterSpace = skipSpace(place);
        const char c = at(afterSpace);
        if (c == '>') {
            m_emptyElement = false;
            m_position = afterSpace + 1;
            break;
        }
        if (c == '/') {
            if (at(afterSpace + 1) != '>')
                return fail(kCFXMLErrorMalformedStartTag, afterSpace + 1,
                            "\"/\" in a tag is not followed by \">\"");
            m_emptyElement = true;
            m_position = afterSpace + 2;
            break;
        }
        if (afterSpace == place)
            return fail(kCFXMLErrorMalformedStartTag, place,
                        "white space or \">\" is missing in a start tag");
        place = afterSpace;
        if (!scanAttribute(place)) return XmlEvent::Error;
    }
    if (m_namesMayRepeat && !checkAttributeNames()) return XmlEvent::Error;
    m_open.push_back(name);
    m_endPending = m_emptyElement;
    m_name = name;
    return XmlEvent::StartElement;
}

// The quote that opens the value of the attribute whose name ends at nameEnd. Null after a failure.
const char* XmlTokenizer::findValue(const char* nameEnd, std::string_view name) {
    const char* equals = skipSpace(nameEnd);
    if (at(equals) != '=')
        return failAt(kCFXMLErrorMalformedStartTag, equals,
                      joined({"attribute \"", name, "\" is not followed by \"=\""}));
    const char* value = skipSpace(equals + 1);
    if (at(value) != '"' && at(value) != '\'')
        return failAt(kCFXMLErrorMalformedStartTag, value,
                      joined({"the value of attribute \"", name, "\" is not quoted"}));
    return value;
}

// No name may stand twice in a tag. False after a failure.
bool XmlTokenizer::checkAttributeNames() {
    constexpr std::size_t few = 12;  // so many are compared with each other, more are sorted first
    const XmlAttribute* twice = nullptr;
    if (m_attributes.size() <= few) {
        for (std::size_t i = 1; i < m_attributes.size(); ++i)
            for (std::size_t j = 0; j < i; ++j)
                if (m_attributes[i].name == m_attributes[j].name) twice = &m_attributes[i];
    } else {
        m_sortedNames.clear();
        for (const XmlAttribute& attribute : m_attributes) m_sortedNames.push_back(attribute.name);
        std::sort(m_sortedNames.begin(), m_sortedNames.end());
        const auto same = std::adjacent_find(m_sortedNames.begin(), m_sortedNames.end());
        if (same != m_sortedNames.end())
            twice = &*std::find_if(m_attributes.rbegin(), m_attributes.rend(),
                                   [&](const XmlAttribute& attribute) { return attribute.name == *same; });
    }
    if (!twice) return true;
    return failAt(kCFXMLErrorMalformedStartTag, twice->name.data(),
                  joined({"attribute \"", twice->name, "\" stands twice"}));
}

XmlEvent XmlTokenizer::scanEndTag() {
    const char* begin = m_position + 2;
    const std::string_view expected = m_open.back();
    const char* nameEnd = nullptr;
    if (startsWith(begin, expected) && at(begin + expected.size()) == '>') {
        nameEnd = begin + expected.size();
    } else {
        nameEnd = skipName(begin);
        if (nameEnd == begin || nameEnd == m_end)
            return fail(kCFXMLErrorMalformedCloseTag, nameEnd, "\"</\" is not followed by an element's name");
        if (slice(begin, nameEnd) != expected)
            return fail(
                kCFXMLErrorMalformedCloseTag, m_position,
                joined({"\"</", slice(begin, nameEnd), ">\" where \"</", expected, ">\" is expected"}));
    }
    const char* close = skipSpace(nameEnd);
    if (at(close) != '>')
        return fail(kCFXMLErrorMalformedCloseTag, close, "an end tag does not end with \">\"");
    m_position = close + 1;
    m_name = expected;
    m_open.pop_back();
    if (m_open.empty()) m_stage = Stage::Epilog;
    return XmlEvent::EndElement;
}

XmlEvent XmlTokenizer::scanText() {
    const char* end = m_scanner.findMarkup(m_position);
    while (at(end) == ']') {
        if (startsWith(end, "]]>"))
            return fail(kCFXMLErrorMalformedParsedCharacterData, end, "\"]]>\" in text");
        end = m_scanner.findMarkup(end + 1);
    }
    if (end == m_end) return fail(kCFXMLErrorUnexpectedEOF, end, {});
    m_text = slice(m_position, end);
    m_position = end;
    return XmlEvent::Text;
}

XmlEvent XmlTokenizer::scanComment() {
    const char* after = skipComment(m_position);
    if (!after) return XmlEvent::Error;
    m_text = slice(m_position + 4, after - 3);
    m_position = after;
    return XmlEvent::Comment;
}

XmlEvent XmlTokenizer::scanCData() {
    const char* text = m_position + 9;
    const char* close = find(text, "]]>");
    if (close == m_end) return fail(kCFXMLErrorUnexpectedEOF, close, {});
    m_text = slice(text, close);
    m_position = close + 3;
    return XmlEvent::CData;
}

XmlEvent XmlTokenizer::scanInstruction() {
    const char* after = skipInstruction(m_position);
    if (!after) return XmlEvent::Error;
    m_name = slice(m_position + 2, skipName(m_position + 2));
    const char* text = std::min(skipSpace(m_name.data() + m_name.size()), after - 2);
    m_text = slice(text, after - 2);
    m_position = after;
    return XmlEvent::ProcessingInstruction;
}

// [67]: checks the reference at ampersand. The place behind its ";", null after a failure.
const char* XmlTokenizer::scanReference(const char* ampersand) {
    if (at(ampersand + 1) == '#') return scanCharacterReference(ampersand);
    const char* end = skipName(ampersand + 1);
    if (end == ampersand + 1 || at(end) != ';')
        return failAt(kCFXMLErrorMalformedParsedCharacterData, end == ampersand + 1 ? ampersand : end,
                      "\"&\" starts no reference");
    return end + 1;
}

// [66]
const char* XmlTokenizer::scanCharacterReference(const char* ampersand) {
    const char* const digits = ampersand + (at(ampersand + 2) == 'x' ? 3 : 2);
    const char* end = digits;
    while (isXmlByte(at(end), xmlHexDigit)) ++end;
    if (end == digits || at(end) != ';')
        return failAt(kCFXMLErrorMalformedCharacterReference, end,
                      "a character reference is not of digits and \";\"");
    if (xmlReferencedCharacter(slice(ampersand + 1, end)) == 0)
        return failAt(kCFXMLErrorMalformedCharacterReference, ampersand,
                      joined({"\"", slice(ampersand, end + 1), "\" refers to no character of XML"}));
    return end + 1;
}

// [15]: the place behind the comment that starts at place, null after a failure.
const char* XmlTokenizer::skipComment(const char* place) {
    const char* hyphens = find(place + 4, "--");
    const bool isCutShort = m_end - hyphens <= 2;
    if (isCutShort || hyphens[2] != '>')
        return failAt(kCFXMLErrorMalformedComment, isCutShort ? m_end : hyphens, "\"--\" in a comment");
    return hyphens + 3;
}

// [16], [17]: the place behind the instruction that starts at place, null after a failure.
const char* XmlTokenizer::skipInstruction(const char* place) {
    const char* nameEnd = skipName(place + 2);
    if (nameEnd == place + 2)
        return failAt(kCFXMLErrorMalformedProcessingInstruction, nameEnd,
                      "\"<?\" is not followed by the target's name");
    const auto isLetter = [&](int i, char lower) { return (place[2 + i] | 0x20) == lower; };
    if (nameEnd - place == 5 && isLetter(0, 'x') && isLetter(1, 'm') && isLetter(2, 'l'))
        return failAt(kCFXMLErrorMalformedProcessingInstruction, place,
                      "an XML declaration stands only at the very start of a document");
    if (!startsWith(nameEnd, "?>") && !isXmlByte(at(nameEnd), xmlBlank))
        return failAt(kCFXMLErrorMalformedProcessingInstruction, nameEnd,
                      "white space or \"?>\" is missing after a target");
    const char* close = find(nameEnd, "?>");
    if (close == m_end) return failAt(kCFXMLErrorUnexpectedEOF, close, {});
    return close + 2;
}

// The first occurrence of text at or after place, or the end.
const char* XmlTokenizer::find(const char* place, std::string_view text) const {
    if (place >= m_end) return m_end;
    const std::size_t found = slice(place, m_end).find(text);
    return found == std::string_view::npos ? m_end : place + found;
}

// A name that holds characters above ASCII.
const char* XmlTokenizer::skipWideName(const char* place) const {
    const auto belongs = [&](char32_t c, bool isFirst) {
        if (c < 0x80) return isXmlByte(static_cast<char>(c), isFirst ? xmlNameStart : xmlName);
        return isFirst ? isXmlNameStart(c) : isXmlNameCharacter(c);
    };
    for (const char* const first = place; place < m_end;) {
        char32_t character = 0;
        const std::size_t length = decodeUtf8(place, m_end, character);
        if (length == 0 || !belongs(character, place == first)) break;
        place += length;
    }
    return place;
}

// Reports the first fault: a character that is none comes before whatever followed it, and what stops at
// the end of the document stops because it ends too early, or because the rest could not be converted.
XmlEvent XmlTokenizer::fail(CFIndex status, const char* place, std::string description) {
    place = std::min(place, m_end);
    m_stage = Stage::Done;
    m_endPending = false;
    if (const char* invalid = m_scanner.findInvalid(place < m_end ? place + 1 : m_end)) {
        char32_t character = 0;
        const bool decoded = decodeUtf8(invalid, m_end, character) != 0;
        place = invalid;
        status = decoded ? kCFXMLErrorMalformedDocument : kCFXMLErrorEncodingConversionFailure;
        description = decoded ? "a character that XML does not allow" : "bytes that are no UTF-8";
    } else if (place == m_end && m_cutStatus) {
        status = m_cutStatus;
        description = m_cutReason;
    } else if (place == m_end && status != kCFXMLErrorElementlessDocument && status != kCFXMLErrorNoData) {
        status = kCFXMLErrorUnexpectedEOF;
        description = m_open.empty()
                          ? "the document ends too early"
                          : joined({"the document ends inside the element \"", m_open.back(), "\""});
    }
    m_eventStart = place;
    m_status = status;
    m_description = std::move(description);
    return XmlEvent::Error;
}

// Goes on from where it last came to, so that asking at every event costs one pass over the document.
XmlLocation XmlTokenizer::locate() const {
    if (m_eventStart < m_located) {
        m_located = m_begin;
        m_location = {1, 1};
    }
    for (; m_located < m_eventStart; ++m_located) {
        const char c = *m_located;
        // A return and a line feed together end one line, as each of them does alone.
        if (c == '\n' || (c == '\r' && (m_located + 1 == m_end || m_located[1] != '\n'))) {
            ++m_location.line;
            m_location.column = 1;
        } else if ((c & 0xC0) != 0x80) {
            ++m_location.column;
        }
    }
    return m_location;
}

}  // namespace kestrel::detail
