// kestrel/files/KSAsciiStream.h - binary data as printable text, and back.
#pragma once

#include <kestrel/foundation/KSString.h>
#include <kestrel/platform/Export.h>

#include <cstddef>
#include <cstdint>
#include <string>

/// Turns bytes into a text of '*', '-', digits and letters that can stand anywhere in a document, and back.
/// It works in memory: writing appends to a text of its own, reading takes the text that open() was given.
///
/// Text       twelve characters of header (the payload's length as 8 bytes, big-endian, and the magic
///            byte '*'), then four characters for every three bytes, the last three filled up with zeros.
///            The text is at every moment a whole encoding of the full groups of three written so far; the
///            one or two bytes after them join it at close(). Without a full group it is empty.
/// Modes      a stream writes until open() makes it read, and again after clear(). The operation of the
///            other direction moves nothing and answers 0.
/// Ownership  copies the text it is given.
/// Threads    one thread at a time.
/// Errors     open() answers false and getError() says why. Reading never fails: it ends at the length of
///            the header or after the last whole group of the text, and characters outside the alphabet
///            count as zeros.
/// Example
///     KSAsciiStream out;
///     out.write(thumbnail.data(), thumbnail.size());
///     out.close();  // out.getString() is the text
class KESTREL_API KSAsciiStream {
public:
    /// Appends length bytes and returns length. After a close() that had bytes to fill up, more bytes no
    /// longer read back at their places: close when all is written.
    unsigned long long write(const void* data, unsigned long long length);
    /// Writing: ends the text with the bytes that fill no group. Otherwise nothing.
    void close();
    /// The text as it stands.
    KSString getString() const;

    /// Starts reading a text up to its NUL; null counts as empty. False, with nothing to read, for a text
    /// shorter than its header ("Not enough data") or without the magic byte ("Magic Number does not
    /// match").
    bool open(const char* text);
    bool open(const char* text, unsigned long long length);
    /// Delivers up to length bytes and returns how many.
    unsigned long long read(void* buffer, unsigned long long length);

    /// The last error; it stays until another one.
    const KSString& getError() const noexcept { return m_error; }
    /// Empties the text and makes the stream write again. The last error stays.
    void clear();
    /// True for the 64 characters that carry values.
    static bool validChar(unsigned char c) noexcept;

private:
    void reset(bool reading);
    char* grow(std::size_t groups);  // the place of their characters

    mutable std::string m_text;  // its header is written when someone looks
    std::size_t m_size = 0;      // of the text; what follows in m_text is room from before
    std::uint8_t m_group[3] = {};
    unsigned int m_held = 0;     // bytes in m_group: waiting for a third one, or still to hand out at its end
    std::uint64_t m_length = 0;  // bytes written, or that can be read
    std::uint64_t m_delivered = 0;
    std::size_t m_next = 0;  // the next character to decode
    bool m_reading = false;
    KSString m_error;
};
