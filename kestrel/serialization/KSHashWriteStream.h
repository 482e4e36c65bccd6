// kestrel/serialization/KSHashWriteStream.h - the fingerprint of what an object writes.
#pragma once

#include <kestrel/platform/Export.h>
#include <kestrel/serialization/KSHash128.h>
#include <kestrel/serialization/KSSerializerWriteStream.h>

#include <cstddef>

/// A write stream that writes nothing anywhere: it digests the binary form of the values, so that two
/// objects, or two states of one, can be compared cheaply.
///
/// Structure is deliberately left out: element and attribute tokens, nesting, arrays and string
/// attributes do not contribute, only values and the attributes that are no strings. So no scope is
/// needed, and nothing throws. Numbers are fed as their bytes in little-endian order, identifiers as
/// words 0 to 3, text as UTF-16 units with a zero unit behind them (a null string feeds nothing).
///
/// Order      take the hash once, at the end: getHash and close cut the byte sequence where they stand,
///            which changes what a longer sequence would have given.
/// Threads    one thread at a time.
/// Example
///     KSHashWriteStream out;
///     layer.writeBody(out, false, false);
///     bool changed = !(out.getHash() == lastHash);
class KESTREL_API KSHashWriteStream final : public KSSerializerWriteStream {
public:
    KSHashWriteStream();
    ~KSHashWriteStream() override;

    void startElement(unsigned int token) override;
    void endElement() override;
    void close() override;  ///< digests what is buffered
    void reset() override;  ///< forgets what is buffered and what was digested

    void writeValue(int value) override;
    void writeValue(unsigned int value) override;
    void writeValue(long long value) override;
    void writeValue(unsigned long long value) override;
    void writeValue(float value) override;
    void writeValue(double value) override;
    void writeValue(const KSUUID& value) override;
    void writeValue(const KSString& value) override;

    void writeArray(unsigned int* values, unsigned int count) override;
    void writeArray(float* values, unsigned int count) override;
    void writeArray(double* values, unsigned int count) override;

    void writeAttribute(unsigned int token, unsigned int value) override;
    void writeAttribute(unsigned int token, int value) override;
    void writeAttribute(unsigned int token, unsigned long long value) override;
    void writeAttribute(unsigned int token, long long value) override;
    void writeAttribute(unsigned int token, float value) override;
    void writeAttribute(unsigned int token, double value) override;
    void writeAttribute(unsigned int token, const KSUUID& value) override;
    void writeAttribute(unsigned int token, const KSString& value) override;

    void writeBlankLine() override;

    /// Digests what is buffered and gives the result; all zero when nothing was ever written.
    const KSHash128& getHash();
    /// Goes on from hash. What is buffered is discarded on purpose.
    void setHash(const KSHash128& hash) noexcept;
    /// Prints the buffered bytes in hexadecimal through KSPrint, or "reset" when there are none.
    void print() const;

private:
    static constexpr unsigned int bufferSize = 4096;  // a multiple of 64: only the last piece is padded

    template <class Value>
    void put(const Value& value);
    void feed(const void* data, std::size_t size);
    void flush();
    void empty() noexcept;

    KSHash128 m_hash;
    unsigned int m_capacity = bufferSize;
    unsigned int m_remaining = bufferSize;
    unsigned char* m_writePosition = m_buffer;
    unsigned char m_buffer[bufferSize];
};
