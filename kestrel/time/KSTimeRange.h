// kestrel/time/KSTimeRange.h - a range of frames.
#pragma once

#include <kestrel/platform/Export.h>

#include <algorithm>

/// A frame range given by its first frame and the number of its frames.
///
/// Units      frames. The last frame, start + duration - 1, belongs to the range. Arithmetic is done in
///            double precision and stored in single.
/// Threads    a plain value.
/// Example
///     KSTimeRange clip(0, 10), work(5, 10);
///     KSTimeRange both = clip.getIntersectionWith(work);  // (5, 5)
///     KSTimeRange all = clip.getUnionWith(work);          // (0, 15)
class KESTREL_API KSTimeRange {
public:
    constexpr KSTimeRange() noexcept = default;
    constexpr KSTimeRange(float firstFrame, float frameCount) noexcept
        : start(firstFrame), duration(frameCount) {}

    /// The frames that are in both; (0, 0) if there are none.
    constexpr KSTimeRange getIntersectionWith(const KSTimeRange& other) const noexcept {
        const double first = std::max<double>(start, other.start);
        const double last = std::min(getLast(), other.getLast());
        return last >= first ? fromTo(first, last) : KSTimeRange();
    }
    constexpr void setAsIntersectionWith(const KSTimeRange& other) noexcept {
        *this = getIntersectionWith(other);
    }

    /// The smallest range that covers both, with the gap between them if they are apart.
    constexpr KSTimeRange getUnionWith(const KSTimeRange& other) const noexcept {
        return fromTo(std::min<double>(start, other.start), std::max(getLast(), other.getLast()));
    }
    constexpr void setAsUnionWith(const KSTimeRange& other) noexcept { *this = getUnionWith(other); }

    constexpr bool operator==(const KSTimeRange&) const noexcept = default;

    float start = 0;
    float duration = 0;

private:
    constexpr double getLast() const noexcept { return static_cast<double>(start) + duration - 1; }
    static constexpr KSTimeRange fromTo(double first, double last) noexcept {
        return {static_cast<float>(first), static_cast<float>(last - first + 1)};
    }
};
