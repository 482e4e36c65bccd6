// Identifiers and digests from any text, digests of any bytes, and any number as text.
#include <kestrel/foundation/KSString.h>
#include <kestrel/foundation/detail/NumberFormat.h>
#include <kestrel/serialization/KSHash128.h>
#include <kestrel/serialization/KSUUID.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

void require(bool holds) {
    if (!holds) std::abort();
}

void identifiers(const std::string& bytes) {
    const char* at = bytes.c_str();
    const auto uuid = KSUUID::parse(at);
    require(at - bytes.c_str() == (uuid ? 32 : 0));
    const KSHash128 hash{KSString(bytes.c_str())};  // Mac OS Roman takes every byte
    if (uuid) {
        require(std::memcmp(hash.words, uuid->words, sizeof hash.words) == 0);
        require(KSHash128(hash.getString()) == hash);
    } else {
        require(hash == KSHash128());
    }
}

/// However the bytes are cut at multiples of 64, the digest is the same.
void digests(const std::uint8_t* data, std::size_t size) {
    const auto length = static_cast<unsigned>(size);
    const unsigned cut = size ? data[0] % (length / 64 + 1) * 64 : 0;
    KSHash128 parts(data, cut);
    if (cut < length) parts.addData(data + cut, length - cut);
    require(parts == KSHash128(data, length));
}

void numbers(const std::uint8_t* data, std::size_t size) {
    for (double value; size >= sizeof value; data += sizeof value, size -= sizeof value) {
        std::memcpy(&value, data, sizeof value);
        char want[64], got[kestrel::detail::numberRoom];
        const int length = std::snprintf(want, sizeof want, "%.10g", value);
        const char* end = kestrel::detail::formatDouble(got, value);
        require(end - got == length && std::memcmp(got, want, static_cast<std::size_t>(length)) == 0);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    identifiers(std::string(reinterpret_cast<const char*>(data), size));
    digests(data, size);
    numbers(data, size);
    return 0;
}
