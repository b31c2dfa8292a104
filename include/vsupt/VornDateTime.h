/// @class VornSupport::VornDateTime
/// A calendar value in local time: day, month (0 to 11), full year, hour,
/// minute and second, with conversions to and from struct tm, time_t and
/// three text forms, and wide text output through the locale's time_put
/// facet.
///
/// All calendar arithmetic and every validity check is the platform's
/// mktime: a date is valid if mktime gives its fields back unchanged. The
/// ...Impl operations report a failure by false and a text; a failed set
/// leaves the value as it was. Each object carries an instance id from a
/// process-wide counter that every successful set moves on.
///
/// A date belongs to one thread at a time; nothing here locks. Different
/// objects may be used on different threads.
#ifndef VSUPT_VORNDATETIME_H
#define VSUPT_VORNDATETIME_H

#include <vsupt/VsuptExport.h>

#include <atomic>
#include <cstdint>
#include <ctime>
#include <locale>
#include <string>

namespace VornSupport {

class VSUPT_API VornDateTime {
public:
    /// The field that modifyDate changes.
    enum FieldId_t : std::int32_t {
        FieldMonth = 0,
        FieldDay = 1,
        FieldYear = 2,
        FieldHour = 3,
        FieldMinute = 4,
        FieldSecond = 5
    };

    /// The local time now, with a fresh instance id.
    VornDateTime();
    /// Copies the fields and the instance id; the locale is the global one.
    VornDateTime(const VornDateTime& other);
    /// Copies the fields and the instance id; the locale stays.
    VornDateTime& operator=(const VornDateTime& other);
    /// Throws VornInvalidDateException for a tm that is no valid date.
    VornDateTime& operator=(const tm& value);
    virtual ~VornDateTime();

    /// The day of the month, from 1.
    int getDay() const { return m_day; }
    /// 0 for January.
    int getMonth() const { return m_month; }
    /// The full year.
    int getYear() const { return m_year; }
    /// The hour, 0 to 23.
    int getHour() const { return m_hour; }
    /// The minute, 0 to 59.
    int getMinute() const { return m_minute; }
    /// The second, 0 to 59.
    int getSecond() const { return m_second; }
    /// The instance id the last successful set gave this object.
    unsigned int getInstanceId() const { return m_instanceId; }

    /// mktime of the fields, with daylight saving time left to mktime.
    time_t getTime() const;
    /// A hash of the date and time fields.
    long hash() const;
    /// The day of the year, from 1.
    int day() const;
    /// 0 for Sunday.
    int getWeekday() const;
    /// Whether the year is a leap year.
    bool isLeapYear() const;

    /// The month's name in the locale.
    std::wstring monthName(const std::locale& loc) const;
    /// The weekday's name in the locale.
    std::wstring weekdayName(const std::locale& loc) const;
    /// The locale's time of day ("%X").
    std::wstring dateToString(const std::locale& loc) const;
    /// The locale's date ("%x").
    std::wstring timeToString(const std::locale& loc) const;
    /// The date and time in the locale.
    std::wstring toString(const std::locale& loc) const;
    /// The date and time in UTC, in the object's locale.
    std::wstring toGMTString() const;
    /// Formats value with the locale's time_put facet and a strftime-style format.
    static std::wstring constructTimeString(tm* value, const std::locale& loc, const wchar_t* format);

    /// Sets the value from a struct tm; false and a text when it is no valid date.
    bool operatorImpl(const tm& value, std::string& error);
    /// Whether value is a valid date, with a text when it is not; the value does not change.
    bool validateDateTime(const tm& value, std::string& error) const;
    /// The year counts from 1900 here; the month from 1. A failure's text
    /// starts with "VornInvalidDateException - ".
    bool setDateTimeImpl(unsigned int day, unsigned int month, unsigned int year, unsigned int hour,
                         unsigned int minute, unsigned int second, std::string& error);
    /// Sets the date and keeps the time of day; the same counting as setDateTimeImpl.
    bool setDateImpl(unsigned int day, unsigned int month, unsigned int year, std::string& error);
    /// Sets the value from a struct tm; false and a text when it is no valid date.
    bool setDateTimeFromTmImpl(const tm& value, std::string& error);
    /// Sets the value from one of the text forms that setDateTime reads.
    bool setDateTimeFromStrImpl(const std::string& text, std::string& error);
    /// Reads "Sun, 06 Nov 1994 08:49:37 GMT" (the zone is not applied: the
    /// time is taken as local), "31/12/2009[ 23:59:59]" (day first) or
    /// "Sun Nov  6 08:49:37 1994". Unreadable text gives false and a text; a
    /// readable text that is no valid date throws VornInvalidDateException.
    bool setDateTime(const std::string& text, std::string& error);
    /// Gives the object the next instance id of the process-wide counter.
    void adjustInstanceId();
    /// The index of an English month abbreviation, 0 when unknown.
    int getMonthForRFCName(std::string& name) const;

    /// Check whether a new year (full), month (from 1) or day would make a
    /// valid date with the other fields; the value does not change.
    bool setYearImpl(unsigned int year, std::string& error) const;
    /// See setYearImpl.
    bool setMonthImpl(unsigned int month, std::string& error) const;
    /// See setYearImpl.
    bool setDayImpl(unsigned int day, std::string& error) const;

    /// Adds amount to one field and normalises through mktime. An amount of
    /// 0 returns false with error untouched.
    bool modifyDate(FieldId_t field, int amount, std::string& error);

    /// The English month abbreviations, "Jan" to "Dec".
    static const char* abbrevMonthNames[12];

private:
    void store(const tm& value);

    std::int32_t m_day;
    std::int32_t m_month;
    std::int32_t m_year;
    std::int32_t m_hour;
    std::int32_t m_minute;
    std::int32_t m_second;
    std::locale m_locale;
    std::uint32_t m_instanceId;

    /// Atomic so that dates made on several threads at once (the logger's
    /// time stamps) do not race; ids are no more than a count.
    static std::atomic<std::uint32_t> m_objectCounter;
};

}  // namespace VornSupport

#endif
