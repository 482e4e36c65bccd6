// kestrel/serialization/KSSerializer.h - what a class implements to be written and read.
#pragma once

#include <kestrel/platform/Export.h>

class KSSerializerReadStream;
class KSSerializerWriteStream;
class KSStreamElement;

/// The element handler: an object that writes itself to a KSSerializerWriteStream, and that a
/// KSSerializerReadStream hands the elements which the object's scopes name.
///
/// The bool arguments of the first three operations mean whatever the serializing classes agree on; the
/// streams pass them through unchanged. Handlers are never owned or deleted by a stream. A handler
/// pushes its scopes in parseBegin, and in parseElement takes the element's attributes and value; for a
/// nested object it pushes that object as a handler, which is popped when the element ends.
///
/// Example
///     bool Layer::parseBegin(KSSerializerReadStream& in) { in.pushScope(scope); return true; }
///     bool Layer::parseElement(KSSerializerReadStream&, KSStreamElement& e) {
///         return e.getAttributeAsString(nameToken, &m_name);
///     }
class KESTREL_API KSSerializer {
public:
    virtual ~KSSerializer() = default;

    /// Writes the object's own elements that precede its body.
    virtual void writeHeader(KSSerializerWriteStream& out, bool first) = 0;
    /// Writes the object's body.
    virtual void writeBody(KSSerializerWriteStream& out, bool first, bool second) = 0;
    /// A pass before writing in which the object marks the factories that it needs.
    virtual void markFactoriesForSerialization(KSSerializerWriteStream& out, bool first) = 0;

    /// Called when the object is pushed on a read stream as a handler.
    virtual bool parseBegin(KSSerializerReadStream& in) = 0;
    /// Called when it is popped.
    virtual bool parseEnd(KSSerializerReadStream& in) = 0;
    /// Called for each element that the handler's scopes claim: at its first child element or, if it has
    /// none, at its end.
    virtual bool parseElement(KSSerializerReadStream& in, KSStreamElement& element) = 0;
};
