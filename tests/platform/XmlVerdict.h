// tests/platform/XmlVerdict.h - the same document through the tokenizer and through expat.
#pragma once

#include <kestrel/platform/detail/XmlTokenizer.h>

#include <expat.h>

#include <cstdint>
#include <string>
#include <string_view>

/// What one parser says of a document.
struct XmlVerdict {
    bool wellFormed = false;
    bool comparable = true;  ///< false where the two parsers do not claim the same thing
    std::string log;         ///< tags, attributes, text, comments and instructions, one spelling for both
    std::string reason;
};

/// Line ends as XML 1.0, 2.11, hands them to an application; the tokenizer leaves them as they stand.
inline std::string withLineFeeds(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r')
            result += text[i];
        else if (i + 1 == text.size() || text[i + 1] != '\n')
            result += '\n';
    }
    return result;
}

inline void appendUtf8(std::string& text, std::uint32_t c) {
    const auto add = [&](std::uint32_t byte) { text += static_cast<char>(byte); };
    if (c < 0x80) return add(c);
    if (c < 0x800) {
        add(0xC0 | c >> 6);
    } else {
        if (c < 0x10000) {
            add(0xE0 | c >> 12);
        } else {
            add(0xF0 | c >> 18);
            add(0x80 | (c >> 12 & 0x3F));
        }
        add(0x80 | (c >> 6 & 0x3F));
    }
    add(0x80 | (c & 0x3F));
}

/// The text of a reference by the name between "&" and ";"; nothing for a name that is not predefined.
inline std::string resolved(std::string_view name) {
    if (name == "amp") return "&";
    if (name == "lt") return "<";
    if (name == "gt") return ">";
    if (name == "quot") return "\"";
    if (name == "apos") return "'";
    if (name[0] != '#') return "";
    const bool hex = name[1] == 'x';
    std::string text;
    appendUtf8(text, static_cast<std::uint32_t>(
                         std::stoul(std::string(name.substr(hex ? 2 : 1)), nullptr, hex ? 16 : 10)));
    return text;
}

/// An attribute's value as XML 1.0, 3.3.3, normalises it.
inline std::string normalised(std::string_view value) {
    std::string result;
    const std::string unified = withLineFeeds(value);
    for (std::size_t i = 0; i < unified.size(); ++i) {
        if (unified[i] == '&') {
            const std::size_t semicolon = unified.find(';', i);
            result += resolved(std::string_view(unified).substr(i + 1, semicolon - i - 1));
            i = semicolon;
        } else {
            result += unified[i] == '\n' || unified[i] == '\t' ? ' ' : unified[i];
        }
    }
    return result;
}

inline XmlVerdict tokenizerVerdict(std::string_view document) {
    using namespace kestrel::detail;
    XmlVerdict verdict;
    XmlTokenizer tokens(document);
    for (;;) {
        const XmlEvent event = tokens.next();
        const std::string name(tokens.getName());
        switch (event) {
            case XmlEvent::Declaration:
                break;
            case XmlEvent::DocumentType:
                verdict.log += "<!" + name + ">";
                break;
            case XmlEvent::StartElement:
                verdict.log += "<" + name;
                for (const XmlAttribute& attribute : tokens.getAttributes())
                    verdict.log +=
                        " " + std::string(attribute.name) + "=[" + normalised(attribute.value) + "]";
                verdict.log += ">";
                break;
            case XmlEvent::EndElement:
                verdict.log += "</" + name + ">";
                break;
            case XmlEvent::Text:
            case XmlEvent::CData:
                verdict.log += withLineFeeds(tokens.getText());
                break;
            case XmlEvent::Reference:
                verdict.log += resolved(name);
                break;
            case XmlEvent::Comment:
                verdict.log += "<!--" + withLineFeeds(tokens.getText()) + "-->";
                break;
            case XmlEvent::ProcessingInstruction:
                verdict.log += "<?" + name + " " + withLineFeeds(tokens.getText()) + "?>";
                break;
            case XmlEvent::End:
                verdict.wellFormed = true;
                return verdict;
            case XmlEvent::Error:
                verdict.reason = tokens.getDescription();
                // expat takes any version.
                verdict.comparable = verdict.reason.find("version is not") == std::string::npos;
                return verdict;
        }
    }
}

