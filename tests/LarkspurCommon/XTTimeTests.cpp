// Time points over a clock of the test's own, in several zones.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <cstring>

#include "LarkspurCommon/XTTime.h"
#include "platform/Win32Compat.h"

namespace {

bool g_refuse = false;

void SetZone(const char* zone) {
  setenv("TZ", zone, 1);
  tzset();
}

SYSTEMTIME At(WORD year, WORD month, WORD day, WORD hour = 0, WORD minute = 0, WORD second = 0) {
  return {year, month, 0, day, hour, minute, second, 999};
}

}  // namespace

void GetLocalTime(SYSTEMTIME* local) {
  *local = At(1999, 3, 1, 0, 30);
}

void GetSystemTime(SYSTEMTIME* utc) {
  *utc = At(2026, 2, 28, 23, 30);
}

int FileTimeToLocalFileTime(const long long* utc, long long* local) {
  static const auto library = reinterpret_cast<decltype(&FileTimeToLocalFileTime)>(
      ::dlsym(RTLD_NEXT, "FileTimeToLocalFileTime"));
  return g_refuse ? 0 : library(utc, local);
}

namespace {

TEST(XTTime, FieldsOfTheLocalTime) {
  SetZone("NST3:30");
  const SYSTEMTIME date = At(2024, 2, 29, 23, 59, 59);
  XTTime time(XTTime(&date, true).Seconds());
  EXPECT_EQ(time.WeekDay(), 4);  // the first to ask fills all fields
  for (const TIMESTAMP_STRUCT& expected :
       {TIMESTAMP_STRUCT{2024, 2, 29, 23, 59, 59, 0}, {2024, 3, 1, 0, 0, 0, 0}}) {
    TIMESTAMP_STRUCT stamp{};
    time.GetTime(&stamp);
    EXPECT_EQ(std::memcmp(&stamp, &expected, sizeof stamp), 0);
    time.AddSeconds(1);
  }
}

TEST(XTTime, SecondsFromWhatIsAssigned) {
  const struct {
    const char* name;
    SYSTEMTIME time;
    bool local;
    unsigned long seconds;
  } kRows[] = {{"winter time", At(2026, 3, 29, 1, 59, 59), true, 3952198799},
               {"summer time", At(2026, 3, 29, 3), true, 3952198800},
               {"the end", At(2037, 2, 6, 7, 28, 15), true, 4294967295},
               {"beyond 32 bits", At(2037, 2, 6, 6, 28, 17), false, 1},
               {"hour 24 is hour 0 of the same day", At(2026, 12, 31, 24, 5), false, 3976128300},
               {"a year of the century in UTC", At(26, 1, 1), false, 3944678400},
               {"a year of the century in local time", At(1, 1, 2, 1), true, 86400},
               {"a day that doesn't exist", At(2026, 2, 29), false, 0}};
  SetZone("CET-1CEST,M3.5.0,M10.5.0/3");
  XTTime time;
  EXPECT_EQ(time.Seconds(), 3949774200);
  for (const auto& row : kRows) {
    time.Assign(&row.time, row.local);
    EXPECT_EQ(time.Seconds(), row.seconds) << row.name;
  }
  const long long fileTime = 94670208000000000 + 72'000'000'001;  // 1901-01-01 02:00
  time.Assign(fileTime, true);
  EXPECT_EQ(time.Seconds(), 3600);
  time.Assign(fileTime, false);
  EXPECT_EQ(time.Hour(), 2);
  time.Assign(-1LL, true);
  EXPECT_EQ(time.Hour(), 1);
  time.SubtractSeconds(1);
  EXPECT_EQ(time.Seconds(), 4294967295);
  g_refuse = true;
  EXPECT_EQ(time.Month(), 0);
  g_refuse = false;
  EXPECT_EQ(time.Month(), 2);
}

TEST(XTTime, DaysByTheLocalDateAndTheCalendar) {
  const SYSTEMTIME kDays[] = {At(1999, 3, 1, 23), At(1999, 2, 28), At(1999, 2, 27), At(1998, 3, 1)};
  for (const SYSTEMTIME& day : kDays) {
    bool yesterday = &day != &kDays[1];
    EXPECT_EQ(XTTime(&day, false).Today(&yesterday), &day == &kDays[0]);
    EXPECT_EQ(yesterday, &day == &kDays[1]);
  }
  SYSTEMTIME day = At(2024, 2, 28, 1);
  XTTime::NextDay(&day);
  EXPECT_EQ(day.wDay * 10000 + day.wHour * 1000 + day.wMilliseconds, 291999);
}

TEST(XTTime, WrittenRanges) {
  const struct {
    SYSTEMTIME time;
    const char *from, *to;
    bool inRange;
  } kRows[] = {{At(2026, 7, 15), "1/6", "31/8", true},
               {At(2026, 9, 1), "1/6", "31/8", false},
               {At(2026, 9, 1), "1/6", "31/8/1999", false},
               {At(2026, 12, 15), "1/12", "31/1", false},
               {At(2026, 1, 15), "1/12/2025", "31/1/2026", true},
               {At(2026, 1, 15), "1/12/2025", "31/1", false},
               {At(2026, 1, 15), "15/1", nullptr, true},
               {At(2026, 1, 15), "15/1/26", nullptr, false},
               {At(2026, 1, 15), "x/1", "31/1", true},
               {At(2026, 1, 15), nullptr, "31/1", false},
               {At(2026, 1, 1, 17, 30, 59), "9:00", "17:30", true},
               {At(2026, 1, 1, 17, 31), "9:00", "17:30", false},
               {At(2026, 1, 1, 9), "09:00", nullptr, true},
               {At(2026, 1, 1, 9), "9", "17:30", false}};
  for (const auto& row : kRows) {  // a text has the separator of one kind only
    XTTime time(&row.time, false);
    const bool inRange = time.InDateRange(row.from, row.to) || time.InTimeRange(row.from, row.to);
    EXPECT_EQ(inRange, row.inRange) << &row - kRows;
  }
}

}  // namespace
