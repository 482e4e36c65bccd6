#include <kestrel/platform/detail/EncodingSniffer.h>

#include <unicode/ucsdet.h>

#include <algorithm>
#include <limits>
#include <memory>

namespace kestrel::detail {

std::vector<const char*> sniffEncodings(std::span<const char> bytes) {
    struct CloseDetector {
        void operator()(UCharsetDetector* detector) const { ucsdet_close(detector); }
    };
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UCharsetDetector, CloseDetector> detector(ucsdet_open(&status));
    const std::size_t size = std::min<std::size_t>(bytes.size(), std::numeric_limits<std::int32_t>::max());
    ucsdet_setText(detector.get(), bytes.data(), static_cast<std::int32_t>(size), &status);
    std::int32_t count = 0;
    const UCharsetMatch** matches =
        ucsdet_detectAll(detector.get(), &count, &status);  // sorted by confidence

    std::vector<const char*> names;
    for (std::int32_t i = 0; U_SUCCESS(status) && i < count; ++i) {
        const char* name = ucsdet_getName(matches[i], &status);
        if (U_SUCCESS(status) && name) names.push_back(name);  // one of ICU's constants
    }
    return names;
}

}  // namespace kestrel::detail
