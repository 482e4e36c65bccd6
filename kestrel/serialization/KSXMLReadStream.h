// kestrel/serialization/KSXMLReadStream.h - reads a scene document.
#pragma once

#include <kestrel/files/KSURL.h>
#include <kestrel/foundation/KSString.h>
#include <kestrel/platform/CFData.h>
#include <kestrel/platform/CFXMLParser.h>
#include <kestrel/platform/Export.h>
#include <kestrel/serialization/KSSerializerReadStream.h>

#include <cstddef>

/// Reads an XML scene document, the counterpart of KSXMLWriteStream.
///
/// Reading    construct, push the root handler (whose parseBegin pushes the root scope), call parse(). The
///            root element is one like any other: a handler that wants what is inside must claim it, by its
///            name or by "*"; otherwise nothing is read and parse() is true.
/// Text       an element's value is its text pieces and references in order. A piece that does not follow
///            a reference is preceded by a line feed, so that a comment or a child between two pieces
///            shows. "&amp;", "&lt;", "&gt;", "&quot;", "&apos;" and "&space;" give their character; a
///            reference by number gives, deliberately, the one character of the low eight bits of its code
///            ("&#x20AC;" gives U+00AC, where a literal euro sign stays one); any other name gives
///            nothing. CDATA sections, comments and instructions are dropped. White space and line ends
///            come as they stand. In attribute values the predefined references and those by number give
///            their whole character, others stay as they stand.
/// Names      an element or attribute whose name is not ASCII, or longer than 511 or 127 characters, belongs
///            to no scope.
/// Memory     the document, and what the handlers keep. A document that is not in UTF-8 is there twice.
/// Threads    one thread at a time.
/// Errors     a file that cannot be read makes parse() false. The first fault in the document ends it: one
///            line and the URL go to standard error. Every handler gets its parseEnd in any case.
/// Example
///     KSXMLReadStream in(url);
///     in.pushHandler(&scene);
///     if (!in.parse()) return false;
class KESTREL_API KSXMLReadStream : public KSSerializerReadStream {
public:
    /// Reads the whole file into memory; parses nothing yet.
    explicit KSXMLReadStream(const KSURL& url);
    /// Reads a document that is in memory already, which it shares; url only names it.
    KSXMLReadStream(CFDataRef document, const KSURL& url);
    ~KSXMLReadStream() override;

    bool parse() override;
    void abortParse() override;
    void stopParse() override;

    const KSURL& getURL() const { return m_url; }
    /// The line and the character in it, both from 1, of the fault that ended the parse or, inside a handler,
    /// of the start of the tag that is being read; 0 for a file that could not be read.
    long getLineNumber() const { return CFXMLParserGetLineNumber(m_parser); }
    long getLocation() const { return CFXMLParserGetLocation(m_parser); }
    /// The same place in bytes of the document as UTF-8, which it is converted to, and the size of all of it;
    /// for showing progress.
    std::size_t getOffset() const;
    std::size_t getSize() const;
    /// What is wrong with the document, for a person; empty when nothing is.
    KSString getErrorDescription() const;

private:
    class Reader;
    static Boolean handleError(CFXMLParserRef parser, CFXMLParserStatusCode status, void* info);
    void createParser();

    CFDataRef m_document = nullptr;
    CFXMLParserRef m_parser = nullptr;
    KSURL m_url;
    bool m_afterEntity = false;  // the last text of the current element came from a reference
};
