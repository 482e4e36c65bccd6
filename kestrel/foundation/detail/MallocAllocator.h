// kestrel/foundation/detail/MallocAllocator.h - memory for the books of the checking allocator.
#pragma once

#include <cstddef>
#include <cstdlib>

namespace kestrel::detail {

/// Prints that an allocation of size bytes has failed, and aborts.
[[noreturn]] void stopForMemory(unsigned long size);

/// Lets standard containers live on malloc itself, so that an application may route operator new through
/// the checking allocator. Aborts when memory runs out.
template <class T>
struct MallocAllocator {
    using value_type = T;
    MallocAllocator() = default;
    template <class Other>
    MallocAllocator(const MallocAllocator<Other>&) {}

    T* allocate(std::size_t count) {
        const std::size_t bytes =
            count * sizeof(T);  // NOLINT(bugprone-sizeof-expression): T may be a pointer
        void* memory = std::malloc(bytes);
        if (!memory) stopForMemory(bytes);
        return static_cast<T*>(memory);
    }
    void deallocate(T* memory, std::size_t) { std::free(memory); }
    bool operator==(const MallocAllocator&) const = default;
};

}  // namespace kestrel::detail
