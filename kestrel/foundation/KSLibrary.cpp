#include <kestrel/foundation/KSLibrary.h>

#include <kestrel/foundation/KSString.h>
#include <kestrel/foundation/KSVersion.h>

#include <ImathConfig.h>
#include <hwy/highway.h>
#include <hwy/targets.h>
#include <unicode/uversion.h>

#include <cstdint>
#include <string>

const char* KSLibrary::getVersion() { return KESTREL_VERSION_STRING; }

void KSLibrary::getVectorTargets(KSString* out) {
    if (!out) return;
    std::string names;
    // Targets are bits, and better ones have lower bits.
    const std::int64_t targets = static_cast<std::int64_t>(hwy::SupportedTargets()) & HWY_TARGETS;
    for (std::int64_t rest = targets; rest != 0; rest &= rest - 1) {
        if (!names.empty()) names += ' ';
        names += hwy::TargetName(rest & -rest);
    }
    out->set(names.c_str());
}

void KSLibrary::getDependencies(KSString* out) {
    if (!out) return;
    UVersionInfo icu;
    u_getVersion(icu);
    char icuText[U_MAX_VERSION_STRING_LENGTH];
    u_versionToString(icu, icuText);
    std::string text = "ICU ";
    text += icuText;
    text += ", Imath " IMATH_VERSION_STRING ", Highway ";
    text += std::to_string(HWY_MAJOR) + "." + std::to_string(HWY_MINOR) + "." + std::to_string(HWY_PATCH);
    out->set(text.c_str());
}
