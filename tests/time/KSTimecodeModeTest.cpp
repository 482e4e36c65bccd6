#include <kestrel/time/KSTimecodeMode.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr int intMin = std::numeric_limits<int>::min();

std::string textOf(const KSString& string) {
    const std::unique_ptr<char, decltype(&std::free)> text(string.createUTF8Str(), &std::free);
    return text ? text.get() : "";
}

std::vector<std::string> registeredNames() {
    std::vector<std::string> names;
    for (const auto* mode : KSTimecodeMode::getTimecodeModes()) names.push_back(textOf(mode->getName()));
    return names;
}

std::vector<std::string> lastNames(std::size_t count) {
    const auto names = registeredNames();
    return {names.end() - static_cast<std::ptrdiff_t>(count), names.end()};
}

// What the registry held before the first test ran: static initialisers had filled it.
const std::vector<std::string> namesAtLoad = registeredNames();

struct ModeRow {
    const char* name;
    int fps, dropFrames, dropInterval, keepInterval;
    const char* wantName;
    int wantFps;
};
const auto modeRows = std::to_array<ModeRow>({
    {"PAL", 25, 0, 0, 0, "PAL", 25},
    {"", 30, 2, 60, 600, "30 FPS-DF", 30},
    {nullptr, 24, 0, 60, 600, "24 FPS", 24},
    {"", 0, 0, 0, 0, "0 FPS", 1},
    {"", -5, -1, 0, 0, "-5 FPS-DF", 1},
    {"", intMin, intMin, intMin, intMin, "-2147483648 FPS-DF", 1},
});

TEST(KSTimecodeMode, KeepsItsFieldsAndNamesItself) {
    for (const auto& row : modeRows) {
        const KSTimecodeMode mode(row.name, row.fps, row.dropFrames, row.dropInterval, row.keepInterval);
        EXPECT_EQ(textOf(mode.getName()), row.wantName);
        EXPECT_EQ(mode.getFps(), row.wantFps) << row.wantName;
        EXPECT_EQ(mode.isDropFrame(), row.dropFrames != 0) << row.wantName;
        int drop = 7, interval = 7, keep = 7;
        mode.getDropInfo(nullptr, nullptr, nullptr);
        mode.getDropInfo(&drop, nullptr, &keep);
        EXPECT_EQ(interval, 7);
        mode.getDropInfo(nullptr, &interval, nullptr);
        EXPECT_EQ(drop, row.dropFrames) << row.wantName;
        EXPECT_EQ(interval, row.dropInterval) << row.wantName;
        EXPECT_EQ(keep, row.keepInterval) << row.wantName;
    }
}

TEST(KSTimecodeMode, EqualityIsRateAndRule) {
    const KSTimecodeMode drop("a", 30, 2, 60, 600), plain("b", 30, 0, 0, 0);
    EXPECT_EQ(drop, KSTimecodeMode("other name", 30, 2, 60, 600));
    EXPECT_NE(drop, KSTimecodeMode("a", 60, 2, 60, 600));
    EXPECT_NE(drop, KSTimecodeMode("a", 30, 4, 60, 600));
    EXPECT_NE(drop, KSTimecodeMode("a", 30, 2, 61, 600));
    EXPECT_NE(drop, KSTimecodeMode("a", 30, 2, 60, 601));
    EXPECT_NE(drop, plain);
    EXPECT_NE(plain, drop);
    EXPECT_EQ(plain, KSTimecodeMode("b", 30, 0, 60, 600));  // intervals of nothing do not count
    EXPECT_NE(plain, KSTimecodeMode("b", 25, 0, 0, 0));
}

TEST(KSTimecodeMode, ConstantsAreBothNamedNonDrop) {
    EXPECT_EQ(textOf(KSTimecodeMode::k30FPS_DropFrame.getName()), "30 FPS ND");
    EXPECT_EQ(textOf(KSTimecodeMode::k30FPS_NonDropFrame.getName()), "30 FPS ND");
    EXPECT_EQ(KSTimecodeMode::k30FPS_DropFrame, *KSTimecodeMode::refTimecodeMode("30 FPS DF"));
    EXPECT_EQ(KSTimecodeMode::k30FPS_NonDropFrame, *KSTimecodeMode::refTimecodeMode("30 FPS ND"));
}

TEST(KSTimecodeModeRegistry, HoldsTheBuiltInModesAtLoad) {
    EXPECT_EQ(namesAtLoad, (std::vector<std::string>{"24 FPS", "25 FPS", "30 FPS DF", "30 FPS ND"}));
    const struct {
        const char* name;
        KSTimecodeMode mode;
    } rows[] = {{KSTimecodeMode::Nm24, {"", 24, 0, 0, 0}},
                {KSTimecodeMode::Nm25, {"", 25, 0, 0, 0}},
                {KSTimecodeMode::Nm30DF, {"", 30, 2, 60, 600}},
                {KSTimecodeMode::Nm30ND, {"", 30, 0, 0, 0}}};
    KSTimecodeMode::init();
    for (const auto& row : rows) {
        EXPECT_EQ(*KSTimecodeMode::refTimecodeMode(row.name), row.mode) << row.name;
        EXPECT_EQ(textOf(KSTimecodeMode::refTimecodeMode(row.name)->getName()), row.name);
    }
}

TEST(KSTimecodeModeRegistry, RedefiningReplacesAndMovesToTheEnd) {
    KSTimecodeMode::defTimecodeMode("Registry A", 10, 0, 0, 0);
    KSTimecodeMode::defTimecodeMode("Registry B", 11, 0, 0, 0);
    EXPECT_EQ(lastNames(2), (std::vector<std::string>{"Registry A", "Registry B"}));
    const auto count = registeredNames().size();

    KSTimecodeMode::defTimecodeMode("Registry A", 12, 0, 0, 0);
    EXPECT_EQ(lastNames(2), (std::vector<std::string>{"Registry B", "Registry A"}));
    EXPECT_EQ(KSTimecodeMode::refTimecodeMode("Registry A")->getFps(), 12);
    EXPECT_EQ(registeredNames().size(), count);

    // Names that only look alike, and the generated name, are names of their own.
    KSTimecodeMode::defTimecodeMode("registry a", 13, 0, 0, 0);
    KSTimecodeMode::defTimecodeMode("", 77, 2, 60, 600);
    EXPECT_EQ(lastNames(3), (std::vector<std::string>{"Registry A", "registry a", "77 FPS-DF"}));
    KSTimecodeMode::defTimecodeMode("", 77, 3, 60, 600);
    EXPECT_EQ(registeredNames().size(), count + 2);

    KSTimecodeMode::defTimecodeMode(KSTimecodeMode::Nm25, 50, 0, 0, 0);
    EXPECT_EQ(KSTimecodeMode::refTimecodeMode("25 FPS")->getFps(), 50);
    KSTimecodeMode::init();
    EXPECT_EQ(KSTimecodeMode::refTimecodeMode("25 FPS")->getFps(), 25);
    EXPECT_EQ(lastNames(4), namesAtLoad);
}

TEST(KSTimecodeModeRegistry, UnknownNamesGiveTheFirstMode) {
    const auto* first = KSTimecodeMode::getTimecodeModes().front();
    EXPECT_EQ(KSTimecodeMode::refTimecodeMode("no such mode"), first);
    EXPECT_EQ(KSTimecodeMode::refTimecodeMode(KSString()), first);
    EXPECT_EQ(KSTimecodeMode::refTimecodeMode(""), first);
    if (registeredNames() == namesAtLoad) {
        EXPECT_EQ(textOf(first->getName()), "24 FPS");
    }
}

}  // namespace
