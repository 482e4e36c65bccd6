# Writes a C++ source that holds the files TABLES of FOLDER as kestrel/platform/detail/EmbeddedTables.h says.
set(arrays "")
set(rows "")
set(index 0)
foreach(table ${TABLES})
  file(READ "${FOLDER}/${table}" bytes HEX)
  string(REGEX REPLACE "(..)" "0x\\1, " bytes "${bytes}")
  string(APPEND arrays "constexpr unsigned char table${index}[] = {${bytes}0};\n")
  string(APPEND rows "    {\"${table}\", {reinterpret_cast<const char*>(table${index}), sizeof table${index} - 1}},\n")
  math(EXPR index "${index} + 1")
endforeach()
file(WRITE "${OUTPUT}" "// Generated from kestrel/resources.
#include <kestrel/platform/detail/EmbeddedTables.h>

namespace kestrel::detail {

${arrays}
std::span<const EmbeddedTable> embeddedTables() {
    static const EmbeddedTable tables[] = {
${rows}    };
    return tables;
}

}  // namespace kestrel::detail
")
