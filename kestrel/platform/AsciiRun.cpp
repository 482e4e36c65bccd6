// Widening and narrowing of ASCII by vectors: whole vectors while all of them is ASCII, then the plain loop,
// which finds the exact end of the run.
#include <kestrel/platform/detail/AsciiRun.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kestrel/platform/AsciiRun.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kestrel::detail::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

std::size_t widen(const std::uint8_t* bytes, std::size_t count, UniChar* units) {
    const hn::ScalableTag<std::uint16_t> d16;
    const hn::Rebind<std::uint8_t, decltype(d16)> d8;
    const std::size_t lanes = hn::Lanes(d16);
    const auto limit = hn::Set(d16, 0x7F);
    std::size_t done = 0;
    for (; done + 2 * lanes <= count; done += 2 * lanes) {
        const auto low = hn::PromoteTo(d16, hn::LoadU(d8, bytes + done));
        const auto high = hn::PromoteTo(d16, hn::LoadU(d8, bytes + done + lanes));
        if (!hn::AllFalse(d16, hn::Gt(hn::Or(low, high), limit))) break;
        hn::StoreU(low, d16, units + done);
        hn::StoreU(high, d16, units + done + lanes);
    }
    return done + widenAsciiReference(bytes + done, count - done, units + done);
}

std::size_t narrow(const UniChar* units, std::size_t count, std::uint8_t* bytes) {
    const hn::ScalableTag<std::uint16_t> d16;
    const hn::RebindToSigned<decltype(d16)> di16;
    const hn::Rebind<std::uint8_t, decltype(d16)> d8;
    const std::size_t lanes = hn::Lanes(d16);
    const auto limit = hn::Set(d16, 0x7F);
    std::size_t done = 0;
    for (; done + 2 * lanes <= count; done += 2 * lanes) {
        const auto low = hn::LoadU(d16, units + done);
        const auto high = hn::LoadU(d16, units + done + lanes);
        if (!hn::AllFalse(d16, hn::Gt(hn::Or(low, high), limit))) break;
        hn::StoreU(hn::DemoteTo(d8, hn::BitCast(di16, low)), d8, bytes + done);
        hn::StoreU(hn::DemoteTo(d8, hn::BitCast(di16, high)), d8, bytes + done + lanes);
    }
    return done + narrowAsciiReference(units + done, count - done, bytes + done);
}

}  // namespace kestrel::detail::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kestrel::detail {

HWY_EXPORT(widen);
HWY_EXPORT(narrow);

std::size_t widenAscii(const std::uint8_t* bytes, std::size_t count, UniChar* units) noexcept {
    return HWY_DYNAMIC_DISPATCH(widen)(bytes, count, units);
}

std::size_t narrowAscii(const UniChar* units, std::size_t count, std::uint8_t* bytes) noexcept {
    return HWY_DYNAMIC_DISPATCH(narrow)(units, count, bytes);
}

std::size_t widenAsciiReference(const std::uint8_t* bytes, std::size_t count, UniChar* units) noexcept {
    std::size_t i = 0;
    for (; i < count && bytes[i] < 0x80; ++i) units[i] = bytes[i];
    return i;
}

std::size_t narrowAsciiReference(const UniChar* units, std::size_t count, std::uint8_t* bytes) noexcept {
    std::size_t i = 0;
    for (; i < count && units[i] < 0x80; ++i) bytes[i] = static_cast<std::uint8_t>(units[i]);
    return i;
}

}  // namespace kestrel::detail
#endif
