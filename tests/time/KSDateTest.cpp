#include <kestrel/time/KSDate.h>

#include <gtest/gtest.h>

#include <stdlib.h>  // setenv
#include <time.h>    // tzset, timegm

#include <array>
#include <cstdlib>
#include <limits>
#include <memory>
#include <optional>
#include <random>
#include <string>

#include "FakeClock.h"

namespace {

constexpr int intMax = std::numeric_limits<int>::max();
constexpr int intMin = std::numeric_limits<int>::min();

/// Sets the time zone, and puts back what was there.
class ZoneForTest {
public:
    explicit ZoneForTest(const char* zone) {
        if (const char* old = std::getenv("TZ")) m_old = old;
        setenv("TZ", zone, 1);
        tzset();
    }
    ~ZoneForTest() {
        if (m_old) {
            setenv("TZ", m_old->c_str(), 1);
        } else {
            unsetenv("TZ");
        }
        tzset();
    }
    ZoneForTest(const ZoneForTest&) = delete;
    ZoneForTest& operator=(const ZoneForTest&) = delete;

private:
    std::optional<std::string> m_old;
};

// Both hemispheres, no daylight saving, half and quarter hours, half an hour of it, a skipped day, a change
// of standard time, the extremes of offset, and one that does not exist.
constexpr auto zones = std::to_array<const char*>(
    {"UTC", "Europe/London", "Europe/Berlin", "America/New_York", "America/St_Johns", "America/Sao_Paulo",
     "Australia/Sydney", "Australia/Lord_Howe", "Pacific/Auckland", "Pacific/Apia", "Pacific/Kiritimati",
     "Pacific/Pago_Pago", "Asia/Kathmandu", "Asia/Tokyo", "Africa/Monrovia", "Antarctica/Troll",
     "No/Such_Zone"});

constexpr std::int64_t january2024 = 1704067200, july2024 = 1719792000;

std::string textOf(const KSString& string) {
    const std::unique_ptr<char, decltype(&std::free)> text(string.createUTF8Str(), &std::free);
    return text ? text.get() : "";
}

std::string saved(const KSDate& date) {
    KSString text;
    EXPECT_TRUE(date.saveString(&text));
    return textOf(text);
}

// Loads text; the captured diagnostics are compared with want.
bool load(KSDate& date, const char* text, const std::string& want) {
    testing::internal::CaptureStdout();
    const bool isLoaded = date.loadString(text);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), want) << (text ? text : "null");
    return isLoaded;
}

struct SaveRow {
    std::uint32_t value;
    const char* text;
    std::int32_t seconds;
};
const auto saveRows = std::to_array<SaveRow>({
    {0x07036900, "07-Mar-2005", 1110153600},
    {0x01014600, "01-Jan-1970", 0},
    {0x1F0C4500, "31-Dec-1969", -86400},
    {0x1D026400, "29-Feb-2000", 951782400},
    {0x01074500, "01-Jul-1969", -15897600},
    {0x0E0C0100, "14-Dec-1901", -2147472000},  // the first midnight that 32 bits hold
    {0x13018A00, "19-Jan-2038", 2147472000},   // and the last
    {0x1F036D00, "31-Mar-2009", 1238457600},
    {0x19066B00, "25-Jun-2007", 1182729600},
    {0x1E0C6F00, "30-Dec-2011", 1325203200},  // a day that Apia never had
});

// tzset() puts what TZ says into ::timezone.
TEST(KSDate, SaveFormsReadTheZoneAgain) {
    const struct {
        const char* name;
        void (*use)(KSDate&);
    } rows[] = {{"save value", [](KSDate& date) { date.setFromSaveVal(0x07036900); }},
                {"save text", [](KSDate& date) { EXPECT_TRUE(date.loadString("07-Mar-2005")); }},
                {"null text", [](KSDate& date) { EXPECT_FALSE(date.loadString(nullptr)); }}};
    for (const auto& row : rows) {
        ZoneForTest inUtc("UTC0");
        EXPECT_EQ(::timezone, 0) << row.name;
        setenv("TZ", "XYZ5", 1);
        KSDate date;
        row.use(date);
        EXPECT_EQ(::timezone, 5 * 3600) << row.name;
    }
}

