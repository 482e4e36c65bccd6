// kestrel/serialization/KSXMLWriteStream.h - the writer of XML scene documents.
#pragma once

#include <kestrel/platform/Export.h>
#include <kestrel/serialization/KSSerializerWriteStream.h>

#include <concepts>
#include <string>
#include <string_view>
#include <vector>

class KSFileWriteStream;
class KSURL;

/// One open element of a document being written.
struct KSXMLElementInfo {
    const char* name;    ///< of the scope entry, not copied; the end tag keeps it
    unsigned int token;  ///< in the scope that was current at the start
    bool isEmpty;        ///< until a value or a child element is written
    bool tagClosed;      ///< once the ">" of the start tag is written
    bool hasChildren;    ///< once a child was started before any value
};

/// Renders elements, attributes and values as a UTF-8 scene document: a document type, a root element and
/// one line for each element, indented by tabs. Numbers are written with ten significant digits and never
/// depend on the locale.
///
/// Order      as KSSerializerWriteStream says; the header is written by the constructor and the root's end
///            by close. A child that is written after a value stands on the value's line.
/// Ownership  borrows the file stream, and never flushes or closes it: what is written is in the file when
///            its owner has destroyed the stream.
/// Threads    one thread at a time.
/// Errors     misuse throws, most of it after a KSPrint line, and leaves the document unfinished; nothing is
///            rolled back. Attributes are resolved in the scope that is current at the call.
///            KSException_ScopeUndefined        the current scope is null
///            KSException_NoElementDefined      the scope has no such element, or no element is open
///            KSException_AttributeUndefined    the scope has no such attribute of the open element
///            KSException_WriteError            the file stream cannot write
/// Example
///     KSFileWriteStream file(url);
///     KSXMLWriteStream out(file);
///     object.writeBody(out, false, false);
///     out.close();
class KESTREL_API KSXMLWriteStream final : public KSSerializerWriteStream {
public:
    /// Writes the header: declaration, document type, start of the root.
    explicit KSXMLWriteStream(KSFileWriteStream& out);
    ~KSXMLWriteStream() override;

    void startElement(unsigned int token) override;
    void endElement() override;
    void close() override;  ///< writes the root's end tag

    void writeValue(int value) override;
    void writeValue(unsigned int value) override;
    void writeValue(long long value) override;
    void writeValue(unsigned long long value) override;
    void writeValue(float value) override;
    void writeValue(double value) override;
    void writeValue(const KSUUID& value) override;
    /// Escapes & < > and the double quote. The text ends at its first NUL, which no document can hold; a
    /// null string is an empty one.
    void writeValue(const KSString& value) override;

    // Arrays have no form in a document: these write nothing.
    void writeArray(unsigned int* values, unsigned int count) override;
    void writeArray(float* values, unsigned int count) override;
    void writeArray(double* values, unsigned int count) override;

    void writeAttribute(unsigned int token, unsigned int value) override;
    void writeAttribute(unsigned int token, int value) override;
    void writeAttribute(unsigned int token, unsigned long long value) override;
    void writeAttribute(unsigned int token, long long value) override;
    void writeAttribute(unsigned int token, float value) override;
    void writeAttribute(unsigned int token, double value) override;
    void writeAttribute(unsigned int token, const KSUUID& value) override;
    void writeAttribute(unsigned int token, const KSString& value) override;

    void writeBlankLine() override;

    /// Where the document goes: the file stream's URL.
    const KSURL& getURL() const;

private:
    template <class Value>
    void putValue(const Value& value);
    template <class Value>
    void putAttribute(unsigned int token, const Value& value);
    const char* getAttributeName(unsigned int token) const;
    void append(double value);
    void append(const KSUUID& value);
    void append(const KSString& value);
    template <std::integral Integer>
    void append(Integer value);
    void write(std::string_view text);
    void writeLine();

    KSFileWriteStream& m_out;
    unsigned int m_depth = 0;
    std::vector<KSXMLElementInfo> m_elements;  // the innermost last
    std::string m_line;                        // the piece being assembled
};
