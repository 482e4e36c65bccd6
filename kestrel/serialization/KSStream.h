// kestrel/serialization/KSStream.h - the byte stream that every writer sits on.
#pragma once

#include <kestrel/platform/Export.h>

class KSString;

/// An abstract byte stream. What a count of bytes means when something fails is each stream's own.
///
/// Threads    one thread at a time, unless a stream says otherwise.
/// Errors     the text operations ignore the results of write; a stream whose writing fails reports it
///            itself.
/// Example
///     KSFileWriteStream file(url);
///     file << "shots: " << name << "\n";
///     file.indent(2);
class KESTREL_API KSStream {
public:
    KSStream() = default;
    KSStream(const KSStream&) = default;
    KSStream& operator=(const KSStream&) = default;
    virtual ~KSStream();

    /// Reads up to length bytes; returns the count read.
    virtual unsigned long long read(void* bytes, unsigned long long length) = 0;
    /// Writes length bytes; returns the count written.
    virtual unsigned long long write(const void* bytes, unsigned long long length) = 0;
    /// The stream's error as a text; empty when there is none.
    virtual KSString getError() const = 0;

    /// Writes a text without its NUL; null and the empty text write nothing.
    KSStream& operator<<(const char* text);
    /// Writes a text as UTF-8 up to its first NUL; null and the empty text write nothing.
    KSStream& operator<<(const KSString& text);
    /// Writes two blanks a level, at most forty bytes in one write; level 0 is one write of nothing.
    KSStream& indent(unsigned int level);
};
