// kestrel/platform/detail/UserLocale.h - in which languages to look for a text.
#pragma once

#include <cstring>
#include <string>
#include <vector>

namespace kestrel::detail {

/// True for the names of the locale without a language.
inline bool isCLocale(const char* name) {
    if (name[0] == 'C') return name[1] == '\0' || name[1] == '.';
    return name[0] == '\0' || (name[0] == 'P' && std::strcmp(name, "POSIX") == 0);
}

/// The name of the user's locale: the process's LC_MESSAGES; while that is the C locale, what the
/// environment names (LC_ALL, LC_MESSAGES, LANG, the first that is set and not empty); else "C".
std::string userLocale();

/// The names to try for a locale, the closest first: fr_CA.UTF-8 gives fr_CA, fr, Base. The C locale, and a
/// name that could be no folder's, give Base alone.
std::vector<std::string> localeFallbacks(const std::string& locale);

}  // namespace kestrel::detail
