// Comparing, finding and replacing.
#include <kestrel/platform/CFString.h>
#include <kestrel/platform/detail/Collation.h>
#include <kestrel/platform/detail/FindUnits.h>
#include <kestrel/platform/detail/StringObject.h>

#include <algorithm>
#include <vector>

using namespace kestrel::detail;

namespace {

using Units = std::span<const UniChar>;

constexpr CFRange nothing = {kCFNotFound, 0};

bool equal(Units left, Units right, CFStringCompareFlags options) {
    if (options & kCFCompareLocalized)
        return compareLocalized(left, right,
                                options & kCFCompareCaseInsensitive ? Case::Ignored : Case::Matters) == 0;
    return compareUnits(left, right, options & kCFCompareCaseInsensitive ? Case::Ignored : Case::Matters) ==
           0;
}

/// Where `what`, not empty, is found in text, by the options.
std::size_t findIn(Units text, Units what, CFStringCompareFlags options) {
    if (what.size() > text.size()) return notFound;
    const std::size_t last = text.size() - what.size();
    const auto fits = [&](std::size_t at) { return equal(text.subspan(at, what.size()), what, options); };
    const bool backwards = options & kCFCompareBackwards;
    if (options & kCFCompareAnchored) {
        const std::size_t at = backwards ? last : 0;
        return fits(at) ? at : notFound;
    }
    if (options == 0) return findUnits(text, what);
    for (std::size_t i = 0; i <= last; ++i) {
        const std::size_t at = backwards ? last - i : i;
        if (fits(at)) return at;
    }
    return notFound;
}

}  // namespace

CFComparisonResult CFStringCompare(CFStringRef left, CFStringRef right, CFStringCompareFlags options) {
    return CFStringCompareWithOptions(left, right, {0, CFStringGetLength(left)}, options);
}

CFComparisonResult CFStringCompareWithOptions(CFStringRef left, CFStringRef right, CFRange range,
                                              CFStringCompareFlags options) {
    const ClampedRange part(range, unitsOf(left).size());
    const auto units = unitsOf(left).subspan(part.position, part.count);
    const Case letters = options & kCFCompareCaseInsensitive ? Case::Ignored : Case::Matters;
    return static_cast<CFComparisonResult>(options & kCFCompareLocalized
                                               ? compareLocalized(units, unitsOf(right), letters)
                                               : compareUnits(units, unitsOf(right), letters));
}

CFRange CFStringFind(CFStringRef string, CFStringRef what, CFStringCompareFlags options) {
    CFRange result = nothing;
    CFStringFindWithOptions(string, what, {0, CFStringGetLength(string)}, options, &result);
    return result;
}

Boolean CFStringFindWithOptions(CFStringRef string, CFStringRef what, CFRange range,
                                CFStringCompareFlags options, CFRange* result) {
    const auto text = unitsOf(string);
    const auto wanted = unitsOf(what);
    const ClampedRange part(range, text.size());
    const std::size_t at =
        wanted.empty() ? notFound : findIn(text.subspan(part.position, part.count), wanted, options);
    if (result)
        *result = at == notFound ? nothing
                                 : CFRangeMake(static_cast<CFIndex>(part.position + at),
                                               static_cast<CFIndex>(wanted.size()));
    return at != notFound;
}

Boolean CFStringHasPrefix(CFStringRef string, CFStringRef prefix) {
    const auto text = unitsOf(string), wanted = unitsOf(prefix);
    return text.size() >= wanted.size() && std::ranges::equal(text.first(wanted.size()), wanted);
}

Boolean CFStringHasSuffix(CFStringRef string, CFStringRef suffix) {
    const auto text = unitsOf(string), wanted = unitsOf(suffix);
    return text.size() >= wanted.size() && std::ranges::equal(text.last(wanted.size()), wanted);
}

CFIndex CFStringFindAndReplace(CFMutableStringRef string, CFStringRef what, CFStringRef with, CFRange range,
                               CFStringCompareFlags options) {
    if (!string || !string->isEditable()) return 0;
    const auto text = string->getUnits();
    const auto wanted = unitsOf(what), units = unitsOf(with);
    const ClampedRange part(range, text.size());
    if (wanted.empty()) return 0;

    // The new text is put together beside the old one, so that a thousand replacements move it once.
    CFIndex count = 0;
    std::vector<UniChar> edited;
    std::size_t from = part.position;
    const std::size_t end = part.position + part.count;
    for (;;) {
        const std::size_t at = findIn(text.subspan(from, end - from), wanted, options & ~kCFCompareBackwards);
        if (at == notFound) break;
        const auto kept = text.subspan(from, at);
        edited.insert(edited.end(), kept.begin(), kept.end());
        edited.insert(edited.end(), units.begin(), units.end());
        from += at + wanted.size();
        ++count;
        if (options & kCFCompareAnchored) break;
    }
    if (count) string->replace(part.position, from - part.position, edited);
    return count;
}
