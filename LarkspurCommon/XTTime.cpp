// Time points: the arithmetic on seconds and file times, and comparisons with written dates and
// times. Calendars and zones are the business of the Win32-style calls, which a host may replace.

#include "LarkspurCommon/XTTime.h"

#include <array>
#include <cstdlib>
#include <cstring>

#include "platform/Win32Compat.h"

namespace {

constexpr long long kTicksPerSecond = 10'000'000;  // a tick is 100 ns

SYSTEMTIME Now(bool local) {
  SYSTEMTIME now{};
  (local ? GetLocalTime : GetSystemTime)(&now);
  return now;
}

// What `time` means: hour 24 and years without a century are made whole.
SYSTEMTIME Completed(SYSTEMTIME time, bool local) {
  if (time.wHour == 24) time.wHour = 0;
  if (time.wYear < 100) {
    time.wYear = static_cast<WORD>(time.wYear + Now(local).wYear / 100 * 100);
  }
  return time;
}

// Whole seconds from the base point to a date and time; 0 where it can't be converted.
DWORD SecondsUntil(const SYSTEMTIME& time, bool local) {
  long long fileTime = 0;
  if (!SystemTimeToFileTime(&time, &fileTime)) return 0;
  long long utc = fileTime;
  if (local && !LocalFileTimeToFileTime(&fileTime, &utc)) return 0;
  return static_cast<DWORD>((utc - XTTime::basepoint) / kTicksPerSecond);
}

void Move(SYSTEMTIME* time, long long ticks) {
  long long fileTime = 0;
  if (!SystemTimeToFileTime(time, &fileTime)) return;
  fileTime += ticks;
  SYSTEMTIME moved{};
  if (FileTimeToSystemTime(&fileTime, &moved)) *time = moved;
}

// Numbers in the order in which they are compared: year, month, day or hour, minute.
using Date = std::array<long, 3>;
using TimeOfDay = std::array<long, 2>;

template <class Numbers>
bool IsWithin(const Numbers& value, const Numbers& from, const Numbers& to) {
  return from <= value && value <= to;
}

long Number(char const* text) {
  return std::strtol(text, nullptr, 10);
}

// The text behind the first separator; null when there is none.
char const* Behind(char const* text, char separator) {
  char const* found = text == nullptr ? nullptr : std::strchr(text, separator);
  return found == nullptr ? nullptr : found + 1;
}

// False: malformed.
bool ParseDate(char const* text, Date& date, bool& hasYear) {
  char const* month = Behind(text, '/');
  if (month == nullptr) return false;
  char const* year = Behind(month, '/');
  hasYear = year != nullptr;
  date = {hasYear ? Number(year) : 0, Number(month), Number(text)};
  return true;
}

bool ParseTime(char const* text, TimeOfDay& time) {
  char const* minute = Behind(text, ':');
  if (minute == nullptr) return false;
  time = {Number(text), Number(minute)};
  return true;
}

}  // namespace

long long XTTime::basepoint = 0;
const long long XTTime::oneday = 86'400 * kTicksPerSecond;

void XTTime::Basepoint() {
  static constexpr SYSTEMTIME kBase{1901, 1, 2, 1, 0, 0, 0, 0};
  [[maybe_unused]] static const bool computed = SystemTimeToFileTime(&kBase, &basepoint) != 0;
}

XTTime::XTTime() {
  SetToNow();
}

XTTime::XTTime(unsigned long seconds) : m_seconds(static_cast<DWORD>(seconds)) {
  Basepoint();
}

XTTime::XTTime(SYSTEMTIME const* time, bool local) {
  Assign(time, local);
}

void XTTime::Assign(SYSTEMTIME const* time, bool local) {
  Basepoint();
  m_local = local;
  SetSeconds(time == nullptr ? 0 : SecondsUntil(Completed(*time, local), local));
}