inline XmlVerdict expatVerdict(std::string_view document) {
    XmlVerdict verdict;
    XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetUserData(parser, &verdict);
    const auto log = [](void* data) -> std::string& { return static_cast<XmlVerdict*>(data)->log; };
    static const auto logOf = log;
    XML_SetStartElementHandler(parser, [](void* data, const char* name, const char** attributes) {
        logOf(data) += std::string("<") + name;
        for (; *attributes; attributes += 2)
            logOf(data) += std::string(" ") + attributes[0] + "=[" + attributes[1] + "]";
        logOf(data) += ">";
    });
    XML_SetEndElementHandler(
        parser, [](void* data, const char* name) { logOf(data) += std::string("</") + name + ">"; });
    XML_SetCharacterDataHandler(parser, [](void* data, const char* text, int size) {
        logOf(data).append(text, static_cast<std::size_t>(size));
    });
    XML_SetCommentHandler(
        parser, [](void* data, const char* text) { logOf(data) += std::string("<!--") + text + "-->"; });
    XML_SetProcessingInstructionHandler(parser, [](void* data, const char* target, const char* text) {
        logOf(data) += std::string("<?") + target + " " + text + "?>";
    });
    XML_SetStartDoctypeDeclHandler(parser,
                                   [](void* data, const char* name, const char*, const char*, int hasSubset) {
                                       logOf(data) += std::string("<!") + name + ">";
                                       // The tokenizer does not read the declarations of a document type.
                                       if (hasSubset) static_cast<XmlVerdict*>(data)->comparable = false;
                                   });
    XML_SetXmlDeclHandler(parser, [](void* data, const char*, const char* encoding, int) {
        const std::string name(encoding ? encoding : "UTF-8");
        if (name.size() != 5 || (name[0] | 32) != 'u' || (name[1] | 32) != 't' || (name[2] | 32) != 'f' ||
            name.substr(3) != "-8")
            static_cast<XmlVerdict*>(data)->comparable = false;  // the tokenizer takes UTF-8 only
    });
    const XML_Status status = XML_Parse(parser, document.data(), static_cast<int>(document.size()), 1);
    verdict.wellFormed = status == XML_STATUS_OK;
    if (!verdict.wellFormed) {
        const XML_Error error = XML_GetErrorCode(parser);
        verdict.reason = XML_ErrorString(error);
        // A reference to an undeclared entity is well-formed for the tokenizer, which expands none.
        if (error == XML_ERROR_UNDEFINED_ENTITY || error == XML_ERROR_UNKNOWN_ENCODING ||
            error == XML_ERROR_INCORRECT_ENCODING)
            verdict.comparable = false;
        // expat has the names of the fourth edition, the tokenizer those of the fifth.
        const auto place = static_cast<std::size_t>(XML_GetCurrentByteIndex(parser));
        if (error == XML_ERROR_INVALID_TOKEN && place < document.size() &&
            static_cast<unsigned char>(document[place]) >= 0x80)
            verdict.comparable = false;
    }
    // expat sniffs encodings of two-byte units, which the tokenizer is never given.
    if (document.starts_with("\xFE\xFF") || document.starts_with("\xFF\xFE") ||
        document.substr(0, 2).find('\0') != std::string_view::npos)
        verdict.comparable = false;
    XML_ParserFree(parser);
    return verdict;
}

/// Empty if both parsers agree on document, else what they say. A document that is not well-formed has
/// events before its fault, which expat may deliver in other portions: only the verdict counts then.
inline std::string disagreement(std::string_view document) {
    const XmlVerdict ours = tokenizerVerdict(document);
    const XmlVerdict theirs = expatVerdict(document);
    if (!ours.comparable || !theirs.comparable) return {};
    if (ours.wellFormed == theirs.wellFormed && (!ours.wellFormed || ours.log == theirs.log)) return {};
    return std::string("tokenizer: ") + (ours.wellFormed ? "well-formed " + ours.log : ours.reason) +
           "\nexpat: " + (theirs.wellFormed ? "well-formed " + theirs.log : theirs.reason) + "\n";
}
