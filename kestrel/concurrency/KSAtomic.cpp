#include <kestrel/concurrency/KSAtomic.h>

#include <cstdint>

namespace {

/// A pointer of any type, seen as a word.
using Word [[gnu::may_alias]] = std::uintptr_t;

Word load(Word* word) { return __atomic_load_n(word, __ATOMIC_ACQUIRE); }

/// Puts desired in place of expected; returns what was found.
Word exchange(Word* word, Word expected, Word desired) {
    Word found = expected;
    __atomic_compare_exchange_n(word, &found, desired, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
    return found;
}

Word* linkOf(Word node, int linkOffset) {
    return reinterpret_cast<Word*>(reinterpret_cast<char*>(node) + linkOffset);
}

bool isBitOfAddress(const unsigned int* p, unsigned int bit) {
    return bit != 0 && bit < 32 && (reinterpret_cast<std::uintptr_t>(p) >> bit & 1) != 0;
}

}  // namespace

bool KSAtomic::bitSet(unsigned int* p, unsigned int bit) { return isBitOfAddress(p, bit); }

bool KSAtomic::bitClear(unsigned int* p, unsigned int bit) { return isBitOfAddress(p, bit); }

void KSAtomic::listAdd(void* head, void* node, int linkOffset) {
    Word* const headWord = static_cast<Word*>(head);
    const Word nodeWord = reinterpret_cast<Word>(node);
    Word found;
    do {
        const Word first = load(headWord);
        __atomic_store_n(linkOf(nodeWord, linkOffset), first, __ATOMIC_RELAXED);
        found = exchange(headWord, first, nodeWord);
    } while (found == 0);  // an empty list goes round twice, hence the self-link
}

void* KSAtomic::listRemove(void* head, int linkOffset) {
    Word* const headWord = static_cast<Word*>(head);
    Word first, found;
    do {
        first = load(headWord);
        if (first == 0) return nullptr;
        const Word second = __atomic_load_n(linkOf(first, linkOffset), __ATOMIC_RELAXED);
        found = exchange(headWord, first, second);
    } while (found == 0);
    __atomic_store_n(linkOf(first, linkOffset), Word{0}, __ATOMIC_RELAXED);
    return reinterpret_cast<void*>(first);
}
