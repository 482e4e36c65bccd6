#include <kestrel/foundation/detail/StringUtf8.h>
#include <kestrel/platform/detail/StringObject.h>

namespace kestrel::detail {

/// What the functions below need of a string's inside.
class StringAccess {
public:
    /// An object of string's own with room for extra units, its text as it was; null without memory.
    static __CFString* edit(KSString& string, std::size_t extra) {
        if (!string.m_string) string.keep(__CFString::make(extra));
        return string.m_string ? string.edit(extra) : nullptr;
    }
};

KSString stringFromUtf8(std::string_view bytes) {
    KSString string;
    if (!appendUtf8(string, bytes)) string.clear();
    return string;
}

bool appendUtf8(KSString& string, std::string_view bytes) {
    const bool wasNull = string.u_str() == nullptr;
    __CFString* const object = StringAccess::edit(string, bytes.size());
    const std::size_t units = object ? utf16FromUtf8(bytes, object->reserve(bytes.size())) : invalidText;
    if (units == invalidText) {
        if (wasNull) string.clear();
        return false;
    }
    object->grow(units);
    return true;
}

}  // namespace kestrel::detail
