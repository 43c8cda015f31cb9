// Calendar time, file times and the process's time zone: the six time calls, each of which a host
// may replace. The calendar is ours; only the zone's offset is asked of the C library.

// The library's 32-bit times end in 2038.
#define _TIME_BITS 64

#include <time.h>

#include <limits>

#include "platform/Win32Compat.h"

static_assert(sizeof(time_t) == 8, "times before 1901 and after 2038 have zone offsets too");

namespace {

constexpr long long kTicksPerSecond = 10'000'000;  // a tick is 100 ns
constexpr long long kTicksPerMillisecond = 10'000;
constexpr long long kSecondsPerDay = 86'400;
constexpr long long kTicksPerDay = kSecondsPerDay * kTicksPerSecond;
constexpr long long kUnixEpochSeconds = 11'644'473'600;  // 1970-01-01, counted from 1601-01-01

constexpr int kFirstYear = 1601;
constexpr int kLastYear = 30827;

struct Date {
  int year;
  int month;
  int day;
};

// Both directions count in years that begin with March, so that a leap day comes last, and in
// eras of 400 years, of which one begins at 1600-03-01.
constexpr int kEraYear = 1600;
constexpr int kDaysPerEra = 146'097;
constexpr int kFromEraToFileTime = 306;  // days from 1600-03-01 to 1601-01-01

// Days since 1601-01-01.
int DaysOf(const Date& date) {
  const int years = date.year - kEraYear - (date.month <= 2 ? 1 : 0);
  const int era = years / 400;
  const int yearOfEra = years % 400;
  const int monthFromMarch = (date.month + 9) % 12;
  const int dayOfYear = (153 * monthFromMarch + 2) / 5 + date.day - 1;
  const int dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return era * kDaysPerEra + dayOfEra - kFromEraToFileTime;
}

Date DateOf(int days) {
  const int fromEra = days + kFromEraToFileTime;
  const int era = fromEra / kDaysPerEra;
  const int dayOfEra = fromEra % kDaysPerEra;
  const int yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / (kDaysPerEra - 1)) / 365;
  const int dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const int monthFromMarch = (5 * dayOfYear + 2) / 153;
  const int month = (monthFromMarch + 2) % 12 + 1;
  return {kEraYear + era * 400 + yearOfEra + (month <= 2 ? 1 : 0), month,
          dayOfYear - (153 * monthFromMarch + 2) / 5 + 1};
}

bool IsDate(const Date& date) {
  if (date.year < kFirstYear || date.year > kLastYear || date.month < 1 || date.month > 12) {
    return false;
  }
  const Date same = DateOf(DaysOf(date));  // a day too many lands in the next month
  return same.month == date.month && same.day == date.day;
}

bool IsTimeOfDay(const SYSTEMTIME& time) {
  return time.wHour < 24 && time.wMinute < 60 && time.wSecond < 60 && time.wMilliseconds < 1000;
}

WORD Word(int value) {
  return static_cast<WORD>(value);
}

SYSTEMTIME Split(long long ticks) {
  const int days = static_cast<int>(ticks / kTicksPerDay);
  const int millisecond = static_cast<int>(ticks % kTicksPerDay / kTicksPerMillisecond);
  const int second = millisecond / 1000;
  const Date date = DateOf(days);
  const int weekDay = (days + 1) % 7;  // 1601-01-01 was a Monday
  return {Word(date.year),     Word(date.month),       Word(weekDay),     Word(date.day),
          Word(second / 3600), Word(second / 60 % 60), Word(second % 60), Word(millisecond % 1000)};
}

tm LocalFields(time_t seconds) {
  // localtime_r needn't read the zone by itself, and asking each time costs a look at its file.
  [[maybe_unused]] static const bool zoneRead = (::tzset(), true);
  tm fields{};
  ::localtime_r(&seconds, &fields);
  return fields;
}

