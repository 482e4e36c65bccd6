#include <kestrel/time/KSTimecode.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr int intMax = std::numeric_limits<int>::max();
constexpr int intMin = std::numeric_limits<int>::min();

const KSTimecodeMode fps24("", 24, 0, 0, 0);
const KSTimecodeMode fps25("", 25, 0, 0, 0);
const KSTimecodeMode fps30Drop("", 30, 2, 60, 600);
const KSTimecodeMode fps30("", 30, 0, 0, 0);
const KSTimecodeMode fps1("", 1, 0, 0, 0);
const KSTimecodeMode fps1Drop("", 1, 103, 128, 1266646784);
const KSTimecodeMode fps1000("", 1000, 0, 0, 0);
const KSTimecodeMode fpsMax("", intMax, 0, 0, 0);

// The text through the buffer, after a check that the string form agrees.
std::string format(int frame, const KSTimecodeMode& mode) {
    char text[KSTimecode::maxTextSize];
    const std::size_t length = KSTimecode::getTimecode(frame, mode, text, sizeof text);
    KSString string;
    KSTimecode::getTimecode(frame, mode, string);
    const std::unique_ptr<char, decltype(&std::free)> chars(string.createCStr(), &std::free);
    EXPECT_STREQ(chars.get(), text);
    EXPECT_EQ(string.size(), length);
    EXPECT_EQ(std::char_traits<char>::length(text), length);
    return text;
}

int parse(std::string_view text, const KSTimecodeMode& mode) {
    const int frame = KSTimecode::getTimeIndex(text.data(), text.size(), mode);
    EXPECT_EQ(KSTimecode::getTimeIndex(KSString(std::string(text).c_str()), mode), frame) << text;
    return frame;
}

struct FormatRow {
    const char* name;
    int frame;
    const KSTimecodeMode& mode;
    const char* text;
};
const auto formatRows = std::to_array<FormatRow>({
    {"zero has no sign", 0, fps24, "00:00:00:00"},
    {"last before the first drop", 1799, fps30Drop, "00:00:59;29"},
    {"first drop", 1800, fps30Drop, "00:01:00;02"},
    {"tenth minute keeps both", 17982, fps30Drop, "00:10:00;00"},
    {"last of the day", 2589407, fps30Drop, "23:59:59;29"},
    {"hours do not wrap", 2589408, fps30Drop, "24:00:00;00"},
    {"drop mode before zero", -1800, fps30Drop, "-00:01:00;02"},
    {"non-drop before zero", -31, fps30, "-00:00:01:01"},
    {"more than 99 hours", 24 * 3600 * 100, fps24, "100:00:00:00"},
    {"more than 99 frames a second", 1199, fps1000, "00:00:01:199"},
    {"largest frame", intMax, fps1, "596523:14:07:00"},
    {"smallest frame", intMin, fps1, "-596523:14:08:00"},
    {"largest rate", intMax, fpsMax, "00:00:01:00"},
    {"just below the largest rate", intMax - 1, fpsMax, "00:00:00:2147483646"},
    {"more seconds than 32 bits hold", 846761871, fps1Drop, "1204282:58:56;00"},
    {"smallest frame, drop", intMin, fps30Drop, "-19904:00:42;20"},
});

TEST(KSTimecode, FormatsAndReadsBack) {
    for (const auto& row : formatRows) {
        EXPECT_EQ(format(row.frame, row.mode), row.text) << row.name;
        EXPECT_EQ(parse(row.text, row.mode), row.frame) << row.name;
    }
}

