#include <kestrel/platform/CFData.h>

#include <kestrel/platform/detail/DataObject.h>
#include <kestrel/platform/detail/FileDescriptor.h>

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <new>
#include <utility>

namespace {

__CFData::Block allocate(std::size_t size) {
    return __CFData::Block(static_cast<UInt8*>(std::malloc(size ? size : 1)));
}

}  // namespace

CFDataRef CFDataCreate(CFAllocatorRef, const UInt8* bytes, CFIndex length) {
    if (length < 0 || (!bytes && length > 0)) return nullptr;
    const auto size = static_cast<std::size_t>(length);
    __CFData::Block block = allocate(size);
    if (!block) return nullptr;
    if (size) std::memcpy(block.get(), bytes, size);
    return new (std::nothrow) __CFData(std::move(block), size);
}

CFDataRef CFDataCreateWithBytesNoCopy(CFAllocatorRef, UInt8* block, CFIndex length, CFAllocatorRef) {
    if (!block || length < 0) return nullptr;
    __CFData::Block owned(block);
    auto* data = new (std::nothrow) __CFData(std::move(owned), static_cast<std::size_t>(length));
    if (!data) static_cast<void>(owned.release());
    return data;
}

CFIndex CFDataGetLength(CFDataRef data) { return data ? static_cast<CFIndex>(data->length) : 0; }

const UInt8* CFDataGetBytePtr(CFDataRef data) { return data ? data->bytes.get() : nullptr; }

CFDataRef kestrel::detail::readWholeFile(int descriptor) {
    // The size that the system tells is only a hint: a file may grow or shrink meanwhile, and a pipe has
    // none.
    struct stat status {};
    std::size_t capacity = 65536;
    if (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0)
        capacity =
            static_cast<std::size_t>(status.st_size) + 1;  // one more, so that the end shows without growing

    __CFData::Block block = allocate(capacity);
    std::size_t size = 0;
    for (;;) {
        if (!block) {
            errno = ENOMEM;
            return nullptr;
        }
        if (size == capacity) {
            void* larger = std::realloc(block.get(), 2 * capacity);
            if (larger) static_cast<void>(block.release());  // realloc has taken it
            capacity *= 2;
            block.reset(larger ? static_cast<UInt8*>(larger) : nullptr);
            continue;
        }
        const long count = readRetrying(descriptor, block.get() + size, capacity - size);
        if (count < 0) return nullptr;
        if (count == 0) break;
        size += static_cast<std::size_t>(count);
    }
    return new (std::nothrow) __CFData(std::move(block), size);
}
