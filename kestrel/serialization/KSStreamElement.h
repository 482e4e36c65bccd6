// kestrel/serialization/KSStreamElement.h - one element of a document while it is read.
#pragma once

#include <kestrel/foundation/KSString.h>
#include <kestrel/platform/CFString.h>
#include <kestrel/platform/Export.h>
#include <kestrel/serialization/KSScope.h>
#include <kestrel/serialization/KSSerializer.h>
#include <kestrel/serialization/KSUUID.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel::detail {
struct XmlAttribute;
}

/// One element being read: its token, the attributes that its scope knows, and its text, with typed
/// readers for both.
///
/// Numbers    read as the standard functions named below do in the C locale, base 10, whatever the locale
///            of the process: leading blanks are skipped, and a text that is no number reads as 0 and is
///            no failure. int and unsigned have the range of 32 bits. A failure is a range error (the
///            output is the nearest limit), an attribute that is absent, or a value at its end. A float
///            is narrowed from a double, so that 1e39 is infinity. -1 read as unsigned wraps around.
/// Values     successive reads of the value give successive blank-separated numbers: "1 2 3" gives three,
///            and then false. A read that fails or finds no number stays where it is; blanks alone read
///            once as 0. A loop over values needs a bound of its own: at "1 x" every further read stays
///            at the x and answers 0 and true.
/// Ownership  the stream owns its elements; scope and handler are borrowed. Text that the reader takes
///            from its document is converted when it is asked for, not before.
/// Threads    that of the stream.
/// Example
///     int width = 0, height = 0;
///     element.getAttributeAsInt32(widthToken, &width);
///     double matrix[9];
///     for (double& entry : matrix)
///         if (!element.getAsDouble(&entry)) return false;
class KESTREL_API KSStreamElement {
public:
    KSStreamElement(unsigned int token, const KSScope* scope, KSSerializer* handler);
    ~KSStreamElement();
    KSStreamElement(const KSStreamElement&) = delete;
    KSStreamElement& operator=(const KSStreamElement&) = delete;

    unsigned int getToken() const { return m_token; }
    const KSScope* getScope() const { return m_scope; }     ///< the scope whose entry matched
    KSSerializer* getHandler() const { return m_handler; }  ///< the handler that owned that scope
    bool isProcessed() const { return m_processed; }        ///< whether its handler has been given it
    /// The text so far; null when there was none. An element with children has the white space between
    /// them as its text, joined by line feeds.
    const KSString& getValue() const;

    // For readers: what the document says.

    /// Sets the attribute on every entry of the scope that names it for this element; drops it where none
    /// does. A later value replaces an earlier one. name may be null, which names nothing.
    void addAttribute(const char* name, CFStringRef value);
    void addAttribute(const char* name, const KSString& value);
    /// Replaces the text. A typed reader that has begun goes on in the text it began with.
    void setValue(const KSString& value);

    // The value.

    bool getAsString(KSString* value) const;  ///< all of it; moves nothing and never fails
    bool getAsInt32(int* value);
    bool getAsUInt32(unsigned int* value);
    bool getAsInt64(long long* value);
    bool getAsUInt64(unsigned long long* value);
    bool getAsFloat(float* value);
    bool getAsDouble(double* value);
    bool getAsBool(bool* value);  ///< true when the number, read as unsigned, is not 0
    /// A new identifier, which the caller deletes, of exactly 32 hexadecimal digits; null for other text.
    /// Blanks before them are not skipped.
    KSUUID* getAsUUID();
    /// Begins the typed reading of the value; whether any text is left.
    bool initParams();

    // The attributes, by token.

    bool getAttributeAsString(unsigned int token, KSString* value) const;
    bool getAttributeAsInt32(unsigned int token, int* value) const;
    bool getAttributeAsUInt32(unsigned int token, unsigned int* value) const;
    bool getAttributeAsInt64(unsigned int token, long long* value) const;
    bool getAttributeAsUInt64(unsigned int token, unsigned long long* value) const;
    bool getAttributeAsFloat(unsigned int token, float* value) const;
    bool getAttributeAsDouble(unsigned int token, double* value) const;
    bool getAttributeAsBool(unsigned int token, bool* value) const;
    KSUUID* getAttributeAsUUID(unsigned int token) const;   ///< new, or null; the caller deletes it
    char* getAttributeAsCString(unsigned int token) const;  ///< new UTF-8, or null; the caller calls free()

    /// Reads 32 hexadecimal digits at *text and moves *text behind them. A new identifier, which the caller
    /// deletes; null, and *text as it was, at any other character.
    static KSUUID* atoUUID(char** text);

private:
    friend class KSSerializerReadStream;
    friend class KSXMLReadStream;

    /// An attribute as it stands in the document. Which token it has is found out when it is asked for.
    using Slice = kestrel::detail::XmlAttribute;
    /// An attribute that addAttribute set.
    struct Text {
        std::uint32_t token;
        KSString value;
    };

    void recycle();
    const Text* findText(std::uint32_t token) const;
    const Slice* findSlice(std::uint32_t token) const;
    const Slice* findNamed(const KSScope& entry) const;
    void appendSlice(std::string_view utf8, bool newLine);
    void appendText(std::string_view utf8);
    template <typename Number>
    bool readValue(Number* value);
    template <typename Use>
    bool useAttribute(std::uint32_t token, Use use) const;
    template <typename Number>
    bool readAttribute(unsigned int token, Number* value) const;

    std::uint32_t m_token;
    bool m_processed = false;
    unsigned int m_handlerCount = 0;  // the handler records that name this element
    const KSScope* m_scope;
    KSSerializer* m_handler;
    std::vector<Slice> m_slices;
    mutable std::size_t m_nextSlice = 0;  // behind the one that was asked for last
    std::vector<Text> m_texts;            // they replace slices
    // The text in UTF-8: a slice of the document until something is appended to it.
    std::string_view m_utf8;
    std::string m_ownUtf8;
    mutable KSString m_value;  // the same text, made when it is asked for
    mutable bool m_valueMade = true;
    const char* m_cursor = nullptr;
    const char* m_cursorEnd = nullptr;
    std::string m_cursorBuffer;  // what the cursor reads, unless it is a slice of the document
};
