// kestrel/platform/CFXMLParser.h - an event-driven, strict parser of XML documents in memory.
#pragma once

#include <kestrel/platform/CFBase.h>
#include <kestrel/platform/CFDictionary.h>
#include <kestrel/platform/CFString.h>
#include <kestrel/platform/CFXMLNode.h>

using CFDataRef = const struct __CFData*;

/// Calls back for each piece of a document, in order, and checks that the document is well-formed.
///
/// Events     one run of literal text is one node; a reference is a node of its own and is never expanded,
///            whether it is declared or not. White space, line ends and attribute values come as they
///            stand. Text outside the root element is not reported when it is white space and an error
///            otherwise. An internal subset is skipped, nothing external is loaded.
/// Encodings  UTF-8, UTF-16 and UTF-32 by their marks or first bytes, others by declaration.
/// Ownership  keeps the data and the source URL as long as it lives.
/// Threads    one thread at a time.
/// Errors     the first one ends the parse, after the callbacks for everything before it.
/// Source     Extensible Markup Language (XML) 1.0, fifth edition.
/// Example
///     CFXMLParserRef parser = CFXMLParserCreate(kCFAllocatorDefault, data, nullptr, kCFXMLParserNoOptions,
///                                               1, &callbacks, &context);
///     if (!CFXMLParserParse(parser)) report(CFXMLParserGetLineNumber(parser));
///     CFRelease(parser);
using CFXMLParserRef = struct __CFXMLParser*;

/// How a parse stands, or why it failed.
enum CFXMLParserStatusCode : CFIndex {
    kCFXMLStatusParseNotBegun = -2,
    kCFXMLStatusParseInProgress = -1,
    kCFXMLStatusParseSuccessful = 0,
    kCFXMLErrorUnexpectedEOF = 1,
    kCFXMLErrorUnknownEncoding,
    kCFXMLErrorEncodingConversionFailure,
    kCFXMLErrorMalformedProcessingInstruction,
    kCFXMLErrorMalformedDTD,
    kCFXMLErrorMalformedName,
    kCFXMLErrorMalformedCDSect,
    kCFXMLErrorMalformedCloseTag,
    kCFXMLErrorMalformedStartTag,
    kCFXMLErrorMalformedDocument,
    kCFXMLErrorElementlessDocument,
    kCFXMLErrorMalformedComment,
    kCFXMLErrorMalformedCharacterReference,
    kCFXMLErrorMalformedParsedCharacterData,
    kCFXMLErrorNoData
};

/// No entity replacement, no white-space stripping, no validation: the only way there is.
inline constexpr CFOptionFlags kCFXMLParserNoOptions = 0;

/// Returns what stands for the node: any pointer but null to be handed the children of a document or an
/// element and endXMLStructure, null to skip an element with all it contains. What is inside a document
/// is reported in any case.
using CFXMLParserCreateXMLStructureCallBack = void* (*)(CFXMLParserRef, CFXMLNodeRef, void* info);
/// Called for each child structure that is not null, right after it was made, if its parent is not null.
using CFXMLParserAddChildCallBack = void (*)(CFXMLParserRef, void* parent, void* child, void* info);
/// Called for each structure that is not null when it is complete.
using CFXMLParserEndXMLStructureCallBack = void (*)(CFXMLParserRef, void* structure, void* info);
/// Never called: nothing external is loaded.
using CFXMLParserResolveExternalEntityCallBack = CFDataRef (*)(CFXMLParserRef, CFXMLExternalID*, void* info);
/// Called once, for the error or the abort that ended the parse. The result is ignored.
using CFXMLParserHandleErrorCallBack = Boolean (*)(CFXMLParserRef, CFXMLParserStatusCode, void* info);

/// Any of them may be null; without createXMLStructure the document is only checked.
struct CFXMLParserCallBacks {
    CFIndex version;
    CFXMLParserCreateXMLStructureCallBack createXMLStructure;
    CFXMLParserAddChildCallBack addChild;
    CFXMLParserEndXMLStructureCallBack endXMLStructure;
    CFXMLParserResolveExternalEntityCallBack resolveExternalEntity;
    CFXMLParserHandleErrorCallBack handleError;
};

/// What the callbacks are given as info, and how the parser keeps it; the functions may be null.
struct CFXMLParserContext {
    CFIndex version;
    void* info;
    const void* (*retain)(const void* info);
    void (*release)(const void* info);
    CFStringRef (*copyDescription)(const void* info);
};

/// A parser of data, or null for null data. Both structures are copied. dataSource may be null; it is only
/// handed on. context may be null.
KESTREL_API CFXMLParserRef CFXMLParserCreate(CFAllocatorRef, CFDataRef data, CFURLRef dataSource,
                                             CFOptionFlags options, CFIndex versionOfNodes,
                                             const CFXMLParserCallBacks* callBacks,
                                             const CFXMLParserContext* context);
/// Parses the whole document, once. True when it was well-formed to its end; false after an error or an
/// abort, on every further call, and for null.
KESTREL_API Boolean CFXMLParserParse(CFXMLParserRef);
/// Ends the parse from inside a callback: it fails with this status, which may be 0, and description.
KESTREL_API void CFXMLParserAbort(CFXMLParserRef, CFXMLParserStatusCode status, CFStringRef description);

KESTREL_API CFXMLParserStatusCode CFXMLParserGetStatusCode(CFXMLParserRef);
/// What is wrong, for a person; empty when nothing is. The caller releases it.
KESTREL_API CFStringRef CFXMLParserCopyErrorDescription(CFXMLParserRef);
/// The line, from 1, of the error, or of the start of the piece that the running callback is about.
KESTREL_API CFIndex CFXMLParserGetLineNumber(CFXMLParserRef);
/// The place in that line, in characters from 1.
KESTREL_API CFIndex CFXMLParserGetLocation(CFXMLParserRef);
KESTREL_API CFURLRef CFXMLParserGetSourceURL(CFXMLParserRef);  ///< not retained

/// text with its references replaced by what they stand for: the predefined ones, characters by number
/// ("&#8364;", "&#x20AC;"), and the names in entities (CFStringRef to CFStringRef; may be null), which come
/// first. What is no such reference stays as it stands; what a replacement brings in is not looked at
/// again. The caller releases the result; null for null.
KESTREL_API CFStringRef CFXMLCreateStringByUnescapingEntities(CFAllocatorRef, CFStringRef text,
                                                              CFDictionaryRef entities);
