// kestrel/serialization/KSSerializerReadStream.h - routes the elements of a document to their handlers.
#pragma once

#include <kestrel/foundation/KSString.h>
#include <kestrel/platform/Export.h>
#include <kestrel/serialization/KSScope.h>
#include <kestrel/serialization/KSSerializer.h>
#include <kestrel/serialization/KSStreamElement.h>
#include <kestrel/serialization/KSUUID.h>

#include <memory>
#include <vector>

/// The reading side of the serializer: a concrete reader feeds it elements as it meets them, and each is
/// handed to the handler whose scope names it.
///
/// Handlers   stand on a stack; only the scopes of the topmost are searched, in the order in which they
///            were pushed, and the first entry that names an element (or is named "*") claims it. An
///            element that nothing claims is skipped with everything inside it. A handler that is pushed
///            while an element is open is popped when that element ends.
/// Elements   an element is handed over once, when its first child element begins or, if it has none, when
///            it ends. The stream owns the elements that are open.
/// Ownership  handlers and scopes are borrowed and must outlive their time on the stack.
/// Threads    one thread at a time.
/// Errors     nothing throws.
/// Example
///     bool parseElement(KSSerializerReadStream& in, KSStreamElement& element) override {
///         if (element.getToken() == layerToken) return in.pushHandler(addLayer());  // reads what is inside
///         return in.ignoreElement();
///     }
class KESTREL_API KSSerializerReadStream {
public:
    KSSerializerReadStream() = default;
    KSSerializerReadStream(const KSSerializerReadStream&) = delete;
    KSSerializerReadStream& operator=(const KSSerializerReadStream&) = delete;
    /// Deletes the elements that are still open and forgets the handlers, without parseEnd.
    virtual ~KSSerializerReadStream();

    /// Reads the whole document. The caller has pushed the root handler before.
    virtual bool parse() = 0;
    /// From inside a handler: ends parse(), which returns false.
    virtual void abortParse() = 0;
    /// From inside a handler: ends parse(), which returns true.
    virtual void stopParse() = 0;
    /// A new element for this name, which the caller owns (usually to push it), or null when no scope of the
    /// topmost handler claims it.
    virtual KSStreamElement* getElementInfo(const char* name);

    /// Pushes handler for as long as the current element is open, calls its parseBegin and returns the
    /// result; false for null.
    bool pushHandler(KSSerializer* handler);
    /// Calls the topmost handler's parseEnd and removes it; nothing when there is none.
    void popHandler();
    void popAllHandlers();  ///< innermost first
    /// Adds a scope to the topmost handler, for as long as it stays; nothing when there is none.
    void pushScope(const KSScope* scope);
    /// Skips what is inside the current element.
    bool ignoreElement();

    /// Null when there is none.
    KSSerializer* currentHandler() const { return m_handlers.empty() ? nullptr : m_handlers.back().handler; }
    /// The element that was open when the topmost handler was pushed; null when none was.
    KSStreamElement* currentHandlerElement() const {
        return m_handlers.empty() ? nullptr : m_handlers.back().element;
    }
    /// The innermost open element, or null.
    KSStreamElement* currentElement() const { return m_elements.empty() ? nullptr : m_elements.back(); }

    void pushElement(KSStreamElement* element);  ///< takes it over; nothing for null
    void popElement();                           ///< deletes the innermost; nothing when there is none
    /// Hands element to its handler and returns the handler's result; false when it has none.
    bool processElement(KSStreamElement& element);

    // Typed access, as on the element itself.
    bool getAsString(KSStreamElement& e, KSString* value) { return e.getAsString(value); }
    bool getAsInt32(KSStreamElement& e, int* value) { return e.getAsInt32(value); }
    bool getAsUInt32(KSStreamElement& e, unsigned int* value) { return e.getAsUInt32(value); }
    bool getAsInt64(KSStreamElement& e, long long* value) { return e.getAsInt64(value); }
    bool getAsUInt64(KSStreamElement& e, unsigned long long* value) { return e.getAsUInt64(value); }
    bool getAsFloat(KSStreamElement& e, float* value) { return e.getAsFloat(value); }
    bool getAsDouble(KSStreamElement& e, double* value) { return e.getAsDouble(value); }
    bool getAsBool(KSStreamElement& e, bool* value) { return e.getAsBool(value); }
    KSUUID* getAsUUID(KSStreamElement& e) { return e.getAsUUID(); }
    bool getAttributeAsString(KSStreamElement& e, unsigned int token, KSString* value) {
        return e.getAttributeAsString(token, value);
    }
    bool getAttributeAsInt32(KSStreamElement& e, unsigned int token, int* value) {
        return e.getAttributeAsInt32(token, value);
    }
    bool getAttributeAsUInt32(KSStreamElement& e, unsigned int token, unsigned int* value) {
        return e.getAttributeAsUInt32(token, value);
    }
    bool getAttributeAsInt64(KSStreamElement& e, unsigned int token, long long* value) {
        return e.getAttributeAsInt64(token, value);
    }
    bool getAttributeAsUInt64(KSStreamElement& e, unsigned int token, unsigned long long* value) {
        return e.getAttributeAsUInt64(token, value);
    }
    bool getAttributeAsFloat(KSStreamElement& e, unsigned int token, float* value) {
        return e.getAttributeAsFloat(token, value);
    }
    bool getAttributeAsDouble(KSStreamElement& e, unsigned int token, double* value) {
        return e.getAttributeAsDouble(token, value);
    }
    bool getAttributeAsBool(KSStreamElement& e, unsigned int token, bool* value) {
        return e.getAttributeAsBool(token, value);
    }
    KSUUID* getAttributeAsUUID(KSStreamElement& e, unsigned int token) { return e.getAttributeAsUUID(token); }

private:
    struct HandlerInfo {
        std::vector<const KSScope*> scopes;
        KSSerializer* handler;
        KSStreamElement* element;  // open when the handler was pushed; null when none was, or it is gone
    };

    std::vector<HandlerInfo> m_handlers;
    std::vector<KSStreamElement*> m_elements;
    std::unique_ptr<KSStreamElement> m_spare;  // an empty one, for the next that begins
};
