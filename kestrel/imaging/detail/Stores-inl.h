// kestrel/imaging/detail/Stores-inl.h - the two ways of storing (see Stores.h) on vectors.
#if defined(KESTREL_STORES_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef KESTREL_STORES_INL_H
#undef KESTREL_STORES_INL_H
#else
#define KESTREL_STORES_INL_H
#endif

#include <hwy/cache_control.h>
#include <hwy/highway.h>
#include <kestrel/imaging/detail/Stores.h>

#include <cstdint>

HWY_BEFORE_NAMESPACE();
namespace kestrel::detail::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// Runs kernel(store) with store(v, d, to) as asked for, and returns its result: streaming takes rows that
/// are aligned to vectors.
template <class Kernel>
HWY_INLINE std::size_t WithStores(Stores stores, const void* to, Kernel kernel) {
    const std::size_t vector = hn::Lanes(hn::ScalableTag<std::uint8_t>());
    if (stores == Stores::cached || reinterpret_cast<std::uintptr_t>(to) % vector != 0)
        return kernel([](auto v, auto d, auto* place) HWY_ATTR { hn::StoreU(v, d, place); });
    const std::size_t done = kernel([](auto v, auto d, auto* place) HWY_ATTR { hn::Stream(v, d, place); });
    hwy::FlushStream();
    return done;
}

}  // namespace kestrel::detail::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
