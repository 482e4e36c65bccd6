#include <kestrel/files/KSAsciiStream.h>

#include <kestrel/files/detail/Armour.h>

#include <algorithm>
#include <cstring>

using namespace kestrel::detail;

namespace {

constexpr std::size_t headerGroups = 3;
constexpr std::size_t headerCharacters = headerGroups * 4;
constexpr std::uint8_t magic = '*';

}  // namespace

unsigned long long KSAsciiStream::write(const void* data, unsigned long long length) {
    if (m_reading || !data || length == 0) return 0;
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    const auto total = static_cast<std::size_t>(length);
    // The held bytes and what completes their group, then whole groups, then what is left over.
    const std::size_t first = m_held ? std::min<std::size_t>(3 - m_held, total) : 0;
    const std::size_t groups = (total - first) / 3;
    const bool completes = m_held + first == 3;
    const std::size_t flushed = groups + (completes ? 1 : 0);
    char* text = flushed ? grow(flushed) : nullptr;
    m_length += total;

    std::memcpy(m_group + m_held, bytes, first);
    m_held += static_cast<unsigned int>(first);
    if (flushed) {
        if (completes) {
            encodeArmourReference(m_group, 1, text);
            m_held = 0;
            text += 4;
        }
        encodeArmour(bytes + first, groups, text);
    }
    for (std::size_t i = first + groups * 3; i < total; ++i) m_group[m_held++] = bytes[i];
    return length;
}

void KSAsciiStream::close() {
    if (m_reading || m_held == 0) return;
    std::fill(m_group + m_held, m_group + 3, std::uint8_t{0});
    m_held = 0;
    encodeArmourReference(m_group, 1, grow(1));
}

char* KSAsciiStream::grow(std::size_t groups) {
    const std::size_t at = std::max(m_size, headerCharacters);
    m_size = at + groups * 4;
    if (m_text.size() < m_size) m_text.resize(m_size);
    return m_text.data() + at;
}

KSString KSAsciiStream::getString() const {
    if (!m_reading && m_size) {
        std::uint8_t header[headerGroups * 3];
        const std::uint64_t flushed = m_length - m_held;
        for (int i = 0; i < 8; ++i) header[i] = static_cast<std::uint8_t>(flushed >> (56 - 8 * i));
        header[8] = magic;
        encodeArmourReference(header, headerGroups, m_text.data());
    }
    // Mac OS Roman has a character for every byte, so that a foreign text that was opened shows too.
    const CFStringRef text =
        CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(m_text.data()),
                                static_cast<CFIndex>(m_size), kCFStringEncodingMacRoman, false);
    const KSString string(text);
    CFRelease(text);
    return string;
}

bool KSAsciiStream::open(const char* text) { return open(text, text ? std::strlen(text) : 0); }

bool KSAsciiStream::open(const char* text, unsigned long long length) {
    reset(true);
    if (text) {
        m_text.assign(text, static_cast<std::size_t>(length));
        m_size = m_text.size();
    }
    if (m_size < headerCharacters) {
        m_error.set("Not enough data");
        return false;
    }
    std::uint8_t header[headerGroups * 3];
    decodeArmourReference(m_text.data(), headerGroups, header);
    if (header[8] != magic) {
        m_error.set("Magic Number does not match");
        return false;
    }
    std::uint64_t told = 0;
    for (int i = 0; i < 8; ++i) told = told << 8 | header[i];
    m_length = std::min<std::uint64_t>(told, (m_size - headerCharacters) / 4 * 3);
    m_next = headerCharacters;
    return true;
}

unsigned long long KSAsciiStream::read(void* buffer, unsigned long long length) {
    if (!m_reading || !buffer) return 0;
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(length, m_length - m_delivered));
    m_delivered += wanted;

    auto* out = static_cast<std::uint8_t*>(buffer);
    const std::size_t first = std::min<std::size_t>(m_held, wanted);
    std::memcpy(out, m_group + 3 - m_held, first);
    m_held -= static_cast<unsigned int>(first);

    const std::size_t groups = (wanted - first) / 3;
    decodeArmour(m_text.data() + m_next, groups, out + first);
    m_next += groups * 4;

    if (const std::size_t rest = wanted - first - groups * 3) {
        decodeArmourReference(m_text.data() + m_next, 1, m_group);
        m_next += 4;
        std::memcpy(out + first + groups * 3, m_group, rest);
        m_held = static_cast<unsigned int>(3 - rest);
    }
    return wanted;
}

void KSAsciiStream::clear() { reset(false); }

void KSAsciiStream::reset(bool reading) {
    m_size = 0;
    m_held = 0;
    m_length = 0;
    m_delivered = 0;
    m_next = 0;
    m_reading = reading;
}

bool KSAsciiStream::validChar(unsigned char c) noexcept {
    return decodeVals.values[c] != 0 || c == static_cast<unsigned char>(encodeVals[0]);
}
