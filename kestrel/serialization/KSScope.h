// kestrel/serialization/KSScope.h - the table that maps token numbers to names in documents.
#pragma once

#include <kestrel/platform/Export.h>

#include <cstdint>

/// One entry of a scope. A scope is a constant array of entries that ends with one whose name is null;
/// it is passed around as a pointer to its first entry.
///
/// Objects name their elements and attributes by small numbers, and never spell a name outside this
/// table. Entries are searched from the first onwards and the first match wins. The first entry's name
/// is also the scope's name in messages. Attribute tokens are unique only within their element: an
/// attribute is always looked up by the pair (token of the open element, attribute token). An element
/// entry named "*" matches every element name when reading.
///
/// Ownership  scopes are static data: streams keep pointers to them and never copy or free them.
/// Threads    constant, so any number of readers.
/// Example
///     static constexpr KSScope scope[] = {
///         {"layer", 2, 0}, {"name", 2, 11},  // <layer name="...">
///         {nullptr, 0, 0}};
struct KESTREL_API KSScope {
    const char* name;              ///< as it stands in the document; null ends the array
    std::uint32_t elementToken;    ///< the element's token; for an attribute, its owner's
    std::uint32_t attributeToken;  ///< 0 in an element entry, the attribute's token (not 0) otherwise

    /// The first element entry with this token, or null. A null scope holds no entries.
    static const KSScope* findElement(const KSScope* scope, std::uint32_t element) noexcept;
    /// The first entry of attribute (not 0) on the element with this token, or null.
    static const KSScope* findAttribute(const KSScope* scope, std::uint32_t element,
                                        std::uint32_t attribute) noexcept;
};
