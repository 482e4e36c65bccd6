#include <kestrel/foundation/detail/AllocSettings.h>

#include <kestrel/foundation/detail/NumberText.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace kestrel::detail {

namespace {

/// Base 0 detects decimal, 0x hexadecimal and leading-0 octal.
unsigned long numberIn(const char* variable, int base) {
    const char* text = std::getenv(variable);
    return text ? std::strtoul(text, nullptr, base) : 0;
}

float fractionIn(const char* variable) {
    const char* text = std::getenv(variable);
    double percentage = 0;
    if (text) readNumber(text, text + std::strlen(text), percentage);
    return static_cast<float>(percentage / 100);
}

}  // namespace

AllocSettings AllocSettings::fromEnvironment() {
    AllocSettings settings;
    settings.blocksLimit = numberIn("ksAllocatedBlocksLimit", 10);
    settings.bytesLimit = numberIn("ksAllocatedBytesLimit", 10);
    settings.failureFraction = fractionIn("ksFailurePercentage");
    settings.isValidPtrCheck = std::getenv("ksValidPtrCheck") != nullptr;
    settings.isFill = true;  // before the variable is read, on purpose
    if (std::getenv("ksFillPtrOnAlloc")) settings.isFill = true;
    settings.pointerBreak = numberIn("ksPointerBreak", 0);
    settings.sizePrint = numberIn("ksSizePrint", 0);
    return settings;
}

int reportLevel(int level) {
    const char* text = std::getenv("ksAlloc");
    if (!text) return level;
    if (*text == '\0') return 65535;
    return static_cast<int>(std::clamp<long>(std::strtol(text, nullptr, 10), INT_MIN, INT_MAX));
}

}  // namespace kestrel::detail
