// kestrel/platform/CFXMLNode.h - what an XML parser hands to its callbacks.
#pragma once

#include <kestrel/platform/CFBase.h>
#include <kestrel/platform/CFDictionary.h>
#include <kestrel/platform/CFString.h>

using CFURLRef = const struct __CFURL*;

/// One piece of a document: its kind, a name or text, and for some kinds more.
///
/// Ownership  a node that a callback is given is released after the callback; retain it to keep it.
/// Threads    constant, so any number of readers.
using CFXMLNodeRef = const struct __CFXMLNode*;

/// The kinds of nodes, and what CFXMLNodeGetString() and CFXMLNodeGetInfoPtr() give for each. Kinds without a
/// comment are never handed out.
enum CFXMLNodeTypeCode : CFIndex {
    kCFXMLNodeTypeDocument = 1,  ///< info: CFXMLDocumentInfo
    kCFXMLNodeTypeElement = 2,   ///< string: its name; info: CFXMLElementInfo
    kCFXMLNodeTypeAttribute = 3,
    kCFXMLNodeTypeProcessingInstruction = 4,  ///< its target; CFXMLProcessingInstructionInfo. The XML
                                              ///< declaration is one too, with the target "xml"
    kCFXMLNodeTypeComment = 5,                ///< its text
    kCFXMLNodeTypeText = 6,                   ///< its text, as it stands
    kCFXMLNodeTypeCDATASection = 7,           ///< its text
    kCFXMLNodeTypeDocumentFragment = 8,
    kCFXMLNodeTypeEntity = 9,
    kCFXMLNodeTypeEntityReference = 10,  ///< the name between "&" and ";": "amp", "#65"; ...Info
    kCFXMLNodeTypeDocumentType = 11,     ///< the root's name; CFXMLDocumentTypeInfo
    kCFXMLNodeTypeWhitespace = 12,       ///< text that is only white space
    kCFXMLNodeTypeNotation = 13,
    kCFXMLNodeTypeElementTypeDeclaration = 14,
    kCFXMLNodeTypeAttributeListDeclaration = 15
};

/// What belongs to an element.
struct CFXMLElementInfo {
    CFDictionaryRef attributes;  ///< values as they stand between the quotes, in the document's order
    Boolean isEmpty;             ///< an empty-element tag
};
/// What belongs to a processing instruction: the text behind its target.
struct CFXMLProcessingInstructionInfo {
    CFStringRef dataString;
};
/// The name of something outside the document.
struct CFXMLExternalID {
    CFStringRef systemID;  ///< as it stands, never resolved or loaded; null if there is none
    CFStringRef publicID;
};
/// What belongs to a document type declaration.
struct CFXMLDocumentTypeInfo {
    CFXMLExternalID externalID;
};
/// What a reference refers to, as far as its spelling tells.
enum CFXMLEntityTypeCode : CFIndex {
    kCFXMLEntityTypeParsedInternal = 1,
    kCFXMLEntityTypeCharacter = 4,
};
/// What belongs to a reference.
struct CFXMLEntityReferenceInfo {
    CFXMLEntityTypeCode entityType;  ///< Character for "#65" and "#x41"
};
/// What belongs to the document itself.
struct CFXMLDocumentInfo {
    CFURLRef sourceURL;
    CFStringEncoding encoding;  ///< kCFStringEncodingInvalidId for one that has no number
};

KESTREL_API CFXMLNodeTypeCode CFXMLNodeGetTypeCode(CFXMLNodeRef);
/// The node's name or text; not retained.
KESTREL_API CFStringRef CFXMLNodeGetString(CFXMLNodeRef);
/// The structure that belongs to the kind, valid as long as the node; null for the other kinds.
KESTREL_API const void* CFXMLNodeGetInfoPtr(CFXMLNodeRef);
/// The version that the parser was created with.
KESTREL_API CFIndex CFXMLNodeGetVersion(CFXMLNodeRef);
