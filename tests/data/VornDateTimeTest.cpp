#include <vsupt/VornDateTime.h>
#include <vsupt/VornInvalidDateException.h>
#include <vsupt/VornLocaleFactory.h>

#include <gtest/gtest.h>

#include "support/ThrownText.h"

#include <climits>
#include <cstdlib>
#include <ctime>
#include <string>

using namespace VornSupport;

namespace {

const char kUtc[] = "UTC0";
const char kCentralEurope[] = "CET-1CEST,M3.5.0,M10.5.0/3";
const char kInvalid[] = "Input does not compute to a valid DateTime object";

void useTimeZone(const char* zone)
{
    setenv("TZ", zone, 1);
    tzset();
}

// "D.M.YYYY h:m:s" with the month counted from 1.
std::string fieldsOf(const VornDateTime& date)
{
    return std::to_string(date.getDay()) + "." + std::to_string(date.getMonth() + 1) + "." +
           std::to_string(date.getYear()) + " " + std::to_string(date.getHour()) + ":" +
           std::to_string(date.getMinute()) + ":" + std::to_string(date.getSecond());
}

VornDateTime dateOf(unsigned int day, unsigned int month, unsigned int year, unsigned int hour = 0,
                    unsigned int minute = 0, unsigned int second = 0)
{
    VornDateTime date;
    std::string error;
    EXPECT_TRUE(date.setDateTimeImpl(day, month, year - 1900, hour, minute, second, error)) << error;
    return date;
}

class VornDateTimeTest : public ::testing::Test {
protected:
    void SetUp() override { useTimeZone(kCentralEurope); }
    void TearDown() override { useTimeZone(kUtc); }
};

}  // namespace

// An unknown month name reads as January, and words longer than a month
// name are read whole. Text that cannot be read changes nothing.
TEST_F(VornDateTimeTest, ReadsItsThreeTextFormsAsLocalTimeOrNamesTheFormItCannotRead)
{
    const std::pair<const char*, const char*> rows[] = {
        {"Sun, 06 Nov 1994 08:49:37 GMT", "6.11.1994 8:49:37"},
        {"31/12/2009", "31.12.2009 0:0:0"},
        {"1/2/2010 3:04", "1.2.2010 3:4:0"},
        {"Sun Nov  6 08:49:37 1994", "6.11.1994 8:49:37"},
        {"Sun nov  6 08:49:37 1994", "6.1.1994 8:49:37"},
        {"Wednesdayxx, 6 Nov 94 1:2:3 Z", "6.11.94 1:2:3"},
        {"Wednesdayx Nove 6 1:2:3 9", "6.1.9 1:2:3"},
        {"Sun, 06 Nov 1994 08:49:37 GMT+", "Incorrect RFC1123 DateTime format"},
        {"01/02/2003 04:05:06 +", "Incorrect RFC1123 DateTime format"},
        {"01/02", "Incorrect DateTime format"},
        {"", "Incorrect DateTime format"},
    };
    VornDateTime date;
    for (const auto& row : rows) {
        const std::string before = fieldsOf(date);
        std::string error;
        if (date.setDateTime(row.first, error)) {
            EXPECT_EQ(fieldsOf(date), row.second) << row.first;
        } else {
            EXPECT_EQ(error, row.second) << row.first;
            EXPECT_EQ(fieldsOf(date), before) << row.first;
        }
    }
}

TEST_F(VornDateTimeTest, CalendarQuestionsAndTextOutputsWhereTimeAndDateCrossAndGmtIsUniversalTime)
{
    const VornDateTime date = dateOf(6, 11, 1994, 8, 49, 37);
    EXPECT_EQ(date.day(), 310);
    EXPECT_EQ(date.getWeekday(), 0);
    EXPECT_EQ(date.getTime(), 784108177);
    EXPECT_TRUE(dateOf(31, 12, 2000).isLeapYear());
    EXPECT_FALSE(dateOf(1, 1, 1900).isLeapYear());
    const std::locale classic = std::locale::classic();
    EXPECT_EQ(date.monthName(classic), L"November");
    EXPECT_EQ(date.weekdayName(classic), L"Sunday");
    EXPECT_EQ(date.dateToString(classic), L"08:49:37");
    EXPECT_EQ(date.timeToString(classic), L"11/06/94");
    EXPECT_EQ(date.toString(classic), L"Sun Nov  6 08:49:37 1994");
    const VornDateTime universal = dateOf(6, 11, 1994, 7, 49, 37);
    EXPECT_EQ(date.toGMTString(), universal.toString(VornLocaleFactory::getDefaultLocale(true)));
}

