#include <kestrel/foundation/KSPrint.h>
#include <kestrel/foundation/KSString.h>
#include <kestrel/foundation/detail/NumberFormat.h>
#include <kestrel/serialization/KSException.h>
#include <kestrel/serialization/KSFileWriteStream.h>
#include <kestrel/serialization/KSScope.h>
#include <kestrel/serialization/KSUUID.h>
#include <kestrel/serialization/KSXMLWriteStream.h>
#include <kestrel/serialization/detail/EscapedText.h>
#include <kestrel/serialization/detail/HexWords.h>
#include <kestrel/serialization/detail/StringUnits.h>

#include <algorithm>
#include <cstddef>

namespace {

constexpr std::size_t longLine = 8192;  // a text longer than this is written in pieces

}  // namespace

KSXMLWriteStream::KSXMLWriteStream(KSFileWriteStream& out) : m_out(out) {
    write("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    write("<!DOCTYPE zuxmlscene>\n");
    write("<zuml version=\"2.1\">\n\n");
}

KSXMLWriteStream::~KSXMLWriteStream() = default;

void KSXMLWriteStream::startElement(unsigned int token) {
    const KSScope* scope = currentScope();
    m_line.clear();
    if (!m_elements.empty() && !m_elements.back().tagClosed) {
        m_line = ">\n";
        m_elements.back().isEmpty = false;
        m_elements.back().tagClosed = true;
        m_elements.back().hasChildren = true;
    }
    if (!scope) {  // the ">" of the element around is lost with it
        KSPrint("scope not defined!\n");
        throw KSException_ScopeUndefined();
    }
    const KSScope* entry = KSScope::findElement(scope, token);
    if (!entry) {
        if (!m_line.empty()) writeLine();
        KSPrint("Token not defined in scope %s!\n", scope->name ? scope->name : "");
        throw KSException_NoElementDefined();
    }
    m_line.append(m_depth, '\t');
    m_line += '<';
    m_line += entry->name;
    writeLine();
    m_elements.push_back({entry->name, token, true, false, false});
    ++m_depth;
}

void KSXMLWriteStream::endElement() {
    if (m_elements.empty()) {
        KSPrint("endElement() called without startElement()!\n");
        throw KSException_NoElementDefined();
    }
    --m_depth;
    const KSXMLElementInfo& element = m_elements.back();
    if (element.isEmpty) {
        write("/>\n");
    } else {
        m_line.clear();
        if (element.hasChildren) m_line.append(m_depth, '\t');
        m_line += "</";
        m_line += element.name;
        m_line += ">\n";
        writeLine();
    }
    m_elements.pop_back();
}

void KSXMLWriteStream::close() { write("\n</zuml>\n"); }

void KSXMLWriteStream::writeValue(int value) { putValue(value); }
void KSXMLWriteStream::writeValue(unsigned int value) { putValue(value); }
void KSXMLWriteStream::writeValue(long long value) { putValue(value); }
void KSXMLWriteStream::writeValue(unsigned long long value) { putValue(value); }
void KSXMLWriteStream::writeValue(float value) { putValue(double{value}); }
void KSXMLWriteStream::writeValue(double value) { putValue(value); }
void KSXMLWriteStream::writeValue(const KSUUID& value) { putValue(value); }
void KSXMLWriteStream::writeValue(const KSString& value) {
    if (m_elements.empty()) {
        KSPrint("value not within an element body!\n");
        throw KSException_NoElementDefined();
    }
    putValue(value);
}

void KSXMLWriteStream::writeArray(unsigned int*, unsigned int) {}
void KSXMLWriteStream::writeArray(float*, unsigned int) {}
void KSXMLWriteStream::writeArray(double*, unsigned int) {}

void KSXMLWriteStream::writeAttribute(unsigned int token, unsigned int value) { putAttribute(token, value); }
void KSXMLWriteStream::writeAttribute(unsigned int token, int value) { putAttribute(token, value); }
void KSXMLWriteStream::writeAttribute(unsigned int token, unsigned long long value) {
    putAttribute(token, value);
}
void KSXMLWriteStream::writeAttribute(unsigned int token, long long value) { putAttribute(token, value); }
void KSXMLWriteStream::writeAttribute(unsigned int token, float value) { putAttribute(token, double{value}); }
void KSXMLWriteStream::writeAttribute(unsigned int token, double value) { putAttribute(token, value); }
void KSXMLWriteStream::writeAttribute(unsigned int token, const KSUUID& value) { putAttribute(token, value); }
void KSXMLWriteStream::writeAttribute(unsigned int token, const KSString& value) {
    putAttribute(token, value);
}

void KSXMLWriteStream::writeBlankLine() { write("\n"); }

const KSURL& KSXMLWriteStream::getURL() const { return m_out.getURL(); }

/// A value stands behind the ">" of its start tag, on the same line.
template <class Value>
void KSXMLWriteStream::putValue(const Value& value) {
    if (m_elements.empty()) {
        // Deliberately the message of endElement, for values too.
        KSPrint("endElement() called without startElement()!\n");
        throw KSException_NoElementDefined();
    }
    KSXMLElementInfo& element = m_elements.back();
    m_line.clear();
    if (!element.tagClosed) {
        m_line = '>';
        element.isEmpty = false;
        element.tagClosed = true;
    }
    append(value);
    writeLine();
}

/// Attributes go straight to the open start tag, and do not end it.
template <class Value>
void KSXMLWriteStream::putAttribute(unsigned int token, const Value& value) {
    const char* name = getAttributeName(token);
    m_line = ' ';
    m_line += name;
    m_line += "=\"";
    append(value);
    m_line += '"';
    writeLine();
}

const char* KSXMLWriteStream::getAttributeName(unsigned int token) const {
    if (m_elements.empty()) throw KSException_NoElementDefined();
    const KSScope* scope = currentScope();
    if (!scope) throw KSException_ScopeUndefined();
    const KSScope* entry = KSScope::findAttribute(scope, m_elements.back().token, token);
    if (!entry) throw KSException_AttributeUndefined();
    return entry->name;
}

template <std::integral Integer>
void KSXMLWriteStream::append(Integer value) {
    char text[kestrel::detail::numberRoom];
    m_line.append(text, kestrel::detail::formatInteger(text, value));
}

void KSXMLWriteStream::append(double value) {
    char text[kestrel::detail::numberRoom];
    m_line.append(text, kestrel::detail::formatDouble(text, value));
}

void KSXMLWriteStream::append(const KSUUID& value) {
    char text[32];
    m_line.append(text, kestrel::detail::formatHexWords(text, value.words));
}

void KSXMLWriteStream::append(const KSString& value) {
    const kestrel::detail::StringUnits units(value);
    const unsigned short* at = units.data();
    const unsigned short* const end = std::find(at, at + units.size(), 0);
    while (at != end) {
        at = kestrel::detail::appendEscaped(m_line, at, end);
        if (m_line.size() < longLine) continue;
        writeLine();
        m_line.clear();
    }
}

void KSXMLWriteStream::write(std::string_view text) { m_out.write(text.data(), text.size()); }

void KSXMLWriteStream::writeLine() { write(m_line); }