TEST(KSDate, SaveFormsAreMidnightUtcInEveryZoneAndSeason) {
    for (const char* zone : zones) {
        ZoneForTest inZone(zone);
        for (const auto now : {january2024, july2024}) {
            FakeClock clock(now);
            for (const auto& row : saveRows) {
                SCOPED_TRACE(std::string(zone) + ' ' + row.text);
                KSDate date;
                EXPECT_EQ(date.setFromSaveVal(row.value | 0xAB), row.seconds);  // the low byte is ignored
                EXPECT_EQ(date.getSeconds(), row.seconds);
                EXPECT_EQ(date.getSaveVal(), row.value);
                EXPECT_EQ(saved(date), row.text);
                KSDate loaded;
                EXPECT_TRUE(load(loaded, row.text, ""));
                EXPECT_EQ(loaded, date);
            }
        }
    }
}

TEST(KSDate, EveryDayOf32Bits) {
    for (std::int64_t seconds = -2147472000; seconds <= intMax; seconds += 86400) {
        const auto when = static_cast<time_t>(seconds);
        tm utc{};
        gmtime_r(&when, &utc);
        const auto value = static_cast<std::uint32_t>(utc.tm_mday << 24 | (utc.tm_mon + 1) << 16 |
                                                      (utc.tm_year & 0xFF) << 8);
        KSDate date;
        ASSERT_EQ(date.setFromSaveVal(value), seconds);
        ASSERT_EQ(date.getSaveVal(), value);
        ASSERT_TRUE(KSDate().loadString(saved(date).c_str()));
    }
}

TEST(KSDate, TimeOfDayIsLost) {
    ZoneForTest inZone("America/New_York");
    const KSDate evening(6, 2, 2005, 23, 59, 59, -1);  // 04:59:59 UTC on the 7th
    EXPECT_EQ(evening.getSeconds(), 1110171599);
    EXPECT_EQ(evening.getSaveVal(), 0x07036900u);
    EXPECT_EQ(saved(evening), "07-Mar-2005");
    EXPECT_EQ(KSDate().getSaveVal(), 0x1F0C4500u);  // -1 is a second before 1970
    EXPECT_EQ(saved(KSDate()), "31-Dec-1969");
    EXPECT_EQ(KSDate().getSeconds(), -1);
}

struct OddSaveRow {
    std::uint32_t value;
    std::int32_t seconds;
};
const auto oddSaveRows = std::to_array<OddSaveRow>({
    {0x00036900, 1109548800},  // day 0: the last of February
    {0x01006900, 1101859200},  // month 0: December of the year before
    {0x1D026900, 1109635200},  // 29 February 2005 is 1 March
    {0x01FF4600, 667785600},   // month 255 of 1970 is March 1991
    {0x00000000, -1},          // November 1899
    {0x0D0C0100, -1},          // a day too early
    {0x14018A00, -1},          // a day too late
    {0xFFFFFFFF, -1},
});

TEST(KSDate, SaveValuesBeyondTheCalendarCountOnAndBeyond32BitsUnset) {
    for (const auto& row : oddSaveRows) {
        KSDate date;
        date.setFromSaveVal(0x07036900);
        EXPECT_EQ(date.setFromSaveVal(row.value), row.seconds) << std::hex << row.value;
        EXPECT_EQ(date.getSeconds(), row.seconds) << std::hex << row.value;
    }
}

struct LoadRow {
    const char* text;
    const char* want;  // the save text of the date, null for unset
};
const auto loadRows = std::to_array<LoadRow>({
    {"07-Mar-2005", "07-Mar-2005"},
    {"07-03-2005", "07-Mar-2005"},
    {"7-Mar-2005", "07-Mar-2005"},
    {"  7- Mar-  2005", "07-Mar-2005"},  // blanks before each part
    {"07-Mar-2005 and more", "07-Mar-2005"},
    {"07-Mar-20051", "07-Mar-2005"},  // four characters of the year
    {"31-Feb-2005", "03-Mar-2005"},
    {"00-Mar-2005", "28-Feb-2005"},
    {"-1-Mar-2005", "27-Feb-2005"},
    {"99-Dec-1999", "08-Mar-2000"},
    {"07-+3-2005", "07-Mar-2005"},
    {"07-3x-2005", "07-Mar-2005"},
    {"07-3xy-2005", "07-Mar-2005"},
    {"01-Jan-1970", "01-Jan-1970"},
    {"13-Dec-1901", nullptr},
    {"20-Jan-2038", nullptr},
    {"01-Jan-0", nullptr},
    {"01-Jan--999", nullptr},
    {"01-Jan-9999", nullptr},
});