void XTTime::Assign(long long const& fileTime, bool local) {
  SYSTEMTIME time{};
  Assign(FileTimeToSystemTime(&fileTime, &time) ? &time : nullptr, local);
}

void XTTime::SetToNow() {
  Basepoint();
  SetSeconds(SecondsUntil(Now(false), false));
}

unsigned long XTTime::Seconds() const {
  return m_seconds;
}

void XTTime::SetSeconds(unsigned long seconds) {
  m_seconds = static_cast<DWORD>(seconds);
  m_year = 0;
}

void XTTime::AddSeconds(unsigned long seconds) {
  SetSeconds(m_seconds + seconds);
}

void XTTime::SubtractSeconds(unsigned long seconds) {
  SetSeconds(m_seconds - seconds);
}

WORD XTTime::Year() {
  m_year = 0;
  return Filled().m_year;
}

WORD XTTime::Month() {
  return Filled().m_month;
}

WORD XTTime::DayOfMonth() {
  return Filled().m_dayOfMonth;
}

WORD XTTime::Hour() {
  return Filled().m_hour;
}

WORD XTTime::Minute() {
  return Filled().m_minute;
}

WORD XTTime::Second() {
  return Filled().m_second;
}

WORD XTTime::WeekDay() {
  return Filled().m_weekDay;
}

// The object with its calendar fields valid, or all 0 where they can't be had.
XTTime const& XTTime::Filled() {
  if (m_year != 0) return *this;
  SYSTEMTIME time{};
  if (!AsSystemTime(&time, m_local)) time = {};
  m_year = time.wYear;
  m_month = time.wMonth;
  m_dayOfMonth = time.wDay;
  m_hour = time.wHour;
  m_minute = time.wMinute;
  m_second = time.wSecond;
  m_weekDay = time.wDayOfWeek;
  return *this;
}

int XTTime::AsSystemTime(SYSTEMTIME* out, bool local) const {
  const long long utc = m_seconds * kTicksPerSecond + basepoint;
  long long fileTime = utc;
  if (local && !FileTimeToLocalFileTime(&utc, &fileTime)) return 0;
  return FileTimeToSystemTime(&fileTime, out);
}

void XTTime::GetTime(TIMESTAMP_STRUCT* out) {
  out->year = static_cast<short>(Year());
  out->month = Month();
  out->day = DayOfMonth();
  out->hour = Hour();
  out->minute = Minute();
  out->second = Second();
  out->fraction = 0;
}

void XTTime::NextDay(SYSTEMTIME* time) {
  Move(time, oneday);
}

void XTTime::PrevDay(SYSTEMTIME* time) {
  Move(time, -oneday);
}

bool XTTime::Today(bool* yesterday) {
  const Date date{Year(), Month(), DayOfMonth()};
  const auto isDateOf = [&date](const SYSTEMTIME& day) {
    return date == Date{day.wYear, day.wMonth, day.wDay};
  };
  SYSTEMTIME day = Now(true);
  const bool today = isDateOf(day);
  if (yesterday != nullptr) {
    PrevDay(&day);
    *yesterday = !today && isDateOf(day);
  }
  return today;
}

bool XTTime::InDateRange(char const* from, char const* to) {
  Date first{};
  Date last{};
  bool withYear = false;
  bool lastHasYear = false;
  if (!ParseDate(from, first, withYear)) return false;
  if (!ParseDate(to == nullptr ? from : to, last, lastHasYear)) return false;
  if (withYear && !lastHasYear) return false;
  if (!withYear) last[0] = 0;  // every year counts as 0 where the range names none
  return IsWithin<Date>({withYear ? Year() : 0, Month(), DayOfMonth()}, first, last);
}

bool XTTime::InTimeRange(char const* from, char const* to) {
  TimeOfDay first{};
  TimeOfDay last{};
  if (!ParseTime(from, first) || !ParseTime(to == nullptr ? from : to, last)) return false;
  return IsWithin<TimeOfDay>({Hour(), Minute()}, first, last);
}
