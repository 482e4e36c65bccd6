// kestrel/platform/detail/StringTable.h - the texts of one .strings file.
#pragma once

#include <kestrel/platform/CFString.h>

#include <map>
#include <span>
#include <string>
#include <string_view>

namespace kestrel::detail {

/// Keys and their texts, as read from lines
///     "key" = "text";   /* comment */   // comment
/// A bare word of letters, digits and _ . - needs no quotes. Between quotes \n \r \t \" \\ stand for what
/// they do in C, and \U with four hexadecimal digits for one UTF-16 unit. A later entry for a key counts.
///
/// Errors     everything before the first fault is kept; getError() says what is wrong and where.
/// Threads    any number of readers.
class StringTable {
public:
    /// Reads a whole file: UTF-8, or UTF-16 with a byte-order mark. `name` stands before error messages.
    StringTable(std::span<const char> bytes, std::string_view name);
    StringTable(const StringTable&) = delete;
    StringTable& operator=(const StringTable&) = delete;
    ~StringTable();

    /// The text of key (UTF-8), not retained; null when there is none.
    CFStringRef find(const std::string& key) const;
    /// "name:line: what is wrong", or empty.
    const std::string& getError() const { return m_error; }

private:
    std::map<std::string, CFStringRef, std::less<>> m_texts;
    std::string m_error;
};

}  // namespace kestrel::detail
