#include <kestrel/imaging/KSBitmapMemory.h>

#include <kestrel/platform/detail/MappableMemory.h>

void KSBitmapMemory::setKeptLimit(std::size_t bytes) { kestrel::detail::setKeptRegionLimit(bytes); }

std::size_t KSBitmapMemory::getKeptLimit() { return kestrel::detail::keptRegionLimit(); }

std::size_t KSBitmapMemory::getKeptBytes() { return kestrel::detail::keptRegionBytes(); }

void KSBitmapMemory::releaseKept() { kestrel::detail::dropKeptRegions(0); }

std::size_t KSBitmapMemory::getRegionCount() { return kestrel::detail::liveRegionCount(); }
