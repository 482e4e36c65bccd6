// Finding by vectors: every position where both the first and the last unit fit is a candidate, and only
// candidates are compared in full.
#include <kestrel/platform/detail/FindUnits.h>

#include <algorithm>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kestrel/platform/FindUnits.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kestrel::detail::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

std::size_t find(const UniChar* text, std::size_t length, const UniChar* what, std::size_t size) {
    const hn::ScalableTag<std::uint16_t> d;
    const std::size_t lanes = hn::Lanes(d);
    const std::size_t positions = length - size + 1;
    const auto first = hn::Set(d, what[0]);
    const auto last = hn::Set(d, what[size - 1]);
    const auto candidates = [&](std::size_t i) HWY_ATTR {
        return hn::And(hn::Eq(hn::LoadU(d, text + i), first),
                       hn::Eq(hn::LoadU(d, text + i + size - 1), last));
    };
    std::size_t at = 0;
    while (at + lanes <= positions) {
        const auto mask = candidates(at);
        const std::intptr_t lane = hn::FindFirstTrue(d, mask);
        if (lane < 0) {
            at += lanes;
            continue;
        }
        at += static_cast<std::size_t>(lane);
        if (std::memcmp(text + at, what, size * sizeof(UniChar)) == 0) return at;
        ++at;
    }
    const std::size_t rest = findUnitsReference({text + at, length - at}, {what, size});
    return rest == notFound ? notFound : at + rest;
}

}  // namespace kestrel::detail::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kestrel::detail {

HWY_EXPORT(find);

std::size_t findUnits(std::span<const UniChar> text, std::span<const UniChar> what) noexcept {
    if (what.empty() || what.size() > text.size()) return notFound;
    return HWY_DYNAMIC_DISPATCH(find)(text.data(), text.size(), what.data(), what.size());
}

std::size_t findUnitsReference(std::span<const UniChar> text, std::span<const UniChar> what) noexcept {
    if (what.empty()) return notFound;
    const auto found = std::search(text.begin(), text.end(), what.begin(), what.end());
    return found == text.end() ? notFound : static_cast<std::size_t>(found - text.begin());
}

}  // namespace kestrel::detail
#endif
