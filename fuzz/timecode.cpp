// Any text in any mode: both ways to read it agree, and what is read formats into its room and reads back.
#include <kestrel/foundation/KSString.h>
#include <kestrel/time/KSTimecode.h>
#include <kestrel/time/KSTimecodeMode.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

namespace {

void require(bool condition) {
    if (!condition) std::abort();
}

// Of each field half the values are small, so that rules that can be are as likely as others.
int takeInt(const std::uint8_t*& data) {
    std::int32_t value;
    std::memcpy(&value, data + 1, sizeof value);
    const bool isSmall = *data % 2 == 0;
    data += 1 + sizeof value;
    return isSmall ? value % 1024 : value;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t headSize = 5 * 5;
    if (size < headSize) return 0;
    const auto* const text = reinterpret_cast<const char*>(data) + headSize;
    const std::size_t length = size - headSize;
    const int fps = takeInt(data), drop = takeInt(data), interval = takeInt(data), keep = takeInt(data);
    const KSTimecodeMode mode("", fps, drop, interval, keep);

    const int read = KSTimecode::getTimeIndex(text, length, mode);
    require(KSTimecode::getTimeIndex(KSString(std::string(text, length).c_str()), mode) == read);

    for (const int frame : {read, takeInt(data)}) {
        char buffer[KSTimecode::maxTextSize];
        const std::size_t written = KSTimecode::getTimecode(frame, mode, buffer, sizeof buffer);
        require(written < sizeof buffer && std::strlen(buffer) == written);
        const int back = KSTimecode::getTimeIndex(buffer, written, mode);
        // Rules that skip all numbers, or count backwards, have no inverse. At low rates a field may need more
        // than 32 bits only near the end of the range.
        using Limits = std::numeric_limits<int>;
        const bool isOdd = drop < 0 || interval < 0 || drop >= std::int64_t{mode.getFps()} * interval;
        require(back == frame || isOdd || frame < Limits::min() / 2 || frame > Limits::max() / 2);
        KSTimecode::getDroppedFrames(frame, mode);
    }
    return 0;
}