TEST(KSDate, LoadsWhatTheScanAccepts) {
    for (const auto& row : loadRows) {
        KSDate date;
        EXPECT_TRUE(load(date, row.text, "")) << row.text;
        if (row.want) {
            EXPECT_EQ(saved(date), row.want) << row.text;
        } else {
            EXPECT_EQ(date, KSDate()) << row.text;
        }
    }
}

TEST(KSDate, BadTextsAreReportedAndLeaveTheValue) {
    const struct {
        const char* text;
        bool isMonth;
    } rows[] = {{"", false},
                {" ", false},
                {"date", false},
                {"07/Mar/2005", false},
                {"07-Mar", false},
                {"07-Mar-", false},
                {"07-Mar-x", false},
                {"07-3-2005", false},  // the second scan takes the dash too
                {"07-March-2005", false},
                {"007-Mar-2005", false},
                {"99999999999999999999-Mar-2005", false},
                {"%s%n-%s-%n", false},
                {"07-mar-2005", true},
                {"07-MAR-2005", true},
                {"07-13-2005", true},
                {"07-00-2005", true},
                {"07--1-2005", true},
                {"07-xyz-2005", true},
                {"07-M\xE9r-2005", true}};
    for (const auto& row : rows) {
        KSDate date;
        date.setFromSaveVal(0x07036900);
        const std::string want = "Couldn't parse '" + std::string(row.text) + "' into a date" +
                                 (row.isMonth ? " - month was indeterminant\n" : "\n");
        EXPECT_FALSE(load(date, row.text, want)) << row.text;
        EXPECT_EQ(date.getSaveVal(), 0x07036900u) << row.text;
    }
    KSDate date;
    EXPECT_FALSE(load(date, nullptr, ""));
    const std::string longText(100000, '7');
    EXPECT_FALSE(load(date, longText.c_str(), "Couldn't parse '" + longText + "' into a date\n"));
}

TEST(KSDate, SaveStringAppends) {
    KSDate date;
    date.setFromSaveVal(0x07036900);
    KSString text("on ");
    EXPECT_TRUE(date.saveString(&text));
    EXPECT_TRUE(date.saveString(&text));
    EXPECT_EQ(textOf(text), "on 07-Mar-200507-Mar-2005");
    EXPECT_FALSE(date.saveString(nullptr));
}

struct LocalRow {
    const char* zone;
    int day, month, year, hour, minute, dst;
    std::int32_t seconds;
};
const auto localRows = std::to_array<LocalRow>({
    {"UTC", 7, 2, 2005, 0, 0, 0, 1110153600},
    {"Europe/Berlin", 7, 2, 2005, 0, 0, -1, 1110150000},
    {"Europe/Berlin", 7, 6, 2005, 0, 0, -1, 1120687200},     // two hours ahead in summer
    {"Europe/Berlin", 7, 6, 2005, 0, 0, 0, 1120690800},      // one, if the caller says so
    {"Europe/Berlin", 27, 2, 2005, 1, 59, -1, 1111885140},   // the last minute before the change
    {"Europe/Berlin", 27, 2, 2005, 3, 0, -1, 1111885200},    // and the first after it
    {"Australia/Sydney", 7, 0, 2005, 0, 0, -1, 1105016400},  // summer is in January
    {"Australia/Sydney", 7, 6, 2005, 0, 0, -1, 1120658400},
    {"Australia/Lord_Howe", 7, 0, 2005, 0, 0, -1, 1105016400},  // half an hour of it
    {"Asia/Kathmandu", 1, 0, 1986, 12, 15, -1, 504945000},
    {"Europe/London", 1, 0, 1970, 1, 0, -1, 0},           // on summer time that winter
    {"Africa/Monrovia", 1, 0, 1971, 0, 0, -1, 31538670},  // 44 minutes and 30 seconds behind
    {"America/New_York", 31, 11, 1969, 18, 59, -1, -60},
    {"America/New_York", 32, 11, 2004, 0, 0, -1, 1104555600},  // counts on to the 1st of January
    {"No/Such_Zone", 7, 2, 2005, 0, 0, 0, 1110153600},         // is UTC
});

