// Text of an unknown encoding, string tables and UTF-8: bytes from anywhere become text or are refused.
#include <kestrel/foundation/KSString.h>
#include <kestrel/platform/detail/StringTable.h>
#include <kestrel/platform/detail/Utf8.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

void require(bool holds) {
    if (!holds) std::abort();
}

void sniff(const std::string& bytes) {
    CFStringRef string = CFStringCreateWithSniffingEncoding(bytes.c_str());
    require(string != nullptr);  // Mac OS Roman takes everything
    CFRelease(string);
}

/// Well-formed UTF-8 comes back as it was, and the vector kernels agree with their plain twins.
void thereAndBack(const std::string& bytes) {
    using namespace kestrel::detail;
    std::vector<UniChar> units(bytes.size() + 1), expected(bytes.size() + 1);
    const std::size_t count = utf16FromUtf8(bytes, units.data());
    require(count == utf16FromUtf8Reference(bytes, expected.data()));
    if (count == invalidText) return;
    units.resize(count);
    expected.resize(count);
    require(units == expected && utf8Of(units) == bytes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    sniff(bytes);
    thereAndBack(bytes);
    const kestrel::detail::StringTable table(bytes, "input");
    return 0;
}
