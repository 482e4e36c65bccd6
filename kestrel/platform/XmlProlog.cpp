// What may stand before the root element: the XML declaration and the document type.
#include <kestrel/platform/detail/XmlNames.h>
#include <kestrel/platform/detail/XmlTokenizer.h>

#include <algorithm>
#include <array>

namespace kestrel::detail {
namespace {

bool isVersion(std::string_view value) {  // [26]
    return value.size() > 2 && value.starts_with("1.") &&
           std::all_of(value.begin() + 2, value.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool isEncodingName(std::string_view value) {  // [81]
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    return !value.empty() && isLetter(value[0]) && std::all_of(value.begin(), value.end(), [&](char c) {
        return isLetter(c) || (c >= '0' && c <= '9') || c == '.' || c == '_' || c == '-';
    });
}

bool isYesOrNo(std::string_view value) { return value == "yes" || value == "no"; }

// The parts of an XML declaration, in the only order they may have; the first one must be there.
struct DeclarationPart {
    std::string_view name;
    bool (*isValue)(std::string_view);
    const char* fault;
};
constexpr auto declarationParts = std::to_array<DeclarationPart>({
    {"version", isVersion, "an XML declaration's version is not of the form 1.x"},
    {"encoding", isEncodingName, "an XML declaration's encoding is no encoding's name"},
    {"standalone", isYesOrNo, "an XML declaration's standalone is neither yes nor no"},
});

}  // namespace

// [23]
XmlEvent XmlTokenizer::scanDeclaration() {
    constexpr auto status = kCFXMLErrorMalformedProcessingInstruction;
    const char* place = m_position + 5;
    const char* const text = skipSpace(place);
    for (const DeclarationPart& part : declarationParts) {
        const char* name = skipSpace(place);
        if (name == place || !startsWith(name, part.name)) {
            if (part.name == "version") return fail(status, name, "an XML declaration has no version");
            continue;
        }
        const char* equals = skipSpace(name + part.name.size());
        if (at(equals) != '=') return fail(status, equals, "\"=\" is missing in an XML declaration");
        const char* value = skipSpace(equals + 1);
        const char quote = at(value);
        if (quote != '"' && quote != '\'')
            return fail(status, value, "a value in an XML declaration is not quoted");
        const char* end = std::find(value + 1, m_end, quote);
        if (!part.isValue(slice(value + 1, end))) return fail(status, value, part.fault);
        place = end == m_end ? m_end : end + 1;
    }
    const char* close = skipSpace(place);
    if (!startsWith(close, "?>"))
        return fail(
            status, m_end - close < 2 ? m_end : close,
            "an XML declaration holds more than a version, an encoding and standalone, in this order");
    m_name = slice(m_position + 2, m_position + 5);
    m_text = slice(text, close);
    m_position = close + 2;
    return XmlEvent::Declaration;
}

// [28]
XmlEvent XmlTokenizer::scanDocumentType() {
    constexpr auto status = kCFXMLErrorMalformedDTD;
    const char* place = m_position + 9;
    const char* name = skipSpace(place);
    const char* nameEnd = skipName(name);
    if (name == place || nameEnd == name)
        return fail(status, name, "\"<!DOCTYPE\" is not followed by a blank and a name");
    m_name = slice(name, nameEnd);
    m_publicId = m_systemId = {};
    place = skipSpace(nameEnd);
    if (place > nameEnd && (startsWith(place, "SYSTEM") || startsWith(place, "PUBLIC"))) {
        place = skipExternalId(place);
        if (!place) return XmlEvent::Error;
        place = skipSpace(place);
    }
    if (at(place) == '[') {
        place = skipInternalSubset(place + 1);
        if (!place) return XmlEvent::Error;
        place = skipSpace(place);
    }
    if (at(place) != '>') return fail(status, place, "the document type declaration does not end with \">\"");
    m_position = place + 1;
    m_stage = Stage::AfterDocumentType;
    return XmlEvent::DocumentType;
}

// [75]: the place behind the identifier at place, null after a failure. It is only read, nothing is loaded.
const char* XmlTokenizer::skipExternalId(const char* place) {
    const bool isPublic = *place == 'P';
    place += 6;
    for (bool readPublic : {true, false}) {
        if (readPublic && !isPublic) continue;
        const char* quote = skipSpace(place);
        if (quote == place || (at(quote) != '"' && at(quote) != '\''))
            return failAt(kCFXMLErrorMalformedDTD, quote, "a blank and a quoted identifier are expected");
        place = skipLiteral(quote);
        if (!place) return nullptr;
        const std::string_view literal = slice(quote + 1, place - 1);
        if (readPublic &&
            !std::all_of(literal.begin(), literal.end(), [](char c) { return isXmlByte(c, xmlPublicId); }))
            return failAt(kCFXMLErrorMalformedDTD, quote, "a public identifier holds a character it may not");
        (readPublic ? m_publicId : m_systemId) = literal;
    }
    return place;
}

// [28b]: the place behind the "]", null after a failure.
const char* XmlTokenizer::skipInternalSubset(const char* place) {
    for (;;) {
        place = skipSpace(place);
        if (at(place) == ']') return place + 1;
        if (at(place) == '%') {  // [69]
            const char* nameEnd = skipName(place + 1);
            if (nameEnd == place + 1 || at(nameEnd) != ';')
                return failAt(kCFXMLErrorMalformedDTD, nameEnd, "\"%\" starts no parameter-entity reference");
            place = nameEnd + 1;
        } else if (startsWith(place, "<!--")) {
            place = skipComment(place);
        } else if (startsWith(place, "<?")) {
            place = skipInstruction(place);
        } else {
            place = skipSubsetDeclaration(place);
        }
        if (!place) return nullptr;
    }
}

const char* XmlTokenizer::skipSubsetDeclaration(const char* place) {
    constexpr std::string_view kinds[] = {"<!ELEMENT", "<!ATTLIST", "<!ENTITY", "<!NOTATION"};
    const auto* kind = std::find_if(std::begin(kinds), std::end(kinds), [&](std::string_view text) {
        return startsWith(place, text) && isXmlByte(at(place + text.size()), xmlBlank);
    });
    if (kind == std::end(kinds))
        return failAt(kCFXMLErrorMalformedDTD, place, "no declaration of a document type starts like this");
    for (place += kind->size(); at(place) != '>';) {
        if (at(place) == '<' || place == m_end)
            return failAt(kCFXMLErrorMalformedDTD, place, "\"<\" inside a declaration");
        const bool isLiteral = *place == '"' || *place == '\'';
        place = isLiteral ? skipLiteral(place) : place + 1;
        if (!place) return nullptr;
    }
    return place + 1;
}

// The place behind the literal whose opening quote stands at quote, null after a failure.
const char* XmlTokenizer::skipLiteral(const char* quote) {
    const char* end = std::find(quote + 1, m_end, *quote);
    if (end == m_end) return failAt(kCFXMLErrorUnexpectedEOF, end, {});
    return end + 1;
}

}  // namespace kestrel::detail
