#include <kestrel/platform/CFDictionary.h>

#include <string>
#include <utility>
#include <vector>

struct __CFDictionary final : kestrel::detail::PlatformObject {
    ~__CFDictionary() override {
        for (const auto& [key, value] : pairs) {
            CFRelease(key);
            CFRelease(value);
        }
    }
    std::string describe() const override {
        return "dictionary of " + std::to_string(pairs.size()) + " entries";
    }

    std::vector<std::pair<CFStringRef, CFTypeRef>> pairs;
};

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef, const void** keys, const void** values, CFIndex count,
                                   const CFDictionaryKeyCallBacks*, const CFDictionaryValueCallBacks*) {
    auto* dictionary = new __CFDictionary;
    for (CFIndex i = 0; i < count; ++i)
        dictionary->pairs.emplace_back(static_cast<CFStringRef>(CFRetain(keys[i])), CFRetain(values[i]));
    return dictionary;
}

CFIndex CFDictionaryGetCount(CFDictionaryRef dictionary) {
    return dictionary ? static_cast<CFIndex>(dictionary->pairs.size()) : 0;
}

const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key) {
    if (!dictionary || !key) return nullptr;
    for (const auto& [known, value] : dictionary->pairs)
        if (CFStringCompare(known, static_cast<CFStringRef>(key), 0) == kCFCompareEqualTo) return value;
    return nullptr;
}

void CFDictionaryGetKeysAndValues(CFDictionaryRef dictionary, const void** keys, const void** values) {
    if (!dictionary) return;
    for (std::size_t i = 0; i < dictionary->pairs.size(); ++i) {
        if (keys) keys[i] = dictionary->pairs[i].first;
        if (values) values[i] = dictionary->pairs[i].second;
    }
}
