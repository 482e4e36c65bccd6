// Finding by vectors: every position where both the first and the last unit fit is a candidate, and only
// candidates are compared in full. A text made of near misses is handed to an algorithm that looks at every
// unit once: Knuth, Morris and Pratt, "Fast Pattern Matching in Strings", 1977.
#include <kestrel/platform/detail/FindUnits.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

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
    const std::size_t patience = 4 * length + 1024;
    std::size_t compared = 0;
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
        if ((compared += size) > patience) break;
    }
    const auto search = compared > patience ? findUnitsLinear : findUnitsReference;
    const std::size_t rest = search({text + at, length - at}, {what, size});
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

std::size_t findUnitsLinear(std::span<const UniChar> text, std::span<const UniChar> what) noexcept {
    // After `matched` units fitted and the next did not, the longest start of `what` that ends there as well.
    const std::unique_ptr<std::size_t[]> shorter(new (std::nothrow) std::size_t[what.size() + 1]);
    if (what.empty()) return notFound;
    if (!shorter) return findUnitsReference(text, what);
    shorter[0] = shorter[1] = 0;
    for (std::size_t i = 1, matched = 0; i < what.size(); ++i) {
        while (matched > 0 && what[i] != what[matched]) matched = shorter[matched];
        shorter[i + 1] = matched += what[i] == what[matched];
    }
    for (std::size_t i = 0, matched = 0; i < text.size(); ++i) {
        while (matched > 0 && text[i] != what[matched]) matched = shorter[matched];
        matched += text[i] == what[matched];
        if (matched == what.size()) return i + 1 - matched;
    }
    return notFound;
}

}  // namespace kestrel::detail
#endif
