#include <kestrel/foundation/KSString.h>

#include <kestrel/foundation/KSUnreachable.h>
#include <kestrel/platform/detail/AutoreleasePool.h>
#include <kestrel/platform/detail/Collation.h>
#include <kestrel/platform/detail/EncodingSniffer.h>
#include <kestrel/platform/detail/MacRoman.h>
#include <kestrel/platform/detail/StringObject.h>
#include <kestrel/platform/detail/TextEncoding.h>
#include <kestrel/platform/detail/Utf8.h>

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <span>
#include <utility>

using kestrel::detail::Case;
using kestrel::detail::ClampedRange;
using kestrel::detail::unitsOf;

namespace {

/// Adds text to string; false without memory.
bool appendMacRoman(__CFString* string, const char* text, std::size_t length) {
    UniChar* const end = string ? string->reserve(length) : nullptr;
    if (!end) return false;
    kestrel::detail::utf16FromMacRoman(reinterpret_cast<const std::uint8_t*>(text), length, end);
    string->grow(length);
    return true;
}

CFStringRef fromMacRoman(const char* text) {
    if (!text) return nullptr;
    const std::size_t length = std::strlen(text);
    __CFString* string = __CFString::make(length);
    appendMacRoman(string, text, length);
    return string;
}

CFStringRef fromUnits(const unsigned short* units) {
    if (!units) return nullptr;
    CFIndex count = 0;
    while (units[count] != 0) ++count;
    return CFStringCreateWithCharacters(kCFAllocatorDefault, units, count);
}

CFStringRef localized(CFStringRef key, CFBundleRef bundle) {
    return CFBundleCopyLocalizedString(bundle, key, key, nullptr);
}

/// Holds a new object for a while.
struct Temporary {
    explicit Temporary(CFStringRef created) : string(created) {}
    Temporary(const Temporary&) = delete;
    Temporary& operator=(const Temporary&) = delete;
    ~Temporary() { CFRelease(string); }
    CFStringRef string;
};

CFBundleRef bundleNamed(const char* bundleId) {
    return CFBundleGetBundleWithIdentifier(Temporary(fromMacRoman(bundleId)).string);
}

/// The order of two strings, or of a part of the left one. Null comes first; all else is the locale's
/// business.
int order(CFStringRef left, CFStringRef right, Case letters, unsigned long position = 0,
          std::size_t count = std::numeric_limits<std::size_t>::max()) {
    if (!left || !right) return static_cast<int>(left != nullptr) - static_cast<int>(right != nullptr);
    const char* locale = kestrel::detail::localeOfOrder();
    const ClampedRange part(position, count, left->getLength());
    return kestrel::detail::compareIn(locale, left->getUnits().subspan(part.position, part.count),
                                      right->getUnits(), letters);
}

CFRange rangeOf(unsigned long position, unsigned int count) {
    const auto limit = static_cast<unsigned long>(std::numeric_limits<CFIndex>::max());
    return {static_cast<CFIndex>(std::min(position, limit)), static_cast<CFIndex>(count)};
}

}  // namespace

// ----- construction and assignment

KSString::KSString(const char* text) : m_string(fromMacRoman(text)) {}

KSString::KSString(const unsigned short* units) : m_string(fromUnits(units)) {}

KSString::KSString(const char* key, const char* bundleId) {
    if (key && bundleId) keep(localized(Temporary(fromMacRoman(key)).string, bundleNamed(bundleId)));
}

KSString::KSString(CFStringRef key, const char* bundleId) {
    if (bundleId) keep(localized(key, bundleNamed(bundleId)));
}

KSString::KSString(CFStringRef key, CFStringRef bundleId)
    : m_string(localized(key, CFBundleGetBundleWithIdentifier(bundleId))) {}

KSString::KSString(CFStringRef key, CFBundleRef bundle) : m_string(localized(key, bundle)) {}

KSString::KSString(const char* key, CFBundleRef bundle) {
    if (key) keep(localized(Temporary(fromMacRoman(key)).string, bundle));
}

KSString& KSString::operator=(const KSString& other) { return set(other); }

KSString& KSString::operator=(KSString&& other) noexcept {
    std::swap(m_string, other.m_string);
    if (this != &other) other.clear();
    return *this;
}

