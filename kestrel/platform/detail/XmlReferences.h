// kestrel/platform/detail/XmlReferences.h - what references stand for.
#pragma once

#include <string>
#include <string_view>

namespace kestrel::detail {

/// Replaces the predefined references and those to characters by what they stand for, all others stay.
/// Both texts are UTF-8. CFXMLCreateStringByUnescapingEntities is the same for text objects.
std::string unescapeXml(std::string_view text);

/// The character that a name such as "#65" or "#x41" stands for; 0 for any other name, and for a number
/// that is no character of XML.
char32_t xmlReferencedCharacter(std::string_view name);

}  // namespace kestrel::detail
