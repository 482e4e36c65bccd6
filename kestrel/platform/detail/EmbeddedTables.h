// kestrel/platform/detail/EmbeddedTables.h - the library's own string tables, compiled in by the build.
#pragma once

#include <span>
#include <string_view>

namespace kestrel::detail {

/// One file of kestrel/resources.
struct EmbeddedTable {
    std::string_view path;  ///< "<locale>.lproj/<table>.strings"
    std::string_view bytes;
};
/// All of them. Defined in a source that kestrel/resources/CMakeLists.txt generates.
std::span<const EmbeddedTable> embeddedTables();

}  // namespace kestrel::detail