void KSString::clear() noexcept { keep(nullptr); }

KSString& KSString::set(const KSString& other) {
    keep(CFStringCreateCopy(kCFAllocatorDefault, other.m_string));
    return *this;
}

KSString& KSString::set(const char* text) {
    keep(fromMacRoman(text));
    return *this;
}

KSString& KSString::set(const unsigned short* units) {
    keep(fromUnits(units));
    return *this;
}

KSString& KSString::set(const unsigned short* units, unsigned int count) {
    keep(units ? CFStringCreateWithCharacters(kCFAllocatorDefault, units, static_cast<CFIndex>(count))
               : nullptr);
    return *this;
}

KSString& KSString::set(CFStringRef text) {
    keep(text ? __CFString::make(unitsOf(text)) : nullptr);
    return *this;
}

KSString& KSString::sprintf(const char* format, ...) {
    if (!format) return set(format);
    char buffer[2048] = "";
    va_list args;
    va_start(args, format);
    std::vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    return set(buffer);
}

KSString& KSString::setOSType(unsigned long code) {
    char text[7] = "'";
    char* end = text + 1;
    for (auto rest = static_cast<std::uint32_t>(code); rest != 0; rest <<= 8)
        *end++ = static_cast<char>(rest >> 24);
    *end = '\'';
    return set(text);
}

/// Owns string, which is the caller's reference, instead of what was held.
void KSString::keep(CFStringRef string) noexcept { CFRelease(std::exchange(m_string, string)); }

/// The object to edit in place, with room for extra units: the held one when nobody else could hold it,
/// else a new copy. Null, with everything as it was, without memory. Requires a string that is not null.
__CFString* KSString::edit(std::size_t extra) {
    auto* own = const_cast<__CFString*>(m_string);
    if (own->isUnshared()) return own->reserve(extra) ? own : nullptr;
    __CFString* copy = __CFString::make(own->getUnits(), false, extra);
    if (copy) keep(copy);
    return copy;
}

// ----- queries and conversions

unsigned int KSString::size() const noexcept {
    const std::size_t limit = std::numeric_limits<unsigned int>::max();
    return static_cast<unsigned int>(std::min(unitsOf(m_string).size(), limit));
}

char* KSString::createCStr() const& {
    if (!m_string) return nullptr;
    const auto units = unitsOf(m_string);
    auto* text = static_cast<char*>(std::malloc(units.size() + 1));
    if (!text) return nullptr;
    auto* bytes = reinterpret_cast<std::uint8_t*>(text);
    text[kestrel::detail::macRomanFromUtf16(units.data(), units.size(), bytes)] = '\0';
    return text;
}

char* KSString::createCStr() && {
    auto* own = const_cast<__CFString*>(m_string);
    char* text = own && own->isUnshared() && !own->isMutable() ? __CFString::becomeAscii(own) : nullptr;
    if (!text) return std::as_const(*this).createCStr();
    m_string = nullptr;
    return text;
}

char* KSString::createUTF8Str() const {
    if (!m_string) return nullptr;
    const auto units = unitsOf(m_string);
    auto* text = static_cast<char*>(std::malloc(units.size() * 4 + 1));
    if (text) text[kestrel::detail::utf8FromUtf16(units, text)] = '\0';
    return text;
}

unsigned short* KSString::createUniStr() const {
    if (!m_string) return nullptr;
    const auto units = unitsOf(m_string);
    auto* text = static_cast<unsigned short*>(std::malloc((units.size() + 1) * sizeof(unsigned short)));
    if (text) *std::ranges::copy(units, text).out = 0;
    return text;
}

const unsigned short* KSString::u_str() const noexcept { return CFStringGetCharactersPtr(m_string); }

CFStringRef KSString::cf_str() const noexcept {
    static const CFStringRef emptyString = CFSTR("");
    return m_string ? m_string : emptyString;
}

CFStringRef KSString::ns_str() const {
    return static_cast<CFStringRef>(kestrel::detail::autorelease(CFRetain(cf_str())));
}

unsigned long KSString::get_OSType() const {
    char text[7] = {};
    if (!CFStringGetCString(m_string, text, sizeof text, kCFStringEncodingMacRoman)) return 0;
    if (text[0] != '\'' || text[5] != '\'') return 0;
    std::uint32_t code = 0;
    for (int i = 1; i <= 4; ++i) code = code << 8 | static_cast<std::uint8_t>(text[i]);
    return code;
}

