// kestrel/foundation/KSAlloc.h - an allocator that can be switched to check every block.
//
// While tracking is off, everything here is plain malloc, realloc and free. Between ksAllocStart() and
// ksAllocEnd() each block stands between guard words, new and freed memory is filled with patterns, each
// block knows who allocated it, allocations can be refused on purpose, and the end prints what leaked.
//
// Units      sizes are bytes. Blocks are aligned for every type that is not over-aligned (16 bytes).
// Ownership  what these functions hand out is freed by these functions. A tracked block that outlives
//            ksAllocEnd() can still be freed and reallocated here, also after another ksAllocStart(); only
//            plain free() must never see it. While tracking is on, a pointer that is not tracked is
//            deliberately ignored by ksFree (so it leaks) and goes to plain realloc in ksRealloc.
// Threads    any, at any time. A forked child goes on with a copy of the books.
// Errors     a refused allocation is null, silently. When memory really runs out under tracking the
//            process prints a line and aborts; with tracking off it is null as from malloc.
// Source     the failure injection draws from the quick-and-dirty linear congruential generator of Press
//            et al., "Numerical Recipes in C", section 7.1; it starts at 0 with each ksAllocStart().
// Example
//     ksAllocStart();
//     Layer* layers = ksNew Layer[3];
//     ksArrDelete(layers);
//     ksAllocEnd(1);  // prints what has not been freed
//
// ksAllocStart() reads these environment variables:
//     ksAllocatedBlocksLimit  N allows N - 1 live blocks; 0 or unset: no limit
//     ksAllocatedBytesLimit   an allocation that would bring the live bytes to N or above is refused
//     ksFailurePercentage     the percentage of allocations that succeed (10 refuses nine in ten); 0 or
//                             unset: none is refused
//     ksValidPtrCheck         present: ksAllocValidPtrCheck looks pointers up
//     ksFillPtrOnAlloc        present: fill memory with patterns, which is on anyway
//     ksPointerBreak          a number for a debugger to compare pointers with; the library ignores it
//     ksSizePrint             announces allocations of exactly this size
// and ksAllocEnd() reads
//     ksAlloc                 replaces its level; empty: everything
#pragma once

#include <kestrel/platform/Export.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <type_traits>

/// Starts tracking with fresh counters. Blocks of a run that has not been ended leave the books.
KESTREL_API void ksAllocStart();

/// Prints the report and ends tracking; does nothing while tracking is off.
/// @param level  negative: prints nothing. 0: the totals. 1: also the live blocks with a known file, in
///               ascending address order. 2: also those without. 3: also the first 65 bytes of each and
///               how often each size has been allocated. Sizes beyond 32 bits print as the largest number.
KESTREL_API void ksAllocEnd(int level);

/// What the macros below call. A null file is an unknown one. An array is remembered by its line, which is
/// stored negated; line 0 and an unknown file remember nothing.
KESTREL_API void* _ksAlloc(const char* file, int line, unsigned long size, bool isArray);
/// Allocates count * size bytes, zero-filled.
KESTREL_API void* _ksCalloc(const char* file, int line, int count, int size);
/// Changes the size of a block; null for a null ptr, which allocates nothing. File and line replace the
/// block's own, so that an array becomes a plain block.
KESTREL_API void* _ksRealloc(void* ptr, unsigned long size, const char* file, int line);
/// Frees a block, after a message if its guards are damaged or if an array is freed as a plain block. The
/// reverse, a plain block freed as an array, is not reported.
KESTREL_API void _ksFree(void* ptr, bool isArray);

/// False, after a message, when the guard words around a tracked block are damaged; true for every pointer
/// that is not tracked and while tracking is off.
KESTREL_API bool ksAllocCheckFence(void* ptr);
/// Prints a message for each tracked block whose guard words are damaged, in ascending address order.
KESTREL_API void ksAllocCheckAllFences();
/// Whether ptr is a live tracked block; true for null, while tracking is off, and unless ksValidPtrCheck
/// is set.
KESTREL_API bool ksAllocValidPtrCheck(void* ptr);

/// Takes in the allocations of the Objective-C runtime, as blocks without a file.
KESTREL_API void* objc_malloc(unsigned long size);

