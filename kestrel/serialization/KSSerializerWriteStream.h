// kestrel/serialization/KSSerializerWriteStream.h - where objects write themselves as a tree of elements.
#pragma once

#include <kestrel/platform/Export.h>

#include <vector>

class KSString;
struct KSScope;
struct KSUUID;

/// The interface of the streams that take elements, attributes and values: the scene document writer
/// (KSXMLWriteStream) and the fingerprint (KSHashWriteStream).
///
/// Order      startElement, then that element's attributes, then either one value or child elements,
///            then endElement; close once after the last element; writeBlankLine between elements only.
///            Names are token numbers, looked up in the current scope.
/// Ownership  scopes are borrowed static data.
/// Threads    one thread at a time.
/// Errors     the implementations throw the KSException family for tokens that the current scope does
///            not hold and for calls out of order. Without any scope, or with a null one, nothing is
///            defined.
/// Example
///     out.pushScope(layerScope);
///     out.startElement(layerToken);
///     out.writeAttribute(nameToken, name);
///     out.endElement();
///     out.popScope();
class KESTREL_API KSSerializerWriteStream {
public:
    KSSerializerWriteStream();
    virtual ~KSSerializerWriteStream();
    KSSerializerWriteStream(const KSSerializerWriteStream&) = delete;
    KSSerializerWriteStream& operator=(const KSSerializerWriteStream&) = delete;

    virtual void startElement(unsigned int token) = 0;
    virtual void endElement() = 0;
    virtual void close() = 0;
    /// Makes the stream ready for another object; here it does nothing.
    virtual void reset();

    virtual void writeValue(int value) = 0;
    virtual void writeValue(unsigned int value) = 0;
    virtual void writeValue(long long value) = 0;
    virtual void writeValue(unsigned long long value) = 0;
    virtual void writeValue(float value) = 0;
    virtual void writeValue(double value) = 0;
    virtual void writeValue(const KSUUID& value) = 0;
    virtual void writeValue(const KSString& value) = 0;

    virtual void writeArray(unsigned int* values, unsigned int count) = 0;
    virtual void writeArray(float* values, unsigned int count) = 0;
    virtual void writeArray(double* values, unsigned int count) = 0;

    // The unsigned forms stand first here, the signed ones above: the order of the table is kept.
    virtual void writeAttribute(unsigned int token, unsigned int value) = 0;
    virtual void writeAttribute(unsigned int token, int value) = 0;
    virtual void writeAttribute(unsigned int token, unsigned long long value) = 0;
    virtual void writeAttribute(unsigned int token, long long value) = 0;
    virtual void writeAttribute(unsigned int token, float value) = 0;
    virtual void writeAttribute(unsigned int token, double value) = 0;
    virtual void writeAttribute(unsigned int token, const KSUUID& value) = 0;
    virtual void writeAttribute(unsigned int token, const KSString& value) = 0;

    virtual void writeBlankLine() = 0;

    /// Makes scope current. A null scope is taken, and is an error as soon as a token is looked up.
    void pushScope(const KSScope* scope);
    /// The scope below becomes current again. Without a scope it does nothing.
    void popScope() noexcept;

protected:
    /// The scope on top; null when that scope is null or there is none.
    const KSScope* currentScope() const noexcept { return m_scopes.empty() ? nullptr : m_scopes.back(); }

private:
    std::vector<const KSScope*> m_scopes;  // the current one last
};