// The second that was last split up, while neither it nor the zone is another: a trace asks many
// times a second.
class LocalSecond {
 public:
  const SYSTEMTIME& Fields(time_t second) {
    if (second != m_second || m_zone != tzname[0] || m_offset != timezone) Split(second);
    return m_fields;
  }

 private:
  void Split(time_t second) {
    const tm fields = LocalFields(second);
    m_fields = {Word(fields.tm_year + 1900), Word(fields.tm_mon + 1),
                Word(fields.tm_wday),        Word(fields.tm_mday),
                Word(fields.tm_hour),        Word(fields.tm_min),
                Word(fields.tm_sec),         0};
    m_second = second;
    m_zone = tzname[0];
    m_offset = timezone;
  }

  SYSTEMTIME m_fields{};
  time_t m_second = -1;
  const char* m_zone = nullptr;
  long m_offset = 0;
};

// What the zone adds to UTC at a UTC file time.
long long ZoneOffset(long long utc) {
  const long long seconds = utc / kTicksPerSecond - kUnixEpochSeconds;
  return LocalFields(seconds).tm_gmtoff * kTicksPerSecond;
}

// A day before and after a local time, read as UTC, lie on both sides of any change of the clocks
// that concerns it.
long long ToUtc(long long local) {
  const long long offsetBefore = ZoneOffset(local - kTicksPerDay);
  const long long offsetAfter = ZoneOffset(local + kTicksPerDay);
  const bool occursBefore = ZoneOffset(local - offsetBefore) == offsetBefore;
  const bool occursAfter = ZoneOffset(local - offsetAfter) == offsetAfter;
  return local - (occursAfter && !occursBefore ? offsetAfter : offsetBefore);
}

// Whether a file time is valid, and far enough from the last one for zone arithmetic.
bool IsConvertible(long long fileTime) {
  constexpr long long kLast = std::numeric_limits<long long>::max() - 2 * kTicksPerDay;
  return fileTime >= 0 && fileTime <= kLast;
}

// Stores a result unless the zone's offset led before 1601.
int Store(long long value, long long* result) {
  if (value < 0) return 0;
  *result = value;
  return 1;
}

}  // namespace

void GetLocalTime(SYSTEMTIME* local) {
  thread_local LocalSecond t_last;
  timespec now;
  ::clock_gettime(CLOCK_REALTIME, &now);
  *local = t_last.Fields(now.tv_sec);
  local->wMilliseconds = Word(static_cast<int>(now.tv_nsec / 1'000'000));
}

void GetSystemTime(SYSTEMTIME* utc) {
  timespec now;
  ::clock_gettime(CLOCK_REALTIME, &now);
  *utc = Split((now.tv_sec + kUnixEpochSeconds) * kTicksPerSecond + now.tv_nsec / 100);
}

int SystemTimeToFileTime(const SYSTEMTIME* time, long long* fileTime) {
  if (time == nullptr || fileTime == nullptr) return 0;
  const Date date{time->wYear, time->wMonth, time->wDay};
  if (!IsDate(date) || !IsTimeOfDay(*time)) return 0;
  const int seconds = (time->wHour * 60 + time->wMinute) * 60 + time->wSecond;
  *fileTime = DaysOf(date) * kTicksPerDay + seconds * kTicksPerSecond +
              time->wMilliseconds * kTicksPerMillisecond;
  return 1;
}

int FileTimeToSystemTime(const long long* fileTime, SYSTEMTIME* time) {
  if (fileTime == nullptr || time == nullptr || *fileTime < 0) return 0;
  *time = Split(*fileTime);
  return 1;
}

int FileTimeToLocalFileTime(const long long* utc, long long* local) {
  if (utc == nullptr || local == nullptr || !IsConvertible(*utc)) return 0;
  return Store(*utc + ZoneOffset(*utc), local);
}

int LocalFileTimeToFileTime(const long long* local, long long* utc) {
  if (local == nullptr || utc == nullptr || !IsConvertible(*local)) return 0;
  return Store(ToUtc(*local), utc);
}