struct ParseRow {
    const char* name;
    std::string_view text;
    const KSTimecodeMode& mode;
    int frame;
};
const auto parseRows = std::to_array<ParseRow>({
    {"two fields", "1:0", fps25, 25},
    {"three fields", "1:0:0", fps25, 1500},
    {"packed pairs", "130", fps25, 55},
    {"packed pairs, all four", "01020304", fps25, 4 + 25 * (3 + 60 * (2 + 60))},
    {"packed pairs stop after four", "501020304", fps25, 4 + 25 * (3 + 60 * (2 + 60))},
    {"packed, negative", "-130", fps25, -55},
    {"packed beyond 32 bits is the largest number", "99999999999", fps25,
     47 + 25 * (36 + 60 * (48 + 60 * 47))},
    {"negative", "-00:00:01:00", fps24, -24},
    {"every separator", "1;2.3,4", fps25, 4 + 25 * (3 + 60 * (2 + 60))},
    {"the other separators", "1-2/3", fps25, 3 + 25 * (2 + 60)},
    {"an empty field is 0", "1::5", fps25, 1505},
    {"a separator at the end adds a field", "5:", fps25, 125},
    {"a separator at the start too", ":5", fps25, 5},
    {"only separators", "::::::", fps25, 0},
    {"the second minus is a separator", "--5", fps25, -5},
    {"a minus alone", "-", fps25, 0},
    {"a minus behind a blank is a separator", " -5", fps25, 5},
    {"fields beyond four are ignored", "0:0:1:2:99:98", fps25, 27},
    {"nothing", "", fps25, 0},
    {"words", "frame", fps25, 0},
    {"text behind a number", "1x9:2y", fps25, 27},
    {"blanks and plus before a number", " \t\n\v\f\r+1: +2", fps25, 27},
    {"a plus needs its digit", "+ 1:2", fps25, 2},
    {"a second plus", "++1:2", fps25, 2},
    {"fields may be above their range", "99:99", fps25, 2574},
    {"beyond 32 bits", "2147483647:0:0:0", fps25, intMax},
    {"far beyond, negative", "-99999999999999999999:99999999999:99999999999:99999999999", fpsMax, intMin},
    {"drop frame", "00:01:00;02", fps30Drop, 1800},
    {"a skipped number", "00:01:00;00", fps30Drop, 1800},
    {"the other skipped number goes back", "00:01:00;01", fps30Drop, 1799},
    {"separators do not choose the mode", "00:01:00:02", fps30Drop, 1800},
    {"first frame, drop", "00:00:00;00", fps30Drop, 0},
    {"text up to a NUL", std::string_view("1:2\0:3", 6), fps25, 27},
    {"characters beyond ASCII", "1\xC9:2\x8A", fps25, 27},
});

TEST(KSTimecode, ReadsAnyText) {
    for (const auto& row : parseRows) EXPECT_EQ(parse(row.text, row.mode), row.frame) << row.name;
    EXPECT_EQ(KSTimecode::getTimeIndex(KSString(), fps25), 0);
    EXPECT_EQ(KSTimecode::getTimeIndex(nullptr, 5, fps25), 0);
    // 16-bit characters whose low bytes are digits and separators are neither.
    const unsigned short wide[] = {'1', 0x0132, ':', '2', 0x013A, '3', 0xD800, 0};
    EXPECT_EQ(KSTimecode::getTimeIndex(KSString(wide), fps25), 27);
}

TEST(KSTimecode, ReadsLongTexts) {
    EXPECT_EQ(parse(std::string(1000000, '9'), fps25), parse("2147483647", fps25));
    EXPECT_EQ(parse(std::string(1000000, '0') + "7:1", fps25), 176);
    EXPECT_EQ(parse(std::string(1000000, ':') + "7", fps25), 0);
    EXPECT_EQ(parse(std::string(1000000, ' ') + "7", fps25), 7);
}

TEST(KSTimecode, CutsTheTextToTheBuffer) {
    const std::string text = "-00:01:00;02";
    for (std::size_t size = 0; size <= KSTimecode::maxTextSize; ++size) {
        std::string buffer(KSTimecode::maxTextSize, '#');
        EXPECT_EQ(KSTimecode::getTimecode(-1800, fps30Drop, buffer.data(), size), text.size());
        if (size > 0) {
            EXPECT_EQ(std::string(buffer.c_str()), text.substr(0, size - 1));
        }
        EXPECT_EQ(buffer.substr(size), std::string(buffer.size() - size, '#')) << size;
    }
}

TEST(KSTimecode, CountsDroppedNumbers) {
    const struct {
        int frame, dropped;
    } rows[] = {{0, 0},      {1, 0},      {1799, 0},   {1800, 2}, {3597, 2},   {3598, 4},   {17981, 18},
                {17982, 18}, {19781, 18}, {19782, 20}, {-1, 0},   {-1797, -2}, {-1796, -2}, {-1795, 0}};
    for (const auto& row : rows)
        EXPECT_EQ(KSTimecode::getDroppedFrames(row.frame, fps30Drop), row.dropped) << row.frame;
    EXPECT_EQ(KSTimecode::getDroppedFrames(1800, fps30), 0);
    EXPECT_EQ(KSTimecode::getDroppedFrames(1800, {"", 30, 2, 0, 0}), 0);
}

