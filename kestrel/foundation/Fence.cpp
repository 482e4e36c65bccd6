#include <kestrel/foundation/detail/Fence.h>

#include <cstdint>
#include <cstring>

namespace kestrel::detail {

namespace {

/// Four words; a block that has been reallocated may hold them at any address.
struct Fence {
    std::uint32_t words[4];
};
static_assert(sizeof(Fence) == frontFenceSize && 2 * sizeof(Fence) == fencesSize);

Fence frontFenceFor(const char* place) {
    const auto address = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(place));
    return {{0xABADCAFE, 0xABADCAFE, 0xABADCAFE, address}};
}

Fence backFenceFor(const char* place) {
    const auto address = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(place));
    return {{address, 0xBEEF0BAD, 0xBEEF0BAD, 0xBEEF0BAD}};
}

bool stands(const Fence& fence, const char* place) { return std::memcmp(place, &fence, sizeof fence) == 0; }

void fill(char* data, std::size_t size, const unsigned char (&pattern)[4]) {
    std::size_t i = 0;
    for (; i + 4 <= size; i += 4) std::memcpy(data + i, pattern, 4);
    if (i < size) std::memcpy(data + i, pattern, size - i);
}

constexpr unsigned char thefill[4] = {0xFA, 0xCE, 0xBE, 0xEF};
constexpr unsigned char thedeadfill[4] = {0xDE, 0xAD, 0xBE, 0xEF};

}  // namespace

void writeFences(char* start, std::size_t dataSize) {
    char* const back = start + frontFenceSize + dataSize;
    const Fence front = frontFenceFor(start), rear = backFenceFor(back);
    std::memcpy(start, &front, sizeof front);
    std::memcpy(back, &rear, sizeof rear);
}

bool isFrontFenceIntact(const char* start) { return stands(frontFenceFor(start), start); }

bool isBackFenceIntact(const char* start, std::size_t dataSize) {
    const char* const back = start + frontFenceSize + dataSize;
    return stands(backFenceFor(back), back);
}

void fillAsNew(char* data, std::size_t size) { fill(data, size, thefill); }

void fillAsDead(char* data, std::size_t size) { fill(data, size, thedeadfill); }

}  // namespace kestrel::detail