void KSString::debugShow() const { CFShow(m_string); }

// ----- comparison and search

int KSString::compare(const KSString& other) const { return order(m_string, other.m_string, Case::Matters); }

int KSString::caseInsensitiveCompare(const KSString& other) const {
    return order(m_string, other.m_string, Case::Ignored);
}

int KSString::compare(unsigned long position, unsigned int count, const KSString& other) const {
    return order(m_string, other.m_string, Case::Matters, position, count);
}

int KSString::caseInsensitiveCompare(unsigned long position, unsigned int count,
                                     const KSString& other) const {
    return order(m_string, other.m_string, Case::Ignored, position, count);
}

long KSString::find(const KSString& other) const {
    return CFStringFind(m_string, other.m_string, 0).location;
}

KSString KSString::substr(unsigned long position, unsigned int count) const {
    KSString part;
    part.keep(CFStringCreateWithSubstring(kCFAllocatorDefault, m_string, rangeOf(position, count)));
    return part;
}

KSString KSString::substrTo(unsigned long position) const {
    return substr(0, static_cast<unsigned int>(position - 1));
}

KSString KSString::substrFrom(unsigned long position) const {
    const unsigned long length = size();
    return substr(position, position < length ? static_cast<unsigned int>(length - position) : 0);
}

// ----- editing

KSString& KSString::insert(unsigned long position, const KSString& other) {
    return replace(position, 0, other);
}

KSString& KSString::append(const KSString& other) {
    if (!m_string) return set(other);
    if (!other.m_string) return *this;
    // Should other be this string, its units are looked up again once there is room for them twice.
    const std::size_t length = other.m_string->getLength();
    if (__CFString* string = edit(length)) string->append(unitsOf(other.m_string));
    return *this;
}

KSString& KSString::append(const char* text) {
    if (!text) return *this;
    if (!m_string) return set(text);
    const std::size_t length = std::strlen(text);
    appendMacRoman(edit(length), text, length);
    return *this;
}

KSString& KSString::erase(unsigned long position, unsigned int count) {
    if (!m_string || count == 0) return *this;
    const ClampedRange part(position, count, unitsOf(m_string).size());
    if (__CFString* string = edit(0)) string->replace(part.position, part.count, {});
    return *this;
}

KSString& KSString::replace(unsigned long position, unsigned int count, const KSString& other) {
    if (!m_string || !other.m_string) return *this;
    const ClampedRange part(position, count, m_string->getLength());
    if (__CFString* string = edit(other.m_string->getLength()))
        string->replace(part.position, part.count, unitsOf(other.m_string));
    return *this;
}

// ----- unfinished

KSString& KSString::append(const unsigned short*) { KS_UNREACHABLE("KSString", 648, "Not implemented yet"); }

KSString& KSString::append(const KSString&, unsigned long, unsigned int) {
    KS_UNREACHABLE("KSString", 580, "Not implemented yet");
}

KSString& KSString::push_back(char) { KS_UNREACHABLE("KSString", 658, "Not implemented yet"); }

int KSString::compare(unsigned long, unsigned int, const KSString&, unsigned long) const {
    KS_UNREACHABLE("KSString", 470, "Not implemented yet");
}

int KSString::caseInsensitiveCompare(unsigned long, unsigned int, const KSString&, unsigned long) const {
    KS_UNREACHABLE("KSString", 516, "Not implemented yet");
}

// ----- neighbours

CFStringRef CFStringCreateWithSniffingEncoding(const char* text) {
    if (!text) return nullptr;
    const std::span bytes(text, std::strlen(text));
    for (const char* encoding : kestrel::detail::sniffEncodings(bytes))
        if (CFStringRef string = kestrel::detail::createStringNamed(encoding, bytes)) return string;
    return fromMacRoman(text);
}

unsigned short* KSUnicode::strchr(unsigned short* text, unsigned short c) noexcept {
    if (!text) return nullptr;
    if (*text == c) return text;
    while (*text != 0)
        if (*++text == c && c != 0) return text;
    return nullptr;
}
