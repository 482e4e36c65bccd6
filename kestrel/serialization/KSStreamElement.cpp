#include <kestrel/serialization/KSStreamElement.h>

#include <kestrel/foundation/detail/NumberText.h>
#include <kestrel/foundation/detail/StringUtf8.h>
#include <kestrel/platform/detail/XmlReferences.h>
#include <kestrel/platform/detail/XmlTokenizer.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <optional>
#include <utility>

using kestrel::detail::readNumber;
using kestrel::detail::skipBlanks;
using kestrel::detail::stringFromUtf8;

namespace {

std::string utf8FromString(const KSString& string) {
    char* text = string.createUTF8Str();
    std::string utf8(text ? text : "");
    std::free(text);
    return utf8;
}

// Whether a scope's attribute entry has this name.
bool names(const KSScope& entry, std::string_view name) {
    const char* expected = entry.name;
    for (const char c : name)
        if (*expected++ != c) return false;
    return *expected == '\0';
}

// Names that are longer, or not ASCII, belong to no scope.
constexpr std::size_t longestAttributeName = 127;

std::optional<KSUUID> parseIdentifier(std::string_view text) {
    const std::string digits(text.substr(0, 32));
    const char* place = digits.c_str();
    return KSUUID::parse(place);
}

KSUUID* newIdentifier(const std::optional<KSUUID>& identifier) {
    return identifier ? new KSUUID(*identifier) : nullptr;
}

}  // namespace

KSStreamElement::KSStreamElement(unsigned int token, const KSScope* scope, KSSerializer* handler)
    : m_token(token), m_scope(scope), m_handler(handler) {}

KSStreamElement::~KSStreamElement() = default;

// As a new element, but for the memory of the attributes.
void KSStreamElement::recycle() {
    std::vector<Slice> slices = std::move(m_slices);
    slices.clear();
    this->~KSStreamElement();
    new (this) KSStreamElement(0, nullptr, nullptr);
    m_slices = std::move(slices);
}

const KSString& KSStreamElement::getValue() const {
    if (!m_valueMade) {
        m_value = stringFromUtf8(m_utf8);
        m_valueMade = true;
    }
    return m_value;
}

// ---- attributes ----

void KSStreamElement::addAttribute(const char* name, CFStringRef value) {
    addAttribute(name, KSString(value));
}

void KSStreamElement::addAttribute(const char* name, const KSString& value) {
    if (!name || !m_scope) return;
    const std::string_view text(name);
    if (text.size() > longestAttributeName ||
        std::any_of(text.begin(), text.end(), [](char c) { return c & 0x80; }))
        return;
    for (const KSScope* entry = m_scope; entry->name; ++entry) {
        if (entry->elementToken != m_token || entry->attributeToken == 0 || !names(*entry, name)) continue;
        if (Text* known = const_cast<Text*>(findText(entry->attributeToken)))
            known->value = value;
        else
            m_texts.push_back({entry->attributeToken, value});
    }
}

const KSStreamElement::Text* KSStreamElement::findText(std::uint32_t token) const {
    for (const Text& text : m_texts)
        if (text.token == token) return &text;
    return nullptr;
}

// The only attribute of this name: no tag has two. Most are asked for in the order in which they stand.
inline const KSStreamElement::Slice* KSStreamElement::findNamed(const KSScope& entry) const {
    const Slice* slice = m_slices.data() + m_nextSlice;
    const Slice* const end = m_slices.data() + m_slices.size();
    if (slice == end || !names(entry, slice->name))
        slice =
            std::find_if(m_slices.data(), end, [&](const Slice& other) { return names(entry, other.name); });
    if (slice == end || slice->hasWideName || slice->name.size() > longestAttributeName) return nullptr;
    m_nextSlice = static_cast<std::size_t>(slice - m_slices.data()) + 1;
    return slice;
}

// The last attribute of the document that any of the scope's entries for this token names.
const KSStreamElement::Slice* KSStreamElement::findSlice(std::uint32_t token) const {
    if (!m_scope || token == 0) return nullptr;
    const Slice* found = nullptr;
    for (const KSScope* entry = m_scope; entry->name; ++entry) {
        if (entry->attributeToken != token || entry->elementToken != m_token) continue;
        const Slice* named = findNamed(*entry);
        if (named && (!found || found < named)) found = named;
    }
    return found;
}

// Calls use with the attribute's text in UTF-8; false without calling it when the attribute is absent.
template <typename Use>
bool KSStreamElement::useAttribute(std::uint32_t token, Use use) const {
    if (const Text* text = findText(token))
        use(utf8FromString(text->value));
    else if (const Slice* slice = findSlice(token); slice && slice->hasReferences)
        use(kestrel::detail::unescapeXml(slice->value));
    else if (slice)
        use(slice->value);
    else
        return false;
    return true;
}

template <typename Number>
bool KSStreamElement::readAttribute(unsigned int token, Number* value) const {
    bool inRange = false;
    useAttribute(token, [&](std::string_view text) {
        const char* place = text.data();
        Number number{};
        inRange = readNumber(place, place + text.size(), number);
        if (value) *value = number;
    });
    return inRange;
}