// Counts frame by frame and skips numbers where the rule says so: no arithmetic in common with the library.
void checkEveryFrameOfADay(const KSTimecodeMode& mode) {
    int drop, interval, keep;
    mode.getDropInfo(&drop, &interval, &keep);
    const int fps = mode.getFps();
    const auto isSkipped = [&](int number) {
        if (drop == 0) return false;
        const int point = number / (fps * interval);
        return number % (fps * interval) < drop && point % (keep / interval) != 0;
    };
    char want[16] = "";
    char got[KSTimecode::maxTextSize + 1] = "-";
    for (int frame = 0, number = 0, second = -1; number < 86400 * fps; ++frame, ++number) {
        while (isSkipped(number)) ++number;
        if (number / fps != second) {
            second = number / fps;
            std::snprintf(want, sizeof want, "%02d:%02d:%02d%c--", second / 3600 % 100, second / 60 % 60,
                          second % 60, drop ? ';' : ':');
        }
        want[9] = static_cast<char>('0' + number % fps / 10);
        want[10] = static_cast<char>('0' + number % fps % 10);
        const std::size_t length = KSTimecode::getTimecode(frame, mode, got + 1, sizeof got - 1);
        const bool isRight = std::strcmp(got + 1, want) == 0 &&
                             KSTimecode::getTimeIndex(got + 1, length, mode) == frame &&
                             KSTimecode::getTimeIndex(got, length + 1, mode) == -frame &&
                             KSTimecode::getDroppedFrames(frame, mode) == number - frame;
        ASSERT_TRUE(isRight) << "frame " << frame << ", number " << number << ": " << got + 1;
    }
}

TEST(KSTimecode, EveryFrameOfADay) {
    const struct {
        const char* name;
        int fps, drop, interval, keep;
    } rows[] = {{"24", 24, 0, 0, 0},
                {"25", 25, 0, 0, 0},
                {"30", 30, 0, 0, 0},
                {"30 drop", 30, 2, 60, 600},
                {"60 drop", 60, 4, 60, 600},
                {"24 drop, every 10 s but not every 30", 24, 1, 10, 30},
                {"keep is no multiple of drop", 10, 3, 60, 150},
                {"keep is drop: nothing is skipped", 10, 3, 60, 60},
                {"more than a second is skipped", 10, 25, 7, 70},
                {"all but one number is skipped", 2, 3, 2, 10}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        checkEveryFrameOfADay(KSTimecodeMode("", row.fps, row.drop, row.interval, row.keep));
    }
}

TEST(KSTimecode, RulesThatDivideByNothingDropNothing) {
    const struct {
        const char* name;
        int drop, interval, keep;
    } rows[] = {{"interval 0", 2, 0, 600},
                {"both intervals 0", 2, 0, 0},
                {"keep below drop", 2, 60, 59},
                {"keep 0", 2, 60, 0},
                {"keep below drop, both negative", 2, -60, -600},
                {"no drop interval fits the keep interval", 2, -600, -60},
                {"as many numbers as the interval has", 1800, 60, 600},
                {"a keep interval of no frames", 2000, 60, 600}};
    for (const auto& row : rows) {
        const KSTimecodeMode mode("", 30, row.drop, row.interval, row.keep);
        EXPECT_TRUE(mode.isDropFrame()) << row.name;
        EXPECT_EQ(format(18000, mode), "00:10:00:00") << row.name;
        EXPECT_EQ(parse("00:10:00;00", mode), 18000) << row.name;
        EXPECT_EQ(KSTimecode::getDroppedFrames(18000, mode), 0) << row.name;
    }
}