TEST(KSDate, TakesLocalTime) {
    for (const auto& row : localRows) {
        ZoneForTest inZone(row.zone);
        KSDate date;
        EXPECT_EQ(date.setTo(row.day, row.month, row.year, row.hour, row.minute, 0, row.dst), row.seconds)
            << row.zone << ' ' << row.year << '-' << row.month + 1;
        EXPECT_EQ(date, KSDate(row.day, row.month, row.year, row.hour, row.minute, 0, row.dst));
    }
}

TEST(KSDate, LocalTimesBeyond32BitsAreUnset) {
    ZoneForTest inZone("UTC");
    EXPECT_EQ(KSDate(19, 0, 2038, 3, 14, 7, 0).getSeconds(), intMax);
    EXPECT_EQ(KSDate(19, 0, 2038, 3, 14, 8, 0).getSeconds(), -1);
    EXPECT_EQ(KSDate(13, 11, 1901, 20, 45, 52, 0).getSeconds(), intMin);
    EXPECT_EQ(KSDate(13, 11, 1901, 20, 45, 51, 0).getSeconds(), -1);
    for (const int extreme : {intMin, intMin + 1899, intMax})
        EXPECT_EQ(KSDate(extreme, extreme, extreme, extreme, extreme, extreme, -1).getSeconds(), -1);
}

TEST(KSDate, FormatsTheLocalTimeOfNow) {
    FakeClock clock(1110251106);  // Tuesday, 8 March 2005, 03:05:06 UTC
    const struct {
        const char *zone, *date, *shortTime, *shortSeconds, *longTime, *longSeconds, *file, *fileSeconds;
    } rows[] = {
        {"UTC", "March  8, 2005", "03:05 AM 08-Mar-2005", "03:05:06 AM 08-Mar-2005",
         "03:05 AM Tuesday March  8, 2005", "03:05:06 AM Tuesday March  8, 2005", "030803052005",
         "030803052005.06"},
        {"America/New_York", "March  7, 2005", "10:05 PM 07-Mar-2005", "10:05:06 PM 07-Mar-2005",
         "10:05 PM Monday March  7, 2005", "10:05:06 PM Monday March  7, 2005", "030722052005",
         "030722052005.06"},
        {"Asia/Kathmandu", "March  8, 2005", "08:50 AM 08-Mar-2005", "08:50:06 AM 08-Mar-2005",
         "08:50 AM Tuesday March  8, 2005", "08:50:06 AM Tuesday March  8, 2005", "030808502005",
         "030808502005.06"},
    };
    for (const auto& row : rows) {
        ZoneForTest inZone(row.zone);
        const auto get = [](auto function, auto... flags) {
            KSString text("what was there");
            EXPECT_TRUE(function(&text, flags...));
            return textOf(text);
        };
        EXPECT_EQ(get(KSDate::getDate), row.date);
        EXPECT_EQ(get(KSDate::getDateAndTime, false, false), row.shortTime);
        EXPECT_EQ(get(KSDate::getDateAndTime, false, true), row.shortSeconds);
        EXPECT_EQ(get(KSDate::getDateAndTime, true, false), row.longTime);
        EXPECT_EQ(get(KSDate::getDateAndTime, true, true), row.longSeconds);
        EXPECT_EQ(get(KSDate::getDateTimeForFile, false), row.file);
        EXPECT_EQ(get(KSDate::getDateTimeForFile, true), row.fileSeconds);
    }
}

TEST(KSDate, NoTextLeavesOutAsItWas) {
    FakeClock clock(std::numeric_limits<std::int64_t>::max());  // a year that no calendar holds
    KSString text("kept");
    EXPECT_FALSE(KSDate::getDate(&text));
    EXPECT_FALSE(KSDate::getDateAndTime(&text, true, true));
    EXPECT_FALSE(KSDate::getDateTimeForFile(&text, true));
    EXPECT_EQ(textOf(text), "kept");
    clock.set(0);
    EXPECT_FALSE(KSDate::getDate(nullptr));
}

}  // namespace
