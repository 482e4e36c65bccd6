#include <kestrel/platform/CFString.h>

#include <kestrel/platform/detail/AsciiRun.h>
#include <kestrel/platform/detail/StringObject.h>
#include <kestrel/platform/detail/Utf8.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <mutex>

using kestrel::detail::ClampedRange;
using kestrel::detail::unitsOf;

namespace {

std::span<const UniChar> spanOf(const UniChar* units, CFIndex count) {
    if (!units || count <= 0) return {};
    return {units, static_cast<std::size_t>(count)};
}

bool liesIn(const UniChar* unit, std::span<const UniChar> text) {
    return std::less_equal<>()(text.data(), unit) && std::less<>()(unit, text.data() + text.size());
}

}  // namespace

__CFString::~__CFString() {
    if (m_units != getInlineUnits()) std::free(m_units);
}

__CFString* __CFString::make(std::span<const UniChar> units, bool isMutable, std::size_t room) noexcept {
    if (room > maximumLength) return nullptr;
    __CFString* string = make(units.size() + room, isMutable);
    if (string && !units.empty()) std::memcpy(string->m_units, units.data(), units.size_bytes());
    if (string) string->m_length = units.size();
    return string;
}

bool __CFString::enlarge(std::size_t extra) noexcept {
    if (extra > maximumLength) return false;
    const std::size_t capacity = std::max(m_length + extra, m_capacity + m_capacity / 2 + 16);
    const bool wasInline = m_units == getInlineUnits();
    void* units = std::realloc(wasInline ? nullptr : m_units, capacity * sizeof(UniChar));
    if (!units) return false;
    if (wasInline) std::memcpy(units, m_units, m_length * sizeof(UniChar));
    m_units = static_cast<UniChar*>(units);
    m_capacity = capacity;
    return true;
}

bool __CFString::replace(std::size_t position, std::size_t count, std::span<const UniChar> units) noexcept {
    if (!units.empty() && liesIn(units.data(), getUnits())) {
        __CFString* copy = make(units);
        const bool done = copy && replace(position, count, copy->getUnits());
        CFRelease(copy);
        return done;
    }
    if (units.size() > count && !reserve(units.size() - count)) return false;
    UniChar* const hole = m_units + position;
    std::memmove(hole + units.size(), hole + count, (m_length - position - count) * sizeof(UniChar));
    if (!units.empty()) std::memcpy(hole, units.data(), units.size_bytes());
    m_length = m_length - count + units.size();
    return true;
}

char* __CFString::becomeAscii(__CFString* string) noexcept {
    constexpr std::size_t longest = 1024;  // a longer block would waste more than its copy costs
    const UniChar* const units = string->m_units;
    const std::size_t length = string->m_length;
    if (length > longest || units != string->getInlineUnits() || !kestrel::detail::isAscii(units, length))
        return nullptr;
    string->~__CFString();
    char* const text = reinterpret_cast<char*>(string);
    // The units are ahead of what is written: each block is read before anything is written over it.
    std::size_t i = 0;
    for (; length - i >= kestrel::detail::asciiBlock; i += kestrel::detail::asciiBlock) {
        std::array<UniChar, kestrel::detail::asciiBlock> block;
        std::memcpy(block.data(), units + i, sizeof block);
        std::array<char, kestrel::detail::asciiBlock> narrow;
        std::ranges::transform(block, narrow.begin(), [](UniChar unit) { return static_cast<char>(unit); });
        std::memcpy(text + i, narrow.data(), sizeof narrow);
    }
    for (; i < length; ++i) text[i] = static_cast<char>(units[i]);
    text[length] = '\0';
    return text;
}

std::string __CFString::describe() const { return kestrel::detail::utf8Of(getUnits()); }

CFStringRef __CFStringMakeConstantString(const char* text) {
    static std::mutex mutex;
    static auto& strings = *new std::map<std::string, CFStringRef>;  // lives until the process ends
    const std::string key = text ? text : "";
    const std::lock_guard lock(mutex);
    CFStringRef& string = strings[key];
    if (!string) {
        string = CFStringCreateWithCString(kCFAllocatorDefault, key.c_str(), kCFStringEncodingMacRoman);
        CFRetain(string);  // a second holder: nobody ever has it alone and edits it
    }
    return string;
}

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef, const UniChar* units, CFIndex count) {
    return __CFString::make(spanOf(units, count));
}

CFStringRef kestrel::detail::duplicate(CFStringRef string) noexcept {
    return __CFString::make(string->getUnits());
}

CFStringRef CFStringCreateWithSubstring(CFAllocatorRef allocator, CFStringRef string, CFRange range) {
    if (!string) return nullptr;
    const ClampedRange part(range, string->getLength());
    if (part.count == string->getLength()) return CFStringCreateCopy(allocator, string);
    return __CFString::make(string->getUnits().subspan(part.position, part.count));
}

CFMutableStringRef CFStringCreateMutable(CFAllocatorRef, CFIndex) { return __CFString::make(16, true); }

CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef, CFIndex, CFStringRef string) {
    return string ? __CFString::make(string->getUnits(), true) : nullptr;
}

CFIndex CFStringGetLength(CFStringRef string) { return static_cast<CFIndex>(unitsOf(string).size()); }

UniChar CFStringGetCharacterAtIndex(CFStringRef string, CFIndex index) {
    const auto units = unitsOf(string);
    return index >= 0 && static_cast<std::size_t>(index) < units.size()
               ? units[static_cast<std::size_t>(index)]
               : UniChar{0};
}

void CFStringGetCharacters(CFStringRef string, CFRange range, UniChar* buffer) {
    const auto units = unitsOf(string);
    const ClampedRange part(range, units.size());
    if (buffer && part.count) std::memcpy(buffer, units.data() + part.position, part.count * sizeof(UniChar));
}

const UniChar* CFStringGetCharactersPtr(CFStringRef string) {
    return string ? string->getUnits().data() : nullptr;
}

void CFStringAppend(CFMutableStringRef string, CFStringRef other) {
    CFStringReplace(string, {CFStringGetLength(string), 0}, other);
}

void CFStringAppendCharacters(CFMutableStringRef string, const UniChar* units, CFIndex count) {
    if (string && string->isEditable()) string->replace(string->getLength(), 0, spanOf(units, count));
}

void CFStringAppendCString(CFMutableStringRef string, const char* text, CFStringEncoding encoding) {
    CFStringRef other = CFStringCreateWithCString(kCFAllocatorDefault, text, encoding);
    CFStringAppend(string, other);
    CFRelease(other);
}

void CFStringInsert(CFMutableStringRef string, CFIndex index, CFStringRef other) {
    CFStringReplace(string, {index, 0}, other);
}

void CFStringDelete(CFMutableStringRef string, CFRange range) { CFStringReplace(string, range, nullptr); }

void CFStringReplace(CFMutableStringRef string, CFRange range, CFStringRef other) {
    if (!string || !string->isEditable()) return;
    const ClampedRange part(range, string->getLength());
    string->replace(part.position, part.count, unitsOf(other));
}

void CFStringReplaceAll(CFMutableStringRef string, CFStringRef other) {
    CFStringReplace(string, {0, CFStringGetLength(string)}, other);
}
