#include <kestrel/foundation/KSInfo.h>

#include <kestrel/foundation/KSString.h>
#include <kestrel/platform/detail/MemoryStatistics.h>

#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <bit>

int KSInfo::getProcessors() { return static_cast<int>(std::max(1L, ::sysconf(_SC_NPROCESSORS_ONLN))); }

bool KSInfo::getMemoryInfo(unsigned long long* total, unsigned long long* free,
                           unsigned long long* sharedWindow, unsigned long long* rest,
                           unsigned long long* resident, unsigned long long* regions,
                           unsigned long long* largestGap) {
    kestrel::detail::MemoryStatistics statistics;
    const bool known = kestrel::detail::readMemoryStatistics(statistics);
    const auto store = [](unsigned long long* out, unsigned long long value) {
        if (out) *out = value;
    };
    store(total, statistics.total);
    store(free, statistics.free);
    store(sharedWindow, statistics.sharedWindow);
    store(rest, statistics.total - std::min(statistics.total, statistics.sharedWindow));
    store(resident, statistics.resident);
    store(regions, statistics.regions);
    store(largestGap, statistics.largestGap);
    return known;
}

bool KSInfo::isLittleEndian() { return std::endian::native == std::endian::little; }

bool KSInfo::getSystemName(KSString* out) {
    if (!out) return false;
    char name[4096];
    if (::gethostname(name, sizeof name) != 0) {
        out->clear();
        return false;
    }
    name[sizeof name - 1] = '\0';
    out->set(name);
    return true;
}

bool KSInfo::getSystemType(KSString* out) {
    if (!out) return false;
    utsname system;
    if (::uname(&system) != 0) {
        out->clear();
        return false;
    }
    out->set(system.sysname);
    out->push_back(' ');
    return true;
}
