// kestrel/foundation/detail/BlockTable.h - the live blocks of the checking allocator, found by address.
#pragma once

#include <kestrel/foundation/detail/MallocAllocator.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kestrel::detail {

/// The record of one live block: 32 bytes.
struct Block {
    char* user;                     ///< what the caller got
    const char* file;               ///< null is the unknown-file marker
    std::uint64_t size : 62;        ///< as requested
    std::uint64_t isResized : 1;    ///< its rear guard follows the size, not the rounded size
    std::uint64_t hasOutlived : 1;  ///< the run that allocated it has ended
    std::int32_t line;              ///< negative for an array
    std::uint32_t next;             ///< the table's
};

/// A hash table with chains of small numbers instead of pointers: 32 bytes a record and 4 to 8 for the
/// chains. Records never move.
class BlockTable {
public:
    BlockTable() = default;
    BlockTable(const BlockTable&) = delete;
    BlockTable& operator=(const BlockTable&) = delete;
    ~BlockTable() { clear(); }

    std::size_t getCount() const { return m_count; }
    /// Null when there is no such block.
    Block* find(const void* user) const;
    /// Adds a copy of block, which must not be there yet.
    void insert(const Block& block);
    /// Removes a block that is there.
    void erase(const void* user);
    void clear();

    /// Calls visit(Block&) for every block, in no particular order.
    template <class Visit>
    void forEach(Visit visit) const {
        for (Block* chunk : m_chunks)
            for (Block* block = chunk; block != chunk + chunkSize; ++block)
                if (block->user) visit(*block);
    }

    using List = std::vector<Block*, MallocAllocator<Block*>>;
    /// All blocks in ascending address order.
    List sorted() const;

private:
    static constexpr std::uint32_t none = 0xFFFFFFFF;
    static constexpr std::size_t chunkSize = 1024;

    Block& record(std::uint32_t index) const { return m_chunks[index / chunkSize][index % chunkSize]; }
    std::uint32_t& chainOf(const void* user);
    std::size_t bucketOf(const void* user) const;
    std::uint32_t takeRecord();
    void grow();

    std::vector<std::uint32_t, MallocAllocator<std::uint32_t>> m_buckets;  // a power of two
    std::vector<Block*, MallocAllocator<Block*>> m_chunks;
    std::size_t m_count = 0;
    std::uint32_t m_firstFree = none;
};

}  // namespace kestrel::detail