/// Allocates size bytes, not cleared; null when refused.
#define ksAlloc(size) ::kestrel::detail::allocate(__FILE__, __LINE__, (size), false)
/// The same for an array, which ksArrFree() frees.
#define ksArrAlloc(size) ::kestrel::detail::allocate(__FILE__, __LINE__, (size), true)
/// Allocates count * size bytes, zero-filled.
#define ksCalloc(count, size) ::kestrel::detail::allocateZeroed(__FILE__, __LINE__, (count), (size))
/// Changes the size of a block, which may move; null for a null ptr, which allocates nothing.
#define ksRealloc(ptr, size) ::kestrel::detail::reallocate((ptr), (size), __FILE__, __LINE__)
/// Frees a block; nothing for null.
#define ksFree(ptr) ::kestrel::detail::release((ptr), false)
/// Frees an array; nothing for null.
#define ksArrFree(ptr) ::kestrel::detail::release((ptr), true)

/// ksNew Layer(1, 2) and ksNew Layer[3] construct; a refused allocation constructs nothing and is null.
/// ksDelete(layer) and ksArrDelete(layers) destroy. Each belongs to its own kind of ksNew.
#define ksNew ::new (::kestrel::detail::AllocSite{__FILE__, __LINE__})
/// Destroys and frees an object of ksNew; nothing for null.
#define ksDelete(ptr) ::kestrel::detail::deleteObject(ptr)
/// Destroys and frees an array of ksNew; nothing for null.
#define ksArrDelete(ptr) ::kestrel::detail::deleteArray(ptr)

/// @cond
namespace kestrel::detail {

/// False only when malloc and free will do: tracking is off and no block of an earlier run is alive.
extern KESTREL_API std::atomic<bool> allocIsActive;

struct AllocSite {
    const char* file;
    int line;
};

inline void* allocate(const char* file, int line, unsigned long size, bool isArray) {
    if (allocIsActive.load(std::memory_order_relaxed)) [[unlikely]]
        return _ksAlloc(file, line, size, isArray);
    return std::malloc(size);
}

inline void* reallocate(void* ptr, unsigned long size, const char* file, int line) {
    if (!ptr || allocIsActive.load(std::memory_order_relaxed)) [[unlikely]]
        return _ksRealloc(ptr, size, file, line);
    return std::realloc(ptr, size);
}

inline void release(void* ptr, bool isArray) {
    if (allocIsActive.load(std::memory_order_relaxed)) [[unlikely]]
        return _ksFree(ptr, isArray);
    std::free(ptr);
}

/// A product that does not fit is a failed allocation, never a small block.
KESTREL_API void* allocateZeroed(const char* file, int line, unsigned long count, unsigned long size);

template <class T>
void deleteObject(T* object) {
    if (!object) return;
    const volatile void* block = object;
    // A base class may stand inside the block.
    if constexpr (std::is_polymorphic_v<T>) block = dynamic_cast<const volatile void*>(object);
    object->~T();
    _ksFree(const_cast<void*>(block), false);
}

/// Laid out as T. The compiler knows where it keeps the length of an array; a delete expression for this
/// type destroys the elements and hands the start of the block to the allocator.
template <class T>
struct ArrayElement {
    T value;
    static void operator delete[](void* block) { _ksFree(block, true); }
};

template <class T>
void deleteArray(T* first) {
    using Element = ArrayElement<std::remove_cv_t<T>>;
    static_assert(sizeof(Element) == sizeof(T));
    delete[] reinterpret_cast<Element*>(const_cast<std::remove_cv_t<T>*>(first));
}

}  // namespace kestrel::detail

inline void* operator new(std::size_t size, kestrel::detail::AllocSite site) noexcept {
    return kestrel::detail::allocate(site.file, site.line, size, false);
}
inline void* operator new[](std::size_t size, kestrel::detail::AllocSite site) noexcept {
    return kestrel::detail::allocate(site.file, site.line, size, true);
}
// For constructors that throw.
inline void operator delete(void* block, kestrel::detail::AllocSite) noexcept { _ksFree(block, false); }
inline void operator delete[](void* block, kestrel::detail::AllocSite) noexcept { _ksFree(block, true); }
// Over-aligned types need an allocator of their own.
void* operator new(std::size_t, std::align_val_t, kestrel::detail::AllocSite) = delete;
void* operator new[](std::size_t, std::align_val_t, kestrel::detail::AllocSite) = delete;
/// @endcond
