// kestrel/platform/detail/FileDescriptor.h - opening and moving bytes, whatever signals arrive.
#pragma once

#include <cstddef>
#include <cstdio>

namespace kestrel::detail {

/// Opens path for writing, truncated, close-on-exec, never through a symbolic link as the last component.
/// Null on failure with errno set.
std::FILE* openFreshFile(const char* path);

/// Opens path, close-on-exec; -1 with errno on failure. Writing creates the file or truncates it.
int openForReading(const char* path);
int openForWriting(const char* path);

/// Reads up to size bytes, retried on EINTR. The count, 0 at the end, -1 with errno on error.
long readRetrying(int descriptor, void* bytes, std::size_t size);

/// Writes all of size bytes, continuing short writes and retrying on EINTR. The count that was accepted,
/// less than size only after an error, which errno holds; -1 when not even the first byte went out.
long writeAll(int descriptor, const void* bytes, std::size_t size);

}  // namespace kestrel::detail
