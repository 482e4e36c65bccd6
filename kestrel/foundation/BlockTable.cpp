#include <kestrel/foundation/detail/BlockTable.h>

#include <algorithm>
#include <bit>

namespace kestrel::detail {

std::size_t BlockTable::bucketOf(const void* user) const {
    // Fibonacci hashing (Knuth, The Art of Computer Programming, section 6.4): blocks often stand at equal
    // distances, and the high bits of the product spread them.
    const std::uint64_t product = (reinterpret_cast<std::uintptr_t>(user) >> 4) * 0x9E3779B97F4A7C15u;
    return static_cast<std::size_t>(product >> (64 - std::countr_zero(m_buckets.size())));
}

Block* BlockTable::find(const void* user) const {
    if (m_count == 0) return nullptr;
    for (std::uint32_t index = m_buckets[bucketOf(user)]; index != none; index = record(index).next)
        if (record(index).user == user) return &record(index);
    return nullptr;
}

void BlockTable::insert(const Block& block) {
    if (m_count >= m_buckets.size()) grow();
    const std::uint32_t index = takeRecord();
    std::uint32_t& chain = m_buckets[bucketOf(block.user)];
    record(index) = block;
    record(index).next = chain;
    chain = index;
    ++m_count;
}

void BlockTable::erase(const void* user) {
    std::uint32_t* link = &m_buckets[bucketOf(user)];
    while (record(*link).user != user) link = &record(*link).next;
    const std::uint32_t index = *link;
    *link = record(index).next;
    record(index) = {};  // without an address it is free
    record(index).next = m_firstFree;
    m_firstFree = index;
    --m_count;
}

void BlockTable::clear() {
    for (Block* chunk : m_chunks) std::free(chunk);
    m_chunks = {};
    m_buckets = {};
    m_count = 0;
    m_firstFree = none;
}

BlockTable::List BlockTable::sorted() const {
    List result;
    result.reserve(m_count);
    forEach([&](Block& block) { result.push_back(&block); });
    std::sort(result.begin(), result.end(), [](const Block* a, const Block* b) { return a->user < b->user; });
    return result;
}

std::uint32_t BlockTable::takeRecord() {
    if (m_firstFree == none) {
        const std::size_t first = m_chunks.size() * chunkSize;
        if (first + chunkSize > none) stopForMemory(chunkSize * sizeof(Block));
        m_chunks.push_back(MallocAllocator<Block>().allocate(chunkSize));
        for (std::size_t i = chunkSize; i-- > 0;) {
            const auto index = static_cast<std::uint32_t>(first + i);
            record(index) = {};
            record(index).next = m_firstFree;
            m_firstFree = index;
        }
    }
    const std::uint32_t index = m_firstFree;
    m_firstFree = record(index).next;
    return index;
}

void BlockTable::grow() {
    m_buckets.assign(std::max<std::size_t>(1024, 2 * m_buckets.size()), none);
    for (std::uint32_t index = 0; index < m_chunks.size() * chunkSize; ++index) {
        Block& block = record(index);
        if (!block.user) continue;
        std::uint32_t& chain = m_buckets[bucketOf(block.user)];
        block.next = chain;
        chain = index;
    }
}

}  // namespace kestrel::detail
