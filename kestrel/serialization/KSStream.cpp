#include <kestrel/serialization/KSStream.h>

#include <kestrel/foundation/KSString.h>

#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

constexpr char forty_spaces[] = "                                        ";
static_assert(sizeof forty_spaces == 41);

}  // namespace

KSStream::~KSStream() = default;

KSStream& KSStream::operator<<(const char* text) {
    if (text && *text) write(text, std::strlen(text));
    return *this;
}

KSStream& KSStream::operator<<(const KSString& text) {
    const std::unique_ptr<char, decltype(&std::free)> utf8(text.createUTF8Str(), &std::free);
    return *this << utf8.get();
}

KSStream& KSStream::indent(unsigned int level) {
    for (; level > 20; level -= 20) write(forty_spaces, 40);
    write(forty_spaces, 2 * level);
    return *this;
}
