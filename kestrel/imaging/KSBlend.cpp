#include <kestrel/imaging/KSBlend.h>

#include <kestrel/imaging/detail/BlendNames.h>

#include <algorithm>
#include <array>
#include <vector>

using kestrel::detail::splitMenuString;

namespace {

constexpr auto separator = KSBlendModeSeparator;

// The index of an entry is its mode's number.
constexpr std::array<KSBlendMode, 33> elementBlendModes = {
    KSBlendModeNormal,
    separator,
    KSBlendModeDarken,
    KSBlendModeMultiply,
    KSBlendModeColorBurn,
    KSBlendModeLinearBurn,
    KSBlendModeDarkerColor,
    separator,
    KSBlendModeLighten,
    KSBlendModeScreen,
    KSBlendModeColorDodge,
    KSBlendModeAdd,
    KSBlendModeLighterColor,
    separator,
    KSBlendModeOverlay,
    KSBlendModeSoftLight,
    KSBlendModeHardLight,
    KSBlendModeVividLight,
    KSBlendModeLinearLight,
    KSBlendModePinLight,
    KSBlendModeHardMix,
    separator,
    KSBlendModeDifference,
    KSBlendModeExclusion,
    separator,
    KSBlendModeHue,
    KSBlendModeSaturation,
    KSBlendModeColor,
    KSBlendModeLuminosity,
    KSBlendModeAverage,
    separator,
    KSBlendModeSubtract,
    KSBlendModeDivide,
};

constexpr std::array<KSBlendMode, 35> layerBlendModes = [] {
    std::array<KSBlendMode, 35> modes{KSBlendModePassThrough, separator};
    std::copy(elementBlendModes.begin(), elementBlendModes.end(), modes.begin() + 2);
    return modes;
}();

KSBlendMode modeAt(std::span<const KSBlendMode> modes, unsigned int index) {
    return index < modes.size() ? modes[index] : separator;
}

unsigned int indexOf(std::span<const KSBlendMode> modes, KSBlendMode mode) {
    const auto found = std::find(modes.begin(), modes.end(), mode);
    return found == modes.end() ? 0 : static_cast<unsigned int>(found - modes.begin());
}

/// Looked up once and never freed, so that it can be used while the process ends.
const KSString& lookUpOnce(const KSString*& cached, const char* key) {
    if (!cached) cached = new KSString(key, KESTREL_BUNDLE_IDENTIFIER);
    return *cached;
}

const KSString* pModeMenuString = nullptr;
const KSString* pModeMenuCombineString = nullptr;
const KSString* pMaskModeMenuString = nullptr;

std::vector<KSString> modeNameVector;
std::vector<KSString> maskModeNameVector;

const std::vector<KSString>& initializeModeNameVector() {
    if (modeNameVector.empty()) modeNameVector = splitMenuString(KSBlend::modeMenuString(true));
    return modeNameVector;
}

const std::vector<KSString>& initializeMaskModeNameVector() {
    if (maskModeNameVector.empty()) maskModeNameVector = splitMenuString(KSBlend::maskModeMenuString());
    return maskModeNameVector;
}

KSString nameAt(const std::vector<KSString>& names, long position) {
    return position >= 0 && position < static_cast<long>(names.size())
               ? names[static_cast<std::size_t>(position)]
               : KSString();
}

}  // namespace

std::vector<KSString> kestrel::detail::splitMenuString(const KSString& menu) {
    const KSString bar("|");
    const KSString semicolon(";");
    const KSString& mark = menu.find(bar) >= 0 ? bar : semicolon;
    std::vector<KSString> names;
    KSString rest = menu;
    for (long end; (end = rest.find(mark)) >= 0; rest = rest.substrFrom(static_cast<unsigned long>(end) + 1))
        names.push_back(rest.substr(0, static_cast<unsigned int>(end)));
    names.push_back(rest);
    return names;
}

std::span<const KSBlendMode, 35> KSBlend::getLayerBlendModes() { return layerBlendModes; }
std::span<const KSBlendMode, 33> KSBlend::getElementBlendModes() { return elementBlendModes; }

KSBlendMode KSBlend::indexToLayerBlendMode(unsigned int index) { return modeAt(layerBlendModes, index); }
KSBlendMode KSBlend::indexToElementBlendMode(unsigned int index) { return modeAt(elementBlendModes, index); }
KSBlendMode KSBlend::indexToBlendMode(unsigned int index, bool layer) {
    return layer ? indexToLayerBlendMode(index) : indexToElementBlendMode(index);
}

unsigned int KSBlend::layerBlendModeToIndex(KSBlendMode mode) { return indexOf(layerBlendModes, mode); }
unsigned int KSBlend::elementBlendModeToIndex(KSBlendMode mode) { return indexOf(elementBlendModes, mode); }
unsigned int KSBlend::blendModeToIndex(KSBlendMode mode, bool layer) {
    return layer ? layerBlendModeToIndex(mode) : elementBlendModeToIndex(mode);
}

const KSString& KSBlend::modeMenuString(bool combine) {
    return combine ? lookUpOnce(pModeMenuCombineString, "Blend Modes Combine")
                   : lookUpOnce(pModeMenuString, "Blend Modes");
}
const KSString& KSBlend::maskModeMenuString() { return lookUpOnce(pMaskModeMenuString, "Mask Blend Modes"); }

KSString KSBlend::modeName(KSBlendMode mode, bool layer) {
    return nameAt(initializeModeNameVector(), static_cast<long>(mode) + (layer ? 0 : 2));
}
int KSBlend::modeCount(bool layer) {
    return static_cast<int>(initializeModeNameVector().size()) - (layer ? 0 : 2);
}
KSString KSBlend::maskModeName(KSBlendMode mode) { return nameAt(initializeMaskModeNameVector(), mode); }
int KSBlend::maskModeCount() { return static_cast<int>(initializeMaskModeNameVector().size()); }