// Daylight saving time given as 0 in summer does not survive mktime.
TEST_F(VornDateTimeTest, InvalidDatesAndFieldsAreRefusedAndKeepTheValue)
{
    VornDateTime date = dateOf(15, 1, 2009, 12);
    const std::string thrown = std::string("VornInvalidDateException - ") + kInvalid;
    std::string error;
    EXPECT_FALSE(date.setDateTimeImpl(15, 7, 109, 12, 0, 0, error));
    EXPECT_EQ(error, thrown);
    tm february30{};
    february30.tm_mday = 30;
    february30.tm_mon = 1;
    february30.tm_year = 109;
    EXPECT_FALSE(date.setDateTimeFromTmImpl(february30, error));
    EXPECT_EQ(error, thrown);
    EXPECT_EQ(textThrown<VornInvalidDateException>([&] { date = february30; }), thrown);
    EXPECT_EQ(textThrown<VornInvalidDateException>([&] { date.setDateTime("12/31/2009", error); }), thrown);
    EXPECT_EQ(fieldsOf(date), "15.1.2009 12:0:0");

    // The field checks only report.
    const VornDateTime february = dateOf(10, 2, 2009);
    EXPECT_FALSE(february.setDayImpl(0, error));
    EXPECT_EQ(error, "Invalid Day : Exceeds 31");
    EXPECT_FALSE(february.setDayImpl(32, error));
    EXPECT_EQ(error, "Invalid Day : Exceeds 31");
    EXPECT_FALSE(february.setDayImpl(31, error));
    EXPECT_EQ(error, kInvalid);
    EXPECT_FALSE(february.setMonthImpl(13, error));
    EXPECT_EQ(error, "Invalid Month : Exceeds 12");
    EXPECT_TRUE(february.setDayImpl(1, error) && february.setMonthImpl(12, error));
    EXPECT_EQ(fieldsOf(february), "10.2.2009 0:0:0");
}

// The daylight saving flag of the start date stays: winter noon plus three
// months is one o'clock in summer. Beyond the calendar the message may carry
// a tail.
TEST_F(VornDateTimeTest, ModifyDateNormalisesThroughTheCalendarOrReportsWhatItCannotReach)
{
    VornDateTime date = dateOf(15, 3, 2009, 12);
    std::string error = "untouched";
    EXPECT_TRUE(date.modifyDate(VornDateTime::FieldMonth, 3, error));
    EXPECT_EQ(fieldsOf(date), "15.6.2009 13:0:0");
    useTimeZone(kUtc);
    date = dateOf(15, 3, 2009);
    EXPECT_TRUE(date.modifyDate(VornDateTime::FieldMonth, 14, error));
    EXPECT_EQ(fieldsOf(date), "15.5.2010 0:0:0");
    EXPECT_TRUE(date.modifyDate(VornDateTime::FieldSecond, -1, error));
    EXPECT_EQ(fieldsOf(date), "14.5.2010 23:59:59");
    EXPECT_FALSE(date.modifyDate(VornDateTime::FieldDay, 0, error));
    EXPECT_EQ(error, "untouched");

    const std::string head = "Subtracting does not compute to a valid Date. Trying to subtract field,";
    EXPECT_FALSE(date.modifyDate(VornDateTime::FieldYear, INT_MAX, error));
    EXPECT_EQ(error, head);
    EXPECT_EQ(fieldsOf(date), "14.5.2010 23:59:59");
    tm farOut{};
    farOut.tm_mday = 1;
    farOut.tm_year = INT_MAX;
    farOut.tm_isdst = -1;
    ASSERT_TRUE(date.setDateTimeFromTmImpl(farOut, error)) << error;
    EXPECT_FALSE(date.modifyDate(VornDateTime::FieldYear, 1, error));
    EXPECT_EQ(error, head + "th ");
}

TEST_F(VornDateTimeTest, InstanceIdsCountSuccessfulSets)
{
    VornDateTime date;
    std::string error;
    const unsigned int id = date.getInstanceId();
    EXPECT_TRUE(date.setDateTimeImpl(1, 1, 100, 0, 0, 0, error));
    EXPECT_TRUE(date.setDateTime("01/01/2000", error));
    EXPECT_TRUE(date.setDateTimeFromStrImpl("01/01/2000", error));
    EXPECT_FALSE(date.setDateImpl(30, 2, 100, error));
    EXPECT_EQ(date.getInstanceId(), id + 2 + 1 + 2);
    EXPECT_EQ(VornDateTime(date).getInstanceId(), id + 5);
}
