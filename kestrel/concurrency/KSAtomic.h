// kestrel/concurrency/KSAtomic.h - operations on words that several threads share.
#pragma once

#include <kestrel/platform/Export.h>

#include <atomic>

/// Atomic and, deliberately, some not atomic operations on 32-bit words and on intrusive lists.
///
/// increment, decrement, add, addThenTest and compareAndSwap are atomic and sequentially consistent. The
/// others give less than their names promise, and stay so for the callers that count on it: read them one
/// by one.
///
/// Threads    as each says. Words are plain variables, naturally aligned; sharing one between these calls
///            and plain reads or writes in another thread is the caller's data race.
/// Errors     none; sums wrap.
/// Example
///     static int live = 0;
///     KSAtomic::increment(&live);
///     if (KSAtomic::addThenTest(&live, -1) == 0) lastOneLeaves();
class KESTREL_API KSAtomic {
public:
    static void increment(int* p) { add(p, 1); }
    static void decrement(int* p) { add(p, -1); }
    static void add(int* p, int n) { std::atomic_ref(*p).fetch_add(n); }
    /// Adds n and returns the new value.
    static int addThenTest(int* p, int n) {
        return static_cast<int>(static_cast<unsigned>(std::atomic_ref(*p).fetch_add(n)) +
                                static_cast<unsigned>(n));
    }
    /// Adds n and returns the old value; not atomic: additions of several threads at once may get lost.
    static int testThenAdd(int* p, int n) {
        const std::atomic_ref word(*p);
        const int old = word.load(std::memory_order_relaxed);
        word.store(static_cast<int>(static_cast<unsigned>(old) + static_cast<unsigned>(n)),
                   std::memory_order_relaxed);
        return old;
    }
    /// Stores v, without any ordering towards other memory. Returns 0.
    static int set(int* p, int v) {
        std::atomic_ref(*p).store(v, std::memory_order_relaxed);
        return 0;
    }
    /// Stores desired if *p holds expected. The result is not success: it is true when the value that was
    /// found in *p is not zero. So 0 swapped for 7 gives false, and 5 left alone because 4 was expected
    /// gives true.
    static bool compareAndSwap(int* p, int expected, int desired) {
        int found = expected;
        std::atomic_ref(*p).compare_exchange_strong(found, desired);
        return found != 0;
    }

    /// These two look at the address p itself, not at the word there, which they leave alone (p may be
    /// anything): true when bit number `bit` of the address, 1 to 31, is 1; false for bit 0 and above 31.
    /// For an atomic bit operation write a loop around compareAndSwap.
    static bool bitSet(unsigned int* p, unsigned int bit);
    static bool bitClear(unsigned int* p, unsigned int bit);

    /// Pushes node on a singly linked list. head is the address of the word that points at the first node,
    /// null for an empty list; a node's link, a whole pointer, lies linkOffset bytes into it.
    ///
    /// Right only without contention, when the push of another thread makes this one get lost. The first
    /// node of a list links to itself, so listRemove gives a lone node out twice before the list is empty.
    static void listAdd(void* head, void* node, int linkOffset);
    /// Pops the first node, sets its link to null and returns it; null for an empty list. Right only
    /// without contention: a node may be given out though another thread took it.
    static void* listRemove(void* head, int linkOffset);
};
