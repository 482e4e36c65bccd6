#include <kestrel/serialization/KSScope.h>

const KSScope* KSScope::findElement(const KSScope* scope, std::uint32_t element) noexcept {
    return findAttribute(scope, element, 0);
}

const KSScope* KSScope::findAttribute(const KSScope* scope, std::uint32_t element,
                                      std::uint32_t attribute) noexcept {
    if (!scope) return nullptr;
    for (const KSScope* entry = scope; entry->name; ++entry) {
        if (entry->elementToken == element && entry->attributeToken == attribute) return entry;
    }
    return nullptr;
}
