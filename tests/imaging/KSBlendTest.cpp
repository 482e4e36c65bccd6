#include <kestrel/imaging/KSBlend.h>
#include <kestrel/imaging/detail/BlendNames.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

std::string utf8(const KSString& string) {
    const std::unique_ptr<char, decltype(&std::free)> text(string.createUTF8Str(), &std::free);
    return text ? text.get() : "(null)";
}

}  // namespace

TEST(KSBlend, MenusHoldTheModesInOrder) {
    const int element[] = {0,  36, 2,  3,  4,  5,  6,  36, 8,  9,  10, 11, 12, 36, 14, 15, 16,
                           17, 18, 19, 20, 36, 22, 23, 36, 25, 26, 27, 28, 29, 36, 31, 32};
    const auto elements = KSBlend::getElementBlendModes();
    const auto layers = KSBlend::getLayerBlendModes();
    EXPECT_TRUE(std::equal(elements.begin(), elements.end(), std::begin(element), std::end(element)));
    EXPECT_EQ(layers[0], 34);
    EXPECT_EQ(layers[1], 36);
    EXPECT_TRUE(std::equal(layers.begin() + 2, layers.end(), elements.begin(), elements.end()));
}

TEST(KSBlend, IndexesAndModesMapBothWays) {
    const struct {
        int mode;
        unsigned int layerIndex, elementIndex;
    } rows[] = {{0, 2, 0},  {2, 4, 2}, {32, 34, 32}, {34, 0, 0}, {36, 1, 1},
                {33, 0, 0}, {1, 0, 0}, {-1, 0, 0},   {35, 0, 0}};
    for (const auto& row : rows) {
        const auto mode = static_cast<KSBlendMode>(row.mode);
        EXPECT_EQ(KSBlend::layerBlendModeToIndex(mode), row.layerIndex) << row.mode;
        EXPECT_EQ(KSBlend::elementBlendModeToIndex(mode), row.elementIndex) << row.mode;
        EXPECT_EQ(KSBlend::blendModeToIndex(mode, true), row.layerIndex) << row.mode;
        EXPECT_EQ(KSBlend::blendModeToIndex(mode, false), row.elementIndex) << row.mode;
    }
    EXPECT_EQ(KSBlend::indexToElementBlendMode(1), 36);
    EXPECT_EQ(KSBlend::indexToBlendMode(34, true), 32);
    EXPECT_EQ(KSBlend::indexToBlendMode(32, false), 32);
    for (const unsigned int beyond : {35u, 1000u, ~0u}) {
        EXPECT_EQ(KSBlend::indexToBlendMode(beyond, true), KSBlendModeSeparator);
        EXPECT_EQ(KSBlend::indexToBlendMode(beyond, false), KSBlendModeSeparator);
    }
}

TEST(KSBlend, MenuTextsAreSplitAtOneKindOfMark) {
    const struct {
        const char* menu;
        std::vector<std::string> names;
    } rows[] = {{"a|b;c|", {"a", "b;c", ""}},
                {" a ;b", {" a ", "b"}},
                {"single", {"single"}},
                {"", {""}},
                {"||", {"", "", ""}}};
    for (const auto& row : rows) {
        std::vector<std::string> names;
        for (const KSString& name : kestrel::detail::splitMenuString(KSString(row.menu)))
            names.push_back(utf8(name));
        EXPECT_EQ(names, row.names) << row.menu;
    }
    EXPECT_EQ(kestrel::detail::splitMenuString(KSString()).size(), 1u);
}

TEST(KSBlend, NamesStandAtTheirPositions) {
    EXPECT_EQ(KSBlend::modeCount(true), 35);
    EXPECT_EQ(KSBlend::modeCount(false), 33);
    const auto elements = KSBlend::getElementBlendModes();
    for (std::size_t mode = 0; mode < elements.size(); ++mode)  // separators are named "-" in every language
        EXPECT_EQ(utf8(KSBlend::modeName(static_cast<KSBlendMode>(mode), false)) == "-", elements[mode] == 36)
            << mode;
    for (int mode = 2; mode < 35; ++mode)  // for a layer, the name two places early
        EXPECT_EQ(utf8(KSBlend::modeName(static_cast<KSBlendMode>(mode), true)),
                  utf8(KSBlend::modeName(static_cast<KSBlendMode>(mode - 2), false)));
    EXPECT_EQ(utf8(KSBlend::modeName(static_cast<KSBlendMode>(33), false)), "(null)");
    EXPECT_EQ(utf8(KSBlend::modeName(static_cast<KSBlendMode>(-1), true)), "(null)");
    EXPECT_EQ(KSBlend::maskModeCount(), 5);
    EXPECT_EQ(utf8(KSBlend::maskModeName(static_cast<KSBlendMode>(5))), "(null)");
    EXPECT_EQ(&KSBlend::modeMenuString(true), &KSBlend::modeMenuString(true));  // looked up once
}

TEST(KSBlend, EveryLanguageNamesEveryModeAndOthersFallBack) {
    const char* before = getenv("LC_ALL");
    const std::string saved = before ? before : "";
    const struct {
        const char* locale;
        const char* darken;
        const char* mask;
    } rows[] = {
        {"en_GB.UTF-8", "Darken", "Add"},
        {"de_AT", "Abdunkeln", "Addieren"},
        {"fr_CA.UTF-8", "Obscurcir", "Ajouter"},
        {"es_MX", "Oscurecer",
         "A\xC3\xB1"
         "adir"},
        {"ja_JP", "\xE6\xAF\x94\xE8\xBC\x83\xEF\xBC\x88\xE6\x9A\x97\xEF\xBC\x89", "\xE5\x8A\xA0\xE7\xAE\x97"},
        {"eo", "Darken", "Add"}};
    for (const auto& row : rows) {
        setenv("LC_ALL", row.locale, 1);
        for (const char* key : {"Blend Modes", "Blend Modes Combine"}) {
            const auto names = kestrel::detail::splitMenuString(KSString(key, KESTREL_BUNDLE_IDENTIFIER));
            ASSERT_EQ(names.size(), 35u) << row.locale;
            EXPECT_EQ(utf8(names[4]), row.darken);
            const auto layers = KSBlend::getLayerBlendModes();
            for (std::size_t i = 0; i < names.size(); ++i)
                EXPECT_EQ(utf8(names[i]) == "-", layers[i] == KSBlendModeSeparator) << row.locale << ' ' << i;
        }
        const auto masks =
            kestrel::detail::splitMenuString(KSString("Mask Blend Modes", KESTREL_BUNDLE_IDENTIFIER));
        ASSERT_EQ(masks.size(), 5u);
        EXPECT_EQ(utf8(masks[0]), row.mask);
    }
    before ? setenv("LC_ALL", saved.c_str(), 1) : unsetenv("LC_ALL");
}
