// kestrel/time/KSDate.h - a calendar date with its compact save forms.
#pragma once

#include <kestrel/foundation/KSString.h>
#include <kestrel/platform/Export.h>

#include <cstdint>

/// A calendar date, held as a count of seconds.
///
/// Units      seconds since the epoch (1 January 1970, 00:00 UTC) in 32 bits: 13 December 1901 to 19
///            January 2038. -1 means unset; a date that 32 bits cannot hold becomes unset too.
/// Zones      the constructor and setTo() take local time. Both save forms hold the date in UTC and lose the
///            time of day: what is set from them is midnight UTC of that date, in every zone and season.
///            The class functions speak of now, in local time. Zone settings (TZ) are read at each call.
/// Threads    a plain value; the functions are as safe as the system's time zone (nobody calls setenv).
/// Errors     bad save texts are reported through KSPrint and give false.
/// Example
///     KSDate date;
///     if (date.loadString("07-Mar-2005")) save(date.getSaveVal());  // 0x07036900
///     KSString text;
///     date.saveString(&text);  // "07-Mar-2005"
class KESTREL_API KSDate {
public:
    static constexpr const char* monNames[12] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                 "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

    /// Unset.
    constexpr KSDate() noexcept = default;
    /// As setTo().
    KSDate(int day, int month, int year, int hour, int minute, int second, int dst);

    /// Sets a local time. Fields beyond their usual range count on (day 32 is the 1st or so).
    /// @param day    of the month, from 1
    /// @param month  from 0: January is 0
    /// @param year   in full: 2005
    /// @param dst    1 if daylight saving is in effect, 0 if not, negative to let the system decide
    /// @return the new value
    int setTo(int day, int month, int year, int hour, int minute, int second, int dst);

    int getSeconds() const noexcept { return m_seconds; }

    /// day * 2^24 + month * 2^16 + (year - 1900) * 2^8, with the month from 1, in UTC. An unset date gives
    /// the last day of 1969, the one that -1 lies in.
    std::uint32_t getSaveVal() const noexcept;
    /// Sets midnight UTC of the date that value holds; its lowest byte is ignored. Returns the new value.
    int setFromSaveVal(unsigned int value) noexcept;

    /// Appends the save text, such as 07-Mar-2005; out keeps what it has. Returns true; false for null.
    bool saveString(KSString* out) const;
    /// Sets midnight UTC of the date in a save text: day, month and year with "-" between.
    ///
    /// The month is a name of monNames, as it is spelt there, or a number of two digits. Blanks before a
    /// part and whatever follows four characters of the year are ignored; a day past the month's last runs
    /// into the next month.
    /// @return false, with a line through KSPrint (none for null) and the value as it was, for other texts
    bool loadString(const char* text);

    // The present local date and time as text, with names in the language of the process locale. Each sets
    // out and returns true; false, with out as it was, when the system gives no text or out is null.
    /// "March 7, 2005", the day padded with a blank to two.
    static bool getDate(KSString* out);
    /// "09:05 PM 07-Mar-2005" or "09:05:30 PM 07-Mar-2005"; with longDate "09:05 PM Monday March  7, 2005".
    static bool getDateAndTime(KSString* out, bool longDate, bool withSeconds);
    /// Month, day, hour, minute, year, for the names of files: "030721052005" or "030721052005.30".
    static bool getDateTimeForFile(KSString* out, bool withSeconds);

    constexpr bool operator==(const KSDate&) const noexcept = default;

private:
    std::int32_t m_seconds = -1;
};
