// Calendar and file times, and the zone's rules over the whole range of dates.

#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <cstring>

#include "platform/Win32Compat.h"

namespace {

constexpr long long kUntouched = -77;  // what no call would give
constexpr long long kMinute = 600'000'000;

// A file time, and 100 ns that must survive.
long long FileTime(WORD year, WORD month, WORD day, WORD hour, WORD minute) {
  const SYSTEMTIME time{year, month, 0, day, hour, minute, 0, 0};
  long long fileTime = kUntouched;
  EXPECT_TRUE(SystemTimeToFileTime(&time, &fileTime));
  return fileTime + 1;
}

void SetZone(const char* name) {
  setenv("TZ", name, 1);
  tzset();
}

constexpr char kBerlin[] = "CET-1CEST,M3.5.0,M10.5.0/3";

}  // namespace

TEST(Time, CalendarAndFileTimesAgreeBothWays) {
  const struct {
    SYSTEMTIME time;
    long long fileTime;
  } rows[] = {{{1601, 1, 1, 1, 0, 0, 0, 0}, 0},
              {{1900, 3, 4, 1, 0, 0, 0, 0}, 94405824000000000},  // no leap year
              {{2000, 2, 2, 29, 23, 59, 59, 999}, 125963423999990000},
              {{2038, 1, 2, 19, 3, 14, 8, 0}, 137919572480000000},
              {{30827, 12, 5, 31, 23, 59, 59, 999}, 9223149887999990000},
              {{30828, 1, 0, 1, 0, 0, 0, 0}, kUntouched},
              {{2026, 2, 0, 29, 0, 0, 0, 0}, kUntouched}};
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    const bool valid = row.fileTime != kUntouched;
    long long fileTime = kUntouched;
    SYSTEMTIME time{};
    EXPECT_EQ(SystemTimeToFileTime(&row.time, &fileTime) != 0, valid);
    EXPECT_EQ(fileTime, row.fileTime);
    EXPECT_EQ(FileTimeToSystemTime(&fileTime, &time) != 0, valid);
    EXPECT_EQ(std::memcmp(&time, &row.time, sizeof time) == 0, valid);
  }
}

TEST(Time, FollowsTheZonesRulesForTheDate) {
  const struct {
    const char* zone;
    long long utc;
    int ahead, back;  // minutes: of local time, and that the way back misses UTC by
  } rows[] = {{kBerlin, FileTime(2026, 3, 29, 0, 59), 60, 0},
              {kBerlin, FileTime(2026, 3, 29, 1, 0), 120, 0},
              {kBerlin, FileTime(2026, 10, 25, 1, 30), 60, -60},  // the second of two local times
              {kBerlin, FileTime(2050, 7, 1, 12, 0), 120, 0},
              {"NZST-12NZDT,M9.5.0,M4.1.0/3", FileTime(2026, 12, 31, 12, 0), 780, 0},
              {"NST3:30", FileTime(1905, 3, 1, 0, 0), -210, 0}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.utc);
    SetZone(row.zone);
    long long local = kUntouched, back = kUntouched;
    EXPECT_TRUE(FileTimeToLocalFileTime(&row.utc, &local));
    EXPECT_EQ(local, row.utc + row.ahead * kMinute);
    EXPECT_TRUE(LocalFileTimeToFileTime(&local, &back));
    EXPECT_EQ(back, row.utc + row.back * kMinute);
  }
  SetZone(kBerlin);
  const long long skipped = FileTime(2026, 3, 29, 2, 30);  // read with the offset before
  long long utc = kUntouched;
  EXPECT_TRUE(LocalFileTimeToFileTime(&skipped, &utc));
  EXPECT_EQ(utc, FileTime(2026, 3, 29, 1, 30));
}

TEST(Time, BothClocksShowNow) {
  SetZone("XST-5:30");
  SYSTEMTIME local{}, utc{};
  long long localTime = 0, utcTime = 0;
  const double now = static_cast<double>(time(nullptr) + 11'644'473'600);
  GetSystemTime(&utc);
  GetLocalTime(&local);
  EXPECT_TRUE(SystemTimeToFileTime(&utc, &utcTime) && SystemTimeToFileTime(&local, &localTime));
  EXPECT_NEAR(static_cast<double>(utcTime) / 1e7, now, 2);
  EXPECT_NEAR(static_cast<double>(localTime) / 1e7, now + 5.5 * 3600, 2);
}
