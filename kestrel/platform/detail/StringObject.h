// kestrel/platform/detail/StringObject.h - the text object, for the library's own fast paths.
#pragma once

#include <kestrel/platform/CFString.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>
#include <span>
#include <string>

/// One text. Its units follow the object in the same block until they outgrow it.
///
/// Copies share the object by reference count, so that a copy costs one count; whoever edits a text that
/// others hold makes an object of his own first.
struct __CFString final : kestrel::detail::PlatformObject {
public:
    /// A new object without text, with room for capacity units; null without memory.
    static __CFString* make(std::size_t capacity, bool isMutable = false) noexcept {
        if (capacity > maximumLength) return nullptr;
        void* block = std::malloc(sizeof(__CFString) + capacity * sizeof(UniChar));
        return block ? new (block) __CFString(capacity, isMutable) : nullptr;
    }
    /// A new object with a copy of units.
    static __CFString* make(std::span<const UniChar> units, bool isMutable = false,
                            std::size_t room = 0) noexcept;

    ~__CFString() override;
    static void operator delete(void* block) { std::free(block); }
    std::string describe() const override;

    std::span<const UniChar> getUnits() const noexcept { return {m_units, m_length}; }
    std::size_t getLength() const noexcept { return m_length; }
    /// True when nobody could notice, or everybody wants to notice, that the text changes in place.
    bool isEditable() const noexcept { return isMutable() || isUnshared(); }

    /// Makes room for extra units more, growing in proportion; null without memory, else where the first
    /// of them goes. Requires isEditable().
    UniChar* reserve(std::size_t extra) noexcept {
        return extra <= m_capacity - m_length || enlarge(extra) ? m_units + m_length : nullptr;
    }
    /// Takes count units, written behind the end after reserve(), into the text.
    void grow(std::size_t count) noexcept { m_length += count; }
    /// Adds units, which must not lie in this text; false without memory.
    bool append(std::span<const UniChar> units) noexcept {
        UniChar* const end = reserve(units.size());
        if (end && !units.empty()) std::memcpy(end, units.data(), units.size_bytes());
        if (end) m_length += units.size();
        return end;
    }
    /// Replaces count units at position (both within the text) by units, which may lie in this text.
    /// False without memory: the text is as it was.
    bool replace(std::size_t position, std::size_t count, std::span<const UniChar> units) noexcept;
    /// Ends string and writes its text, with a NUL, over its block, which the caller frees with free(). Null,
    /// with nothing done, unless the text is short, ASCII, and in that block. Requires that nobody else holds
    /// string.
    static char* becomeAscii(__CFString* string) noexcept;

private:
    // Far beyond any memory, and small enough that no sum or product of sizes wraps.
    static constexpr std::size_t maximumLength = std::size_t{1} << 60;

    __CFString(std::size_t capacity, bool isMutable) noexcept
        : PlatformObject(isMutable), m_capacity(capacity), m_units(getInlineUnits()) {}
    bool enlarge(std::size_t extra) noexcept;
    __CFString(const __CFString&) = delete;
    UniChar* getInlineUnits() noexcept { return reinterpret_cast<UniChar*>(this + 1); }

    std::size_t m_length = 0;
    std::size_t m_capacity;
    UniChar* m_units;
};

namespace kestrel::detail {

/// The units of a text; none for null.
inline std::span<const UniChar> unitsOf(CFStringRef string) noexcept {
    return string ? string->getUnits() : std::span<const UniChar>();
}

/// The part of range that lies within length units.
struct ClampedRange {
    std::size_t position;
    std::size_t count;
    ClampedRange(std::size_t start, std::size_t units, std::size_t length) noexcept
        : position(start < length ? start : length),
          count(units < length - position ? units : length - position) {}
    ClampedRange(CFRange range, std::size_t length) noexcept
        : ClampedRange(range.location > 0 ? static_cast<std::size_t>(range.location) : 0,
                       range.length > 0 ? static_cast<std::size_t>(range.length) : 0, length) {}
};

}  // namespace kestrel::detail
