// kestrel/serialization/KSFileReadStream.h - reads the bytes of a file.
#pragma once

#include <kestrel/files/KSURL.h>
#include <kestrel/foundation/KSString.h>
#include <kestrel/platform/CFStream.h>
#include <kestrel/platform/Export.h>
#include <kestrel/serialization/KSStream.h>

/// An unbuffered stream over a file.
///
/// Ownership  owns its platform stream; keeps a copy of the URL.
/// Threads    one thread at a time.
/// Errors     nothing throws, and there is no error text: the count tells.
/// Example
///     KSFileReadStream file(url);
///     const unsigned long long count = file.read(buffer, sizeof buffer);
///     if (count == KSFileReadStream::failed) report(url);
class KESTREL_API KSFileReadStream : public KSStream {
public:
    /// What read answers on an error: the platform's -1, widened.
    static constexpr unsigned long long failed = ~0ULL;

    explicit KSFileReadStream(const KSURL& url);
    KSFileReadStream(const KSFileReadStream&) = delete;
    KSFileReadStream& operator=(const KSFileReadStream&) = delete;
    ~KSFileReadStream() override;

    /// Reads at most length bytes (its low 32 bits): the count, 0 at the end of the file, `failed` on an
    /// error and for a file that could not be opened, 0 for a URL that names no file.
    unsigned long long read(void* bytes, unsigned long long length) override;
    /// Writes nothing; 0.
    unsigned long long write(const void* bytes, unsigned long long length) override;
    /// Always empty.
    KSString getError() const override;
    const KSURL& getURL() const { return m_url; }

private:
    KSURL m_url;
    CFReadStreamRef m_stream;
};
