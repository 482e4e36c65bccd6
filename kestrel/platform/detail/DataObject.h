// kestrel/platform/detail/DataObject.h - the object behind CFDataRef.
#pragma once

#include <kestrel/platform/CFData.h>

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string>

/// Owns a block from malloc.
struct __CFData final : kestrel::detail::PlatformObject {
    struct Free {
        void operator()(UInt8* block) const { std::free(block); }
    };
    using Block = std::unique_ptr<UInt8, Free>;

    __CFData(Block block, std::size_t size) : bytes(std::move(block)), length(size) {}
    std::string describe() const override { return "<CFData of " + std::to_string(length) + " bytes>"; }

    const Block bytes;
    const std::size_t length;
};

namespace kestrel::detail {

/// Everything that can be read from a descriptor; null, with errno, on an error.
CFDataRef readWholeFile(int descriptor);

}  // namespace kestrel::detail
