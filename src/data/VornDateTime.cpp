#include <vsupt/VornDateTime.h>
#include <vsupt/VornInvalidDateException.h>
#include <vsupt/VornLocaleFactory.h>

#include <cstdio>
#include <cwchar>
#include <iterator>
#include <limits>
#include <sstream>

namespace VornSupport {

std::atomic<std::uint32_t> VornDateTime::m_objectCounter(0);

const char* VornDateTime::abbrevMonthNames[12] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                  "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

namespace {

const char kInvalidDate[] = "Input does not compute to a valid DateTime object";
const char kIncorrectRfc1123[] = "Incorrect RFC1123 DateTime format";
const char kIncorrectFormat[] = "Incorrect DateTime format";

// ---------------------------------------------------------------------------
// The platform's calendar

tm localTimeOf(time_t value)
{
    tm fields{};
    localtime_r(&value, &fields);
    return fields;
}

tm utcTimeOf(time_t value)
{
    tm fields{};
    gmtime_r(&value, &fields);
    return fields;
}

// ---------------------------------------------------------------------------

// Field arithmetic wraps as the platform's int does, rather than overflow.
int shifted(int value, int offset)
{
    return static_cast<int>(static_cast<unsigned int>(value) + static_cast<unsigned int>(offset));
}

// Adds amount to the chosen field; false when the sum leaves the range of
// int. An unknown field gets nothing.
bool addToField(tm& fields, VornDateTime::FieldId_t field, int amount)
{
    int* target = nullptr;
    switch (field) {
    case VornDateTime::FieldMonth: target = &fields.tm_mon; break;
    case VornDateTime::FieldDay: target = &fields.tm_mday; break;
    case VornDateTime::FieldYear: target = &fields.tm_year; break;
    case VornDateTime::FieldHour: target = &fields.tm_hour; break;
    case VornDateTime::FieldMinute: target = &fields.tm_min; break;
    case VornDateTime::FieldSecond: target = &fields.tm_sec; break;
    }
    if (target == nullptr) {
        return true;
    }
    const long long sum = static_cast<long long>(*target) + amount;
    if (sum < std::numeric_limits<int>::min() || sum > std::numeric_limits<int>::max()) {
        return false;
    }
    *target = static_cast<int>(sum);
    return true;
}

// The message names neither field nor amount: their sum picks where the
// tail of " with " starts, and a start outside it adds nothing.
std::string modifyFailure(VornDateTime::FieldId_t field, int amount)
{
    const std::string tail = " with ";
    const long long start = static_cast<long long>(field) + amount;
    std::string message = "Subtracting does not compute to a valid Date. Trying to subtract field,";
    if (start >= 0 && start < static_cast<long long>(tail.size())) {
        message += tail.substr(static_cast<std::size_t>(start));
    }
    return message;
}

std::wstring localText(const VornDateTime& date, const std::locale& loc, const wchar_t* format)
{
    tm fields = localTimeOf(date.getTime());
    return VornDateTime::constructTimeString(&fields, loc, format);
}

// Sets the date, reporting an invalid one by the exception's own text.
bool assignReportingText(VornDateTime& date, const tm& fields, std::string& error)
{
    try {
        date = fields;
    } catch (const VornException& failure) {
        error = failure.getText();
        return false;
    }
    return true;
}

// ---------------------------------------------------------------------------
// The three text forms. Each has a length limit checked before the scan;
// the words land in buffers that hold any word of a text within its limit.

const std::size_t kRfc1123Limit = 29;
const std::size_t kDayFirstLimit = 19;
const std::size_t kAsctimeLimit = 25;

// "Sun, 06 Nov 1994 08:49:37 GMT": the zone is read and ignored.
bool setFromRfc1123(VornDateTime& date, const std::string& text, tm& fields, std::string& error)
{
    char weekday[kRfc1123Limit + 1];
    char month[kRfc1123Limit + 1];
    char zone[kRfc1123Limit + 1];
    int year = 0;
    if (text.size() > kRfc1123Limit ||
        std::sscanf(text.c_str(), "%29s %d %29s %d %d:%d:%d %29s", weekday, &fields.tm_mday, month, &year,
                    &fields.tm_hour, &fields.tm_min, &fields.tm_sec, zone) != 8) {
        error = kIncorrectRfc1123;
        return false;
    }
    std::string monthName(month);
    fields.tm_mon = date.getMonthForRFCName(monthName);
    fields.tm_year = shifted(year, -1900);
    tm local = localTimeOf(std::mktime(&fields));
    std::string failure;
    if (!date.operatorImpl(local, failure)) {
        throw VornInvalidDateException(failure);
    }
    return true;
}

// "31/12/2009 23:59:59", the time optional.
bool setFromDayFirst(VornDateTime& date, const std::string& text, tm& fields, std::string& error)
{
    if (text.size() > kDayFirstLimit) {
        error = kIncorrectRfc1123;
        return false;
    }
    int month = 0;
    int year = 0;
    if (std::sscanf(text.c_str(), "%d/%d/%d %d:%d:%d", &fields.tm_mday, &month, &year, &fields.tm_hour,
                    &fields.tm_min, &fields.tm_sec) < 3) {
        error = kIncorrectFormat;
        return false;
    }
    fields.tm_mon = shifted(month, -1);
    fields.tm_year = shifted(year, -1900);
    date = fields;
    return true;
}

// "Sun Nov  6 08:49:37 1994".
bool setFromAsctime(VornDateTime& date, const std::string& text, tm& fields, std::string& error)
{
    char weekday[kAsctimeLimit + 1];
    char month[kAsctimeLimit + 1];
    int year = 0;
    if (text.size() > kAsctimeLimit ||
        std::sscanf(text.c_str(), "%25s %25s %d %d:%d:%d %d", weekday, month, &fields.tm_mday, &fields.tm_hour,
                    &fields.tm_min, &fields.tm_sec, &year) != 7) {
        error = kIncorrectFormat;
        return false;
    }
    std::string monthName(month);
    fields.tm_mon = date.getMonthForRFCName(monthName);
    fields.tm_year = shifted(year, -1900);
    date = fields;
    return true;
}

}  // namespace

// ---------------------------------------------------------------------------
// Construction

VornDateTime::VornDateTime() : m_locale(VornLocaleFactory::getDefaultLocale(true))
{
    store(localTimeOf(std::time(nullptr)));
    adjustInstanceId();
}

VornDateTime::VornDateTime(const VornDateTime& other)
    : m_day(other.m_day),
      m_month(other.m_month),
      m_year(other.m_year),
      m_hour(other.m_hour),
      m_minute(other.m_minute),
      m_second(other.m_second),
      m_instanceId(other.m_instanceId)
{
}

VornDateTime& VornDateTime::operator=(const VornDateTime& other)
{
    if (this != &other) {
        m_day = other.m_day;
        m_month = other.m_month;
        m_year = other.m_year;
        m_hour = other.m_hour;
        m_minute = other.m_minute;
        m_second = other.m_second;
        m_instanceId = other.m_instanceId;
    }
    return *this;
}

VornDateTime& VornDateTime::operator=(const tm& value)
{
    std::string error;
    if (!operatorImpl(value, error)) {
        throw VornInvalidDateException(error);
    }
    return *this;
}

VornDateTime::~VornDateTime() = default;

void VornDateTime::store(const tm& value)
{
    m_day = value.tm_mday;
    m_month = value.tm_mon;
    m_year = shifted(value.tm_year, 1900);
    m_hour = value.tm_hour;
    m_minute = value.tm_min;
    m_second = value.tm_sec;
}

void VornDateTime::adjustInstanceId()
{
    m_instanceId = m_objectCounter.fetch_add(1, std::memory_order_relaxed) + 1;
}

// ---------------------------------------------------------------------------
// Conversion

time_t VornDateTime::getTime() const
{
    tm fields{};
    fields.tm_isdst = -1;
    fields.tm_year = shifted(m_year, -1900);
    fields.tm_mon = m_month;
    fields.tm_mday = m_day;
    fields.tm_hour = m_hour;
    fields.tm_min = m_minute;
    fields.tm_sec = m_second;
    return std::mktime(&fields);
}

// The expression cancels up to rounding: 0 for every date of practical range.
long VornDateTime::hash() const
{
    const auto mixed = static_cast<std::int64_t>(static_cast<std::uint64_t>(getTime()) * 41358u + m_instanceId);
    const auto value = static_cast<double>(mixed);
    return static_cast<long>(value / 28.0 * -28.0 + value);
}

int VornDateTime::day() const
{
    return localTimeOf(getTime()).tm_yday + 1;
}

int VornDateTime::getWeekday() const
{
    return localTimeOf(getTime()).tm_wday;
}

bool VornDateTime::isLeapYear() const
{
    tm fields = localTimeOf(getTime());
    fields.tm_mday = 29;
    fields.tm_mon = 1;
    std::mktime(&fields);
    return fields.tm_mday == 29 || fields.tm_mon == 1;
}

// ---------------------------------------------------------------------------
// Text output

std::wstring VornDateTime::constructTimeString(tm* value, const std::locale& loc, const wchar_t* format)
{
    std::wostringstream stream;
    stream.imbue(loc);
    const auto& facet = std::use_facet<std::time_put<wchar_t> >(loc);
    facet.put(std::ostreambuf_iterator<wchar_t>(stream), stream, L' ', value, format, format + std::wcslen(format));
    return stream.str();
}

std::wstring VornDateTime::monthName(const std::locale& loc) const
{
    return localText(*this, loc, L"%B");
}

std::wstring VornDateTime::weekdayName(const std::locale& loc) const
{
    return localText(*this, loc, L"%A");
}

std::wstring VornDateTime::dateToString(const std::locale& loc) const
{
    return localText(*this, loc, L"%X");
}

std::wstring VornDateTime::timeToString(const std::locale& loc) const
{
    return localText(*this, loc, L"%x");
}

std::wstring VornDateTime::toString(const std::locale& loc) const
{
    return localText(*this, loc, L"%c");
}

std::wstring VornDateTime::toGMTString() const
{
    tm fields = utcTimeOf(getTime());
    return constructTimeString(&fields, m_locale, L"%c");
}

// ---------------------------------------------------------------------------
// Setting

bool VornDateTime::validateDateTime(const tm& value, std::string& error) const
{
    tm normalised = value;
    if (std::mktime(&normalised) != -1 && normalised.tm_sec == value.tm_sec && normalised.tm_min == value.tm_min &&
        normalised.tm_hour == value.tm_hour && normalised.tm_mday == value.tm_mday &&
        normalised.tm_mon == value.tm_mon && normalised.tm_year == value.tm_year) {
        return true;
    }
    error = kInvalidDate;
    return false;
}

bool VornDateTime::operatorImpl(const tm& value, std::string& error)
{
    if (!validateDateTime(value, error)) {
        return false;
    }
    store(value);
    adjustInstanceId();
    return true;
}

bool VornDateTime::setDateTimeImpl(unsigned int day, unsigned int month, unsigned int year, unsigned int hour,
                                   unsigned int minute, unsigned int second, std::string& error)
{
    tm fields{};
    fields.tm_mday = static_cast<int>(day);
    fields.tm_mon = static_cast<int>(month - 1);
    fields.tm_year = static_cast<int>(year);
    fields.tm_hour = static_cast<int>(hour);
    fields.tm_min = static_cast<int>(minute);
    fields.tm_sec = static_cast<int>(second);
    if (!assignReportingText(*this, fields, error)) {
        return false;
    }
    adjustInstanceId();
    return true;
}

bool VornDateTime::setDateImpl(unsigned int day, unsigned int month, unsigned int year, std::string& error)
{
    return setDateTimeImpl(day, month, year, 0, 0, 0, error);
}

bool VornDateTime::setDateTimeFromTmImpl(const tm& value, std::string& error)
{
    return assignReportingText(*this, value, error);
}

bool VornDateTime::setDateTimeFromStrImpl(const std::string& text, std::string& error)
{
    if (!setDateTime(text, error)) {
        return false;
    }
    adjustInstanceId();
    return true;
}

bool VornDateTime::setDateTime(const std::string& text, std::string& error)
{
    tm fields{};
    fields.tm_isdst = -1;
    if (text.find(',') != std::string::npos) {
        return setFromRfc1123(*this, text, fields, error);
    }
    if (text.find('/') != std::string::npos) {
        return setFromDayFirst(*this, text, fields, error);
    }
    return setFromAsctime(*this, text, fields, error);
}

int VornDateTime::getMonthForRFCName(std::string& name) const
{
    for (int month = 0; month < 12; ++month) {
        if (name == abbrevMonthNames[month]) {
            return month;
        }
    }
    return 0;
}

// ---------------------------------------------------------------------------
// Checking one field

bool VornDateTime::setYearImpl(unsigned int year, std::string& error) const
{
    tm fields = localTimeOf(getTime());
    fields.tm_year = static_cast<int>(year - 1900);
    return validateDateTime(fields, error);
}

bool VornDateTime::setMonthImpl(unsigned int month, std::string& error) const
{
    const auto signedMonth = static_cast<int>(month);
    if (signedMonth < 1 || signedMonth > 12) {
        error = "Invalid Month : Exceeds 12";
        return false;
    }
    tm fields = localTimeOf(getTime());
    fields.tm_mon = signedMonth - 1;
    return validateDateTime(fields, error);
}

bool VornDateTime::setDayImpl(unsigned int day, std::string& error) const
{
    if (day == 0 || day > 31) {
        error = "Invalid Day : Exceeds 31";
        return false;
    }
    tm fields = localTimeOf(getTime());
    fields.tm_mday = static_cast<int>(day);
    return validateDateTime(fields, error);
}

// ---------------------------------------------------------------------------
// Arithmetic

bool VornDateTime::modifyDate(FieldId_t field, int amount, std::string& error)
{
    if (amount == 0) {
        return false;
    }
    tm fields = localTimeOf(getTime());
    if (!addToField(fields, field, amount) || std::mktime(&fields) == -1) {
        error = modifyFailure(field, amount);
        return false;
    }
    std::string failure;
    if (!operatorImpl(fields, failure)) {
        throw VornInvalidDateException(failure);
    }
    return true;
}

}  // namespace VornSupport