bool KSStreamElement::getAttributeAsString(unsigned int token, KSString* value) const {
    KSString text;
    if (const Text* known = findText(token))
        text = known->value;
    else if (!useAttribute(token, [&](std::string_view utf8) { text = stringFromUtf8(utf8); }))
        return false;
    if (value) *value = std::move(text);
    return true;
}

bool KSStreamElement::getAttributeAsInt32(unsigned int token, int* value) const {
    return readAttribute(token, value);
}
bool KSStreamElement::getAttributeAsUInt32(unsigned int token, unsigned int* value) const {
    return readAttribute(token, value);
}
bool KSStreamElement::getAttributeAsInt64(unsigned int token, long long* value) const {
    return readAttribute(token, value);
}
bool KSStreamElement::getAttributeAsUInt64(unsigned int token, unsigned long long* value) const {
    return readAttribute(token, value);
}
bool KSStreamElement::getAttributeAsFloat(unsigned int token, float* value) const {
    return readAttribute(token, value);
}
bool KSStreamElement::getAttributeAsDouble(unsigned int token, double* value) const {
    return readAttribute(token, value);
}

bool KSStreamElement::getAttributeAsBool(unsigned int token, bool* value) const {
    bool inRange = false;
    useAttribute(token, [&](std::string_view text) {
        const char* place = text.data();
        unsigned int number = 0;
        inRange = readNumber(place, place + text.size(), number);
        if (value) *value = number != 0;
    });
    return inRange;
}

KSUUID* KSStreamElement::getAttributeAsUUID(unsigned int token) const {
    std::optional<KSUUID> identifier;
    useAttribute(token, [&](std::string_view text) { identifier = parseIdentifier(text); });
    return newIdentifier(identifier);
}

char* KSStreamElement::getAttributeAsCString(unsigned int token) const {
    if (const Text* text = findText(token)) return text->value.createUTF8Str();
    char* copy = nullptr;
    useAttribute(token, [&](std::string_view text) {
        copy = static_cast<char*>(std::malloc(text.size() + 1));
        if (copy) *std::copy(text.begin(), text.end(), copy) = '\0';
    });
    return copy;
}

// ---- value ----

void KSStreamElement::setValue(const KSString& value) {
    m_value = value;
    m_valueMade = true;
    m_ownUtf8 = utf8FromString(value);
    m_utf8 = m_ownUtf8;
}

// Text of the document: kept as a slice while it is all there is.
void KSStreamElement::appendSlice(std::string_view utf8, bool newLine) {
    if (m_utf8.empty()) {
        m_utf8 = utf8;
        m_valueMade = false;
        return;
    }
    if (newLine) appendText("\n");
    appendText(utf8);
}

void KSStreamElement::appendText(std::string_view utf8) {
    if (m_utf8.data() != m_ownUtf8.data()) m_ownUtf8.assign(m_utf8);
    m_ownUtf8.append(utf8);
    m_utf8 = m_ownUtf8;
    m_valueMade = false;
}

bool KSStreamElement::initParams() {
    if (!m_cursor) {
        if (m_utf8.data() == m_ownUtf8.data()) {  // may still grow; a NUL in it ends what is read
            m_cursorBuffer.assign(m_utf8.substr(0, m_utf8.find('\0')));
            m_cursor = m_cursorBuffer.data();
            m_cursorEnd = m_cursor + m_cursorBuffer.size();
        } else {
            m_cursor = m_utf8.data();
            m_cursorEnd = m_cursor + m_utf8.size();
        }
    }
    return m_cursor < m_cursorEnd;
}

template <typename Number>
bool KSStreamElement::readValue(Number* value) {
    if (!initParams()) return false;
    const char* place = m_cursor;
    Number number{};
    const bool inRange = readNumber(place, m_cursorEnd, number);
    if (value) *value = number;
    if (inRange) m_cursor = skipBlanks(place, m_cursorEnd);
    return inRange;
}

bool KSStreamElement::getAsString(KSString* value) const {
    if (value) *value = getValue();
    return true;
}

bool KSStreamElement::getAsInt32(int* value) { return readValue(value); }
bool KSStreamElement::getAsUInt32(unsigned int* value) { return readValue(value); }
bool KSStreamElement::getAsInt64(long long* value) { return readValue(value); }
bool KSStreamElement::getAsUInt64(unsigned long long* value) { return readValue(value); }
bool KSStreamElement::getAsFloat(float* value) { return readValue(value); }
bool KSStreamElement::getAsDouble(double* value) { return readValue(value); }

bool KSStreamElement::getAsBool(bool* value) {
    if (!initParams()) return false;
    unsigned int number = 0;
    const bool inRange = readValue(&number);
    if (value) *value = number != 0;
    return inRange;
}

KSUUID* KSStreamElement::getAsUUID() {
    if (!initParams()) return nullptr;
    const auto identifier = parseIdentifier({m_cursor, static_cast<std::size_t>(m_cursorEnd - m_cursor)});
    if (identifier) m_cursor += 32;
    return newIdentifier(identifier);
}

KSUUID* KSStreamElement::atoUUID(char** text) {
    if (!text) return nullptr;
    const char* place = *text;
    const auto identifier = KSUUID::parse(place);
    if (identifier) *text += 32;
    return newIdentifier(identifier);
}
