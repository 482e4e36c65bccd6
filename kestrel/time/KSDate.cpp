#include <kestrel/foundation/KSPrint.h>
#include <kestrel/time/KSDate.h>
#include <kestrel/time/detail/Clock.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <iterator>
#include <limits>

namespace {

constexpr std::int32_t unset = -1;

std::int32_t toSeconds(std::int64_t seconds) {
    using Limits = std::numeric_limits<std::int32_t>;
    return seconds >= Limits::min() && seconds <= Limits::max() ? static_cast<std::int32_t>(seconds) : unset;
}

// Midnight UTC. The month counts from 0; months and days beyond their usual range count on.
std::int32_t midnight(int day, int month, int year) {
    using namespace std::chrono;
    const auto firstOfMonth = sys_days(std::chrono::year(year) / January / 1 + months(month));
    return toSeconds(sys_seconds(firstOfMonth + days(day - 1)).time_since_epoch().count());
}

std::chrono::year_month_day dateOf(std::int32_t seconds) {
    using namespace std::chrono;
    return floor<days>(sys_seconds(std::chrono::seconds(seconds)));
}

int yearOf(const std::chrono::year_month_day& date) { return static_cast<int>(date.year()); }
unsigned monthOf(const std::chrono::year_month_day& date) { return static_cast<unsigned>(date.month()); }
unsigned dayOf(const std::chrono::year_month_day& date) { return static_cast<unsigned>(date.day()); }

// The month that text means, from 0: a number, or a name as monNames spells it. 12 or negative: none.
int monthFrom(const char* text) {
    if (const int number = std::atoi(text); number != 0) return number - 1;
    const auto isText = [text](const char* name) { return std::strcmp(name, text) == 0; };
    const auto* found = std::ranges::find_if(KSDate::monNames, isText);
    return static_cast<int>(found - std::begin(KSDate::monNames));
}

bool setToNow(KSString* out, const char* format) {
    tzset();
    const auto now = static_cast<std::time_t>(kestrel::detail::readClock().seconds);
    std::tm local{};
    if (!out || !localtime_r(&now, &local)) return false;
    char text[1024];
    if (std::strftime(text, sizeof text, format, &local) == 0) return false;
    out->set(text);
    return true;
}

}  // namespace

KSDate::KSDate(int day, int month, int year, int hour, int minute, int second, int dst) {
    setTo(day, month, year, hour, minute, second, dst);
}

int KSDate::setTo(int day, int month, int year, int hour, int minute, int second, int dst) {
    std::tm local{};
    local.tm_mday = day;
    local.tm_mon = month;
    local.tm_year = std::max(year, std::numeric_limits<int>::min() + 1900) - 1900;
    local.tm_hour = hour;
    local.tm_min = minute;
    local.tm_sec = second;
    local.tm_isdst = dst;
    m_seconds = toSeconds(std::mktime(&local));
    return m_seconds;
}

std::uint32_t KSDate::getSaveVal() const noexcept {
    const auto date = dateOf(m_seconds);
    return dayOf(date) << 24 | monthOf(date) << 16 | (static_cast<unsigned>(yearOf(date) - 1900) & 0xFF) << 8;
}

int KSDate::setFromSaveVal(unsigned int value) noexcept {
    tzset();
    const auto byte = [value](int shift) { return static_cast<int>(value >> shift & 0xFF); };
    m_seconds = midnight(byte(24), byte(16) - 1, 1900 + byte(8));
    return m_seconds;
}

bool KSDate::saveString(KSString* out) const {
    if (!out) return false;
    const auto date = dateOf(m_seconds);
    char text[32];
    std::snprintf(text, sizeof text, "%02u-%s-%04d", dayOf(date), monNames[monthOf(date) - 1], yearOf(date));
    out->append(text);
    return true;
}

bool KSDate::loadString(const char* text) {
    tzset();
    if (!text) return false;
    int day = 0;
    int year = 0;
    char monthText[4] = "";
    int items = std::sscanf(text, "%02d-%3s-%04d", &day, monthText, &year);
    // A month of two digits leaves the dash in the third character: read two.
    if (items == 2) items = std::sscanf(text, "%02d-%2s-%04d", &day, monthText, &year);
    if (items != 3) {
        KSPrint("Couldn't parse '%s' into a date\n", text);
        return false;
    }
    const int month = monthFrom(monthText);
    if (month < 0 || month > 11) {
        KSPrint("Couldn't parse '%s' into a date - month was indeterminant\n", text);
        return false;
    }
    m_seconds = midnight(day, month, year);
    return true;
}

bool KSDate::getDate(KSString* out) { return setToNow(out, "%B %e, %Y"); }

bool KSDate::getDateAndTime(KSString* out, bool longDate, bool withSeconds) {
    if (longDate) return setToNow(out, withSeconds ? "%r %A %B %e, %Y" : "%I:%M %p %A %B %e, %Y");
    return setToNow(out, withSeconds ? "%r %d-%b-%Y" : "%I:%M %p %d-%b-%Y");
}

bool KSDate::getDateTimeForFile(KSString* out, bool withSeconds) {
    return setToNow(out, withSeconds ? "%m%d%H%M%Y.%S" : "%m%d%H%M%Y");
}