TEST(KSTimecode, OddRulesFollowTheFormulas) {
    const struct {
        const char* name;
        int drop, interval, keep, frame, dropped;
        const char* text;
        int back;
    } rows[] = {
        // m = 1802, P = 18018: two numbers come a second time at each drop point.
        {"negative frames, before a point", -2, 60, 600, 1799, 0, "00:00:59;29", 1799},
        {"negative frames, at a point", -2, 60, 600, 1800, -2, "00:00:59;28", 1798},
        {"negative frames, at a keep point", -2, 60, 600, 18018, -18, "00:10:00;00", 18018},
        // m = 3800, P = 36000; a sign within a text is a separator when it is read.
        {"the sum is negative", -2000, 60, 600, 1800, -2000, "00:00:-6;-20", 6},
        // n = -10, m = -1802, P = 18022.
        {"negative interval", 2, -60, 600, 1804, -2, "00:01:00;02", 1804},
        {"negative interval, at a keep point", 2, -60, 600, 18022, -22, "00:10:00;00", 18018},
        // n = 5, m = -200, P = 1000: all frames lie before the first drop point.
        {"more than the interval has", 2000, 60, 300, 999, 0, "00:00:33;09", 999},
        {"more than the interval has, at a keep point", 2000, 60, 300, 1000, 8000, "00:05:00;00", 1000},
        // m = 800, P = 9000.
        {"skips more than it leaves", 1000, 60, 600, 0, 0, "00:00:00;00", 0},
        {"skips more than it leaves, later", 1000, 60, 600, 1800, 1000, "00:01:33;10", 1800},
    };
    for (const auto& row : rows) {
        const KSTimecodeMode mode("", 30, row.drop, row.interval, row.keep);
        EXPECT_EQ(KSTimecode::getDroppedFrames(row.frame, mode), row.dropped) << row.name;
        EXPECT_EQ(format(row.frame, mode), row.text) << row.name;
        EXPECT_EQ(parse(row.text, mode), row.back) << row.name;
    }
}

// What the sanitizers are for: no rule overflows, divides by zero or writes past the largest text.
TEST(KSTimecode, AnyRuleAndAnyFrameFit) {
    const auto values =
        std::to_array({intMin, intMin + 1, -600, -1, 0, 1, 2, 3, 60, 600, 46341, intMax - 1, intMax});
    std::size_t longest = 0;
    for (const int fps : values)
        for (const int drop : values)
            for (const int interval : values)
                for (const int keep : values) {
                    const KSTimecodeMode mode("x", fps, drop, interval, keep);
                    for (const int frame : values) {
                        char text[KSTimecode::maxTextSize];
                        const std::size_t length = KSTimecode::getTimecode(frame, mode, text, sizeof text);
                        longest = std::max(longest, length);
                        ASSERT_LT(length, sizeof text);
                        ASSERT_EQ(std::string_view(text).find_first_not_of("-0123456789:;"),
                                  std::string_view::npos)
                            << text;
                        const int back = KSTimecode::getTimeIndex(text, length, mode);
                        const bool isOdd = drop < 0 || interval < 0 || drop >= 1LL * fps * interval;
                        ASSERT_TRUE(isOdd || (frame == 0 ? back == 0 : (back < 0) == (frame < 0)))
                            << text << ' ' << frame;
                        KSTimecode::getDroppedFrames(frame, mode);
                    }
                    const std::string_view largest = "-2147483647:2147483647:2147483647:2147483647";
                    KSTimecode::getTimeIndex(largest.data(), largest.size(), mode);
                }
    EXPECT_GE(longest, 20u);  // the table does reach the large texts
}

// The rules of reading, written again over std::string.
int parseNaively(std::string text, int fps) {
    text = text.c_str();
    const bool isNegative = text.starts_with('-');
    if (isNegative) text.erase(0, 1);
    std::vector<long long> fields;
    for (std::size_t at = 0; fields.size() < 4;) {
        const std::size_t end = text.find_first_of(":;.,-/", at);
        fields.push_back(std::min(std::atoll(text.substr(at, end - at).c_str()), 2147483647LL));
        if (end == std::string::npos) break;
        at = end + 1;
    }
    if (fields.size() == 1) {
        const long long number = fields[0];
        fields = {number / 1000000 % 100, number / 10000 % 100, number / 100 % 100, number % 100};
    }
    const long long weights[] = {1, fps, 60LL * fps, 3600LL * fps};  // from the right
    long long value = 0;
    for (std::size_t i = 0; i < fields.size(); ++i) value += fields[fields.size() - 1 - i] * weights[i];
    return static_cast<int>(std::clamp<long long>(isNegative ? -value : value, intMin, intMax));
}

TEST(KSTimecode, RandomTextsReadAsTheNaiveRulesDo) {
    std::mt19937 random(1967);
    constexpr std::string_view alphabet("0123456789012345678901234567:;.,-/:;  +\tx\xC9\0", 44);
    for (int i = 0; i < 200000; ++i) {
        std::string text(random() % 16, ' ');
        for (char& c : text) c = alphabet[random() % alphabet.size()];
        const int fps = static_cast<int>(1 + random() % 120);
        ASSERT_EQ(KSTimecode::getTimeIndex(text.data(), text.size(), KSTimecodeMode("x", fps, 0, 0, 0)),
                  parseNaively(text, fps))
            << testing::PrintToString(text);
    }
}

}  // namespace
