// kestrel/imaging/KSBlend.h - the catalogue of blend modes: numbers, menus and localised names.
#pragma once

#include <kestrel/foundation/KSString.h>
#include <kestrel/platform/Export.h>

#include <span>

/// A compositing blend mode by its number in documents. The missing numbers 1, 7, 13, 21, 24 and 30 are where
/// the menus have separators; 33 is reserved and never listed.
enum KSBlendMode : int {
    KSBlendModeNormal = 0,
    KSBlendModeDarken = 2,
    KSBlendModeMultiply = 3,
    KSBlendModeColorBurn = 4,
    KSBlendModeLinearBurn = 5,
    KSBlendModeDarkerColor = 6,
    KSBlendModeLighten = 8,
    KSBlendModeScreen = 9,
    KSBlendModeColorDodge = 10,
    KSBlendModeAdd = 11,
    KSBlendModeLighterColor = 12,
    KSBlendModeOverlay = 14,
    KSBlendModeSoftLight = 15,
    KSBlendModeHardLight = 16,
    KSBlendModeVividLight = 17,
    KSBlendModeLinearLight = 18,
    KSBlendModePinLight = 19,
    KSBlendModeHardMix = 20,
    KSBlendModeDifference = 22,
    KSBlendModeExclusion = 23,
    KSBlendModeHue = 25,
    KSBlendModeSaturation = 26,
    KSBlendModeColor = 27,
    KSBlendModeLuminosity = 28,
    KSBlendModeAverage = 29,
    KSBlendModeSubtract = 31,
    KSBlendModeDivide = 32,
    KSBlendModeReserved = 33,
    KSBlendModePassThrough = 34,  ///< offered for layers only
    KSBlendModeSeparator = 36,    ///< a line in a menu, no mode
};

/// The menus that offer blend modes; class functions only.
///
/// An element menu's index is the number of its mode. The layer menu has pass-through and a separator before
/// the same entries, so that its index is the number plus 2.
///
/// Threads    names are looked up on first use without a lock: use them from one thread at a time.
/// Errors     an index beyond a menu gives the separator, a mode beyond a list of names a null text.
/// Example
///     for (KSBlendMode mode : KSBlend::getElementBlendModes())
///         menu.add(mode == KSBlendModeSeparator ? KSString("-") : KSBlend::modeName(mode, false));
class KESTREL_API KSBlend {
public:
    KSBlend() = delete;

    /// The entries of a menu in order, separators included. The lists are constant and live for ever.
    static std::span<const KSBlendMode, 35> getLayerBlendModes();
    /// The same without pass-through and the separator below it.
    static std::span<const KSBlendMode, 33> getElementBlendModes();

    /// The entry at an index of the layer menu; the separator beyond its end.
    static KSBlendMode indexToLayerBlendMode(unsigned int index);
    /// The entry at an index of the element menu; the separator beyond its end.
    static KSBlendMode indexToElementBlendMode(unsigned int index);
    /// One of the two above, by layer.
    static KSBlendMode indexToBlendMode(unsigned int index, bool layer);

    /// The first index of mode in a menu, so that the separator gives its first place; 0 when it is not
    /// there.
    static unsigned int layerBlendModeToIndex(KSBlendMode mode);
    static unsigned int elementBlendModeToIndex(KSBlendMode mode);
    static unsigned int blendModeToIndex(KSBlendMode mode, bool layer);

    /// All names of the layer menu in one text, "|" between them, in the user's language.
    /// @param combine  the text that modeName takes its names from
    static const KSString& modeMenuString(bool combine);
    /// All names of the mask menu in one text, in the user's language.
    static const KSString& maskModeMenuString();

    /// The name at position mode + 2 of the layer menu, or at position mode when layer is true. The second is
    /// deliberate: for a layer it is the name of the entry two places before the mode's own, and the name of
    /// a mode is the one that layer = false gives.
    static KSString modeName(KSBlendMode mode, bool layer);
    /// The number of names, less 2 when layer is false; so -1 for a table that holds a single name.
    static int modeCount(bool layer);
    /// The name at position mode of the mask menu, in the user's language; a null text beyond it.
    static KSString maskModeName(KSBlendMode mode);
    /// The number of names in the mask menu.
    static int maskModeCount();
};
