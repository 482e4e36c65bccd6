// kestrel/serialization/KSFileWriteStream.h - writes a file through a buffer.
#pragma once

#include <kestrel/files/KSURL.h>
#include <kestrel/foundation/KSString.h>
#include <kestrel/platform/CFStream.h>
#include <kestrel/platform/Export.h>
#include <kestrel/serialization/KSStream.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

/// A buffered stream into a file: small writes cost a copy. Opening creates the file or empties it.
///
/// There is no flush and no close: bytes reach the file when the buffer of 51200 bytes overflows and when the
/// stream is destroyed. A failure at the end cannot be reported by the destructor: who must know checks the
/// file.
///
/// Ownership  owns its platform stream and buffer; keeps a copy of the URL.
/// Threads    one thread at a time.
/// Errors     KSException_WriteError from the constructor when the file cannot be opened, and from write when
///            there is no file stream or it takes fewer bytes than it is given; pending bytes are then gone.
/// Example
///     KSFileWriteStream file(url);
///     file << "frame " << name << "\n";
class KESTREL_API KSFileWriteStream : public KSStream {
public:
    static constexpr std::size_t bufferSize = 51200;  ///< bytes

    explicit KSFileWriteStream(const KSURL& url);
    KSFileWriteStream(const KSFileWriteStream&) = delete;
    KSFileWriteStream& operator=(const KSFileWriteStream&) = delete;
    ~KSFileWriteStream() override;

    /// Reads nothing; 0.
    unsigned long long read(void* bytes, unsigned long long length) override;
    /// Writes length bytes (its low 32 bits) and returns their number. What would fill the buffer to its last
    /// byte goes to the file at once, deliberately.
    unsigned long long write(const void* bytes, unsigned long long length) override {
        const auto size = static_cast<std::uint32_t>(length);
        if (!fits(size)) return writeThrough(bytes, size);
        return buffer(bytes, size);
    }
    /// Always empty.
    KSString getError() const override;
    const KSURL& getURL() const { return m_url; }

private:
    bool fits(std::size_t size) const { return m_buffer && m_pending + size < bufferSize; }
    std::uint32_t buffer(const void* bytes, std::uint32_t size) {
        if (size) std::memcpy(m_buffer + m_pending, bytes, size);
        m_pending += size;
        return size;
    }
    unsigned long long writeThrough(const void* bytes, std::uint32_t size);
    void writeToFile(const void* bytes, std::size_t size);

    KSURL m_url;
    CFWriteStreamRef m_stream;
    char* m_buffer = nullptr;   // only with an open stream
    std::size_t m_pending = 0;  // bytes in the buffer
};
