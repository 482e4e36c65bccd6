#include <kestrel/foundation/KSPrint.h>
#include <kestrel/foundation/KSString.h>
#include <kestrel/serialization/KSHashWriteStream.h>
#include <kestrel/serialization/KSUUID.h>
#include <kestrel/serialization/detail/StringUnits.h>

#include <bit>
#include <cstring>

static_assert(std::endian::native == std::endian::little,
              "the fingerprint is defined by little-endian order");

template <class Value>
inline void KSHashWriteStream::put(const Value& value) {
    if (sizeof value > m_remaining) return feed(&value, sizeof value);
    std::memcpy(m_writePosition, &value, sizeof value);
    m_writePosition += sizeof value;
    m_remaining -= static_cast<unsigned int>(sizeof value);
}

KSHashWriteStream::KSHashWriteStream() = default;
KSHashWriteStream::~KSHashWriteStream() = default;

void KSHashWriteStream::startElement(unsigned int) {}
void KSHashWriteStream::endElement() {}
void KSHashWriteStream::close() { flush(); }
void KSHashWriteStream::reset() { setHash(KSHash128()); }

void KSHashWriteStream::writeValue(int value) { put(value); }
void KSHashWriteStream::writeValue(unsigned int value) { put(value); }
void KSHashWriteStream::writeValue(long long value) { put(value); }
void KSHashWriteStream::writeValue(unsigned long long value) { put(value); }
void KSHashWriteStream::writeValue(float value) { put(value); }
void KSHashWriteStream::writeValue(double value) { put(value); }
void KSHashWriteStream::writeValue(const KSUUID& value) { put(value.words); }
void KSHashWriteStream::writeValue(const KSString& value) {
    const kestrel::detail::StringUnits units(value);
    if (!units.data()) return;
    feed(units.data(), units.size() * sizeof *units.data());
    put(static_cast<unsigned short>(0));
}

void KSHashWriteStream::writeArray(unsigned int*, unsigned int) {}
void KSHashWriteStream::writeArray(float*, unsigned int) {}
void KSHashWriteStream::writeArray(double*, unsigned int) {}

void KSHashWriteStream::writeAttribute(unsigned int, unsigned int value) { writeValue(value); }
void KSHashWriteStream::writeAttribute(unsigned int, int value) { writeValue(value); }
void KSHashWriteStream::writeAttribute(unsigned int, unsigned long long value) { writeValue(value); }
void KSHashWriteStream::writeAttribute(unsigned int, long long value) { writeValue(value); }
void KSHashWriteStream::writeAttribute(unsigned int, float value) { writeValue(value); }
void KSHashWriteStream::writeAttribute(unsigned int, double value) { writeValue(value); }
void KSHashWriteStream::writeAttribute(unsigned int, const KSUUID& value) { writeValue(value); }
void KSHashWriteStream::writeAttribute(unsigned int, const KSString&) {}

void KSHashWriteStream::writeBlankLine() {}

const KSHash128& KSHashWriteStream::getHash() {
    flush();
    return m_hash;
}

void KSHashWriteStream::setHash(const KSHash128& hash) noexcept {
    m_hash = hash;
    empty();
}

void KSHashWriteStream::print() const {
    if (m_remaining == m_capacity) {
        KSPrint("      reset");
    } else {
        KSPrint("      ");
        for (const unsigned char* at = m_buffer; at < m_writePosition; ++at) KSPrint("%02x", *at);
    }
    KSPrint("\n");
}

// A buffer that is exactly full waits for the next byte, so that it can still be the last piece.
void KSHashWriteStream::feed(const void* data, std::size_t size) {
    auto* at = static_cast<const unsigned char*>(data);
    while (size > m_remaining) {
        std::memcpy(m_writePosition, at, m_remaining);
        at += m_remaining;
        size -= m_remaining;
        m_remaining = 0;
        flush();
    }
    std::memcpy(m_writePosition, at, size);
    m_writePosition += size;
    m_remaining -= static_cast<unsigned int>(size);
}

void KSHashWriteStream::flush() {
    if (m_remaining == m_capacity) return;
    m_hash.addData(m_buffer, m_capacity - m_remaining);
    empty();
}

void KSHashWriteStream::empty() noexcept {
    m_remaining = m_capacity;
    m_writePosition = m_buffer;
}
