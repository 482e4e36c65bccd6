#include <kestrel/serialization/KSUUID.h>
#include <kestrel/serialization/detail/HexWords.h>

std::optional<KSUUID> KSUUID::parse(const char*& text) noexcept {
    KSUUID uuid;
    if (!text || !kestrel::detail::parseHexWords(text, uuid.words)) return std::nullopt;
    return uuid;
}
