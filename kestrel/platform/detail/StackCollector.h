// kestrel/platform/detail/StackCollector.h - the call stack of the calling thread.
#pragma once

#include <cstdint>
#include <vector>

struct CrawlFrame;

namespace kestrel::detail {

/// Collects the frames of the calling thread, innermost first, leaving out collectStack itself and the
/// `skip` functions that called it. The caller frees every symbolName. Mangled names
/// carry one more leading underscore, as the symbol tables of some systems have it, so that one printer
/// serves all systems; other names stand as they are.
std::vector<CrawlFrame> collectStack(int skip);

}  // namespace kestrel::detail
