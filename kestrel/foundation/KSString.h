// kestrel/foundation/KSString.h - the library's text, and its neighbours for 16-bit and unknown text.
#pragma once

#include <kestrel/platform/CFBundle.h>
#include <kestrel/platform/CFString.h>
#include <kestrel/platform/Export.h>

#include <cstddef>
#include <utility>

namespace kestrel::detail {
class StringAccess;
}

/// The one string type: a thin owner of one platform text object, or of none.
///
/// Text       UTF-16. Every const char* in and out is Mac OS Roman; only createUTF8Str speaks UTF-8. A
///            null string and one of length 0 are both empty; they differ in comparisons and in cf_str().
/// Units      positions and lengths count 16-bit units; a range past the end is clamped to the text.
/// Ownership  holds one reference. What create... returns belongs to the caller, who calls free().
///            Copies share the object, and an edit makes a new one whenever anyone else could hold the
///            old: no holder ever sees a text change. Appending in a loop costs amortised O(1) a unit.
/// Threads    no lock; distinct strings may be used on distinct threads, also when they share an object.
/// Errors     nothing throws. A null char* makes a null string or does nothing; an edit without memory
///            leaves the text as it was.
/// Example
///     KSString name("shot_");
///     name.append("010").append(KSString(".exr"));
///     if (name.find("010") >= 0) name.replace(5, 3, "020");
class KESTREL_API KSString {
public:
    KSString() noexcept = default;                     ///< null
    KSString(std::nullptr_t) noexcept : KSString() {}  ///< null
    KSString(const char* text);                        ///< Mac OS Roman; null for null
    KSString(const unsigned short* units);             ///< up to the first 0 unit; null for null
    /// Shares the text, O(1): as a rule the cost of counting one more holder.
    KSString(const KSString& other) : m_string(CFStringCreateCopy(kCFAllocatorDefault, other.m_string)) {}
    /// Other becomes null.
    KSString(KSString&& other) noexcept : m_string(std::exchange(other.m_string, nullptr)) {}
    /// Shares this very object; cf_str() gives it back.
    KSString(CFStringRef const& text) noexcept : m_string(text) { CFRetain(text); }

    // Localised text: what the default string table of a bundle has for key in the user's locale, the key
    // itself when there is none (or no such bundle). A null argument makes a null string; a null bundle,
    // the key.
    KSString(const char* key, const char* bundleId);
    KSString(CFStringRef key, const char* bundleId);
    KSString(CFStringRef key, CFStringRef bundleId);
    KSString(CFStringRef key, CFBundleRef bundle);
    KSString(const char* key, CFBundleRef bundle);

    ~KSString() { CFRelease(m_string); }
    KSString& operator=(const KSString& other);  ///< shares the text, O(1)
    KSString& operator=(KSString&& other) noexcept;

    void clear() noexcept;  ///< makes the string null
    KSString& set(const KSString& other);
    KSString& set(const char* text);             ///< Mac OS Roman
    KSString& set(const unsigned short* units);  ///< up to the first 0 unit
    KSString& set(const unsigned short* units, unsigned int count);
    KSString& set(CFStringRef text);  ///< a copy of its own
    /// Replaces the text by a formatted one (Mac OS Roman) of at most 2047 bytes; the rest is cut off.
    KSString& sprintf(const char* format, ...) __attribute__((format(printf, 2, 3)));
    /// Replaces the text by a four-character code between apostrophes: the low 32 bits of code, top byte
    /// first. Trailing zero bytes are dropped ('AB' for 0x41420000, '' for 0); a zero byte before others
    /// deliberately ends the text at once, without a closing apostrophe.
    KSString& setOSType(unsigned long code);

    unsigned int size() const noexcept;  ///< in 16-bit units; 0 for null
    bool empty() const noexcept { return size() == 0; }
    /// A new Mac OS Roman text; null for a null string or without memory. When a character cannot be held,
    /// the buffer is terminated and otherwise unspecified.
    char* createCStr() const&;
    /// The same. A short text of ASCII that nobody else holds hands its own memory on and becomes null.
    char* createCStr() &&;
    char* createUTF8Str() const;           ///< a new UTF-8 text, U+FFFD for lone surrogates; null for null
    unsigned short* createUniStr() const;  ///< the units and a 0 unit; null for null
    /// The units themselves, without a 0 unit behind them, until the string is next edited; null for null.
    const unsigned short* u_str() const noexcept;
    /// The held object, or a constant empty one for a null string; not retained.
    CFStringRef cf_str() const noexcept;
    /// The same object under the name of another runtime, kept alive until the calling thread's autorelease
    /// pool ends.
    CFStringRef ns_str() const;
    /// The code in a text of exactly six characters 'ABCD', first character in the top byte; else 0. So a
    /// shorter code that setOSType wrote reads as 0.
    unsigned long get_OSType() const;
    void debugShow() const;  ///< writes the text and a newline to standard error

    // Ordering: negative, 0 or positive, by the process locale's collation (by 16-bit unit in the C
    // locale). A null string comes before every other, also before an empty one.
    int compare(const KSString& other) const;
    int caseInsensitiveCompare(const KSString& other) const;
    int compare(unsigned long position, unsigned int count, const KSString& other) const;
    int caseInsensitiveCompare(unsigned long position, unsigned int count, const KSString& other) const;

    /// Where other first begins, unit by unit; -1 when it does not, and for an empty other.
    long find(const KSString& other) const;
    KSString substr(unsigned long position, unsigned int count) const;
    /// The start of the text, deliberately one unit fewer than position: substrTo(5) of abcdefg is abcd.
    KSString substrTo(unsigned long position) const;
    KSString substrFrom(unsigned long position) const;

    // Editing. Any argument may be the string itself.
    KSString& insert(unsigned long position, const KSString& other);  ///< nothing when this is null
    KSString& append(const KSString& other);                          ///< nothing when other is null
    KSString& append(const char* text);                               ///< nothing when text is null
    KSString& erase(unsigned long position, unsigned int count);
    /// Nothing when this or other is null.
    KSString& replace(unsigned long position, unsigned int count, const KSString& other);

    // Not implemented, on purpose: each prints that it should not have been reached and aborts.
    [[noreturn]] KSString& append(const unsigned short* units);
    [[noreturn]] KSString& append(const KSString& other, unsigned long position, unsigned int count);
    [[noreturn]] KSString& push_back(char character);
    [[noreturn]] int compare(unsigned long position, unsigned int count, const KSString& other,
                             unsigned long otherPosition) const;
    [[noreturn]] int caseInsensitiveCompare(unsigned long position, unsigned int count, const KSString& other,
                                            unsigned long otherPosition) const;

private:
    friend class kestrel::detail::StringAccess;
    void keep(CFStringRef string) noexcept;
    __CFString* edit(std::size_t extra);

    CFStringRef m_string = nullptr;
};

/// A new string, which the caller releases, of NUL-terminated text in an encoding that nobody told: the
/// candidates are tried from the likeliest on, and Mac OS Roman when none will do. Null for null.
KESTREL_API CFStringRef CFStringCreateWithSniffingEncoding(const char* text);

/// Help for NUL-terminated arrays of 16-bit units.
class KESTREL_API KSUnicode {
public:
    /// The first unit equal to c, or null when the 0 comes first. Looking for 0 finds it only in an empty
    /// text, since the scan ends at the 0 without comparing it.
    static unsigned short* strchr(unsigned short* text, unsigned short c) noexcept;
};
