// kestrel/serialization/detail/StringUnits.h - the UTF-16 units of a string, copied only when they must be.
#pragma once

#include <kestrel/foundation/KSString.h>

#include <cstddef>
#include <cstdlib>

namespace kestrel::detail {

/// Borrows the string's own units where the platform shows them, and holds a copy where it does not.
/// The string must outlive it and not change meanwhile. Null data for a null string or without memory.
class StringUnits {
public:
    explicit StringUnits(const KSString& text)
        : m_copy(text.u_str() ? nullptr : text.createUniStr()),
          m_data(m_copy ? m_copy : text.u_str()),
          m_size(m_data ? text.size() : 0) {}
    ~StringUnits() { std::free(m_copy); }
    StringUnits(const StringUnits&) = delete;
    StringUnits& operator=(const StringUnits&) = delete;

    const unsigned short* data() const noexcept { return m_data; }
    std::size_t size() const noexcept { return m_size; }

private:
    unsigned short* m_copy;
    const unsigned short* m_data;
    std::size_t m_size;
};

}  // namespace kestrel::detail
