#include <kestrel/platform/detail/UserLocale.h>

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <string_view>

namespace kestrel::detail {

namespace {

bool isNamePart(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
}

}  // namespace

std::string userLocale() {
    const char* process = std::setlocale(LC_MESSAGES, nullptr);
    if (process && !isCLocale(process)) return process;
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"})
        if (const char* value = std::getenv(variable); value && *value) return value;
    return "C";
}

std::vector<std::string> localeFallbacks(const std::string& locale) {
    std::vector<std::string> names;
    std::string_view name = std::string_view(locale).substr(0, locale.find_first_of(".@"));
    if (!isCLocale(locale.c_str()) && std::ranges::all_of(name, isNamePart)) {
        while (!name.empty()) {
            names.emplace_back(name);
            const std::size_t part = name.find_last_of("_-");
            name = name.substr(0, part == std::string_view::npos ? 0 : part);
        }
    }
    names.emplace_back("Base");
    return names;
}

}  // namespace kestrel::detail
