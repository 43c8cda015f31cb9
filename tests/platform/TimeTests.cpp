// Calendar and file times, the zone's rules over the whole range of dates, and pauses.

#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <cstring>

#include "platform/Win32Compat.h"

namespace {

constexpr long long kUntouched = -77;  // what no call would give

void ExpectSame(const SYSTEMTIME& a, const SYSTEMTIME& b) {
  EXPECT_EQ(std::memcmp(&a, &b, sizeof a), 0);
}

TEST(Time, CalendarAndFileTimesAgreeBothWays) {
  const struct {
    SYSTEMTIME time;
    long long fileTime;
  } kInstants[] = {{{1601, 1, 1, 1, 0, 0, 0, 0}, 0},
                   {{1900, 2, 3, 28, 0, 0, 0, 0}, 94404960000000000},  // the next day is 1 March
                   {{1900, 3, 4, 1, 0, 0, 0, 0}, 94405824000000000},
                   {{1970, 1, 4, 1, 0, 0, 0, 0}, 116444736000000000},
                   {{2000, 2, 2, 29, 23, 59, 59, 999}, 125963423999990000},
                   {{2026, 11, 1, 16, 17, 58, 18, 123}, 134393254981230000},
                   {{2038, 1, 2, 19, 3, 14, 8, 0}, 137919572480000000},
                   {{30827, 12, 5, 31, 23, 59, 59, 999}, 9223149887999990000}};
  for (const auto& instant : kInstants) {
    SCOPED_TRACE(instant.fileTime);
    long long fileTime = kUntouched;
    SYSTEMTIME time{};
    EXPECT_TRUE(SystemTimeToFileTime(&instant.time, &fileTime));
    EXPECT_EQ(fileTime, instant.fileTime);
    EXPECT_TRUE(FileTimeToSystemTime(&instant.fileTime, &time));
    ExpectSame(time, instant.time);
  }
}

TEST(Time, NonsenseIsRefusedAndLeavesTheOutput) {
  const SYSTEMTIME kNonsense[] = {
      {1600, 12, 0, 31, 0, 0, 0, 0}, {30828, 1, 0, 1, 0, 0, 0, 0},  {2026, 0, 0, 1, 0, 0, 0, 0},
      {2026, 13, 0, 1, 0, 0, 0, 0},  {2026, 1, 0, 0, 0, 0, 0, 0},   {2026, 2, 0, 29, 0, 0, 0, 0},
      {2026, 4, 0, 31, 0, 0, 0, 0},  {2026, 1, 0, 1, 24, 0, 0, 0},  {2026, 1, 0, 1, 0, 60, 0, 0},
      {2026, 1, 0, 1, 0, 0, 60, 0},  {2026, 1, 0, 1, 0, 0, 0, 1000}};
  long long converted = kUntouched;
  for (const SYSTEMTIME& time : kNonsense) EXPECT_FALSE(SystemTimeToFileTime(&time, &converted));
  const long long negative = -1;
  SYSTEMTIME time{7, 7, 7, 7, 7, 7, 7, 7};
  EXPECT_FALSE(FileTimeToSystemTime(&negative, &time));
  EXPECT_FALSE(FileTimeToLocalFileTime(&negative, &converted));
  EXPECT_FALSE(LocalFileTimeToFileTime(&negative, &converted));
  EXPECT_EQ(converted, kUntouched);
  EXPECT_EQ(time.wYear, 7);
}

// Sets the process's zone for one scope.
class Zone {
 public:
  explicit Zone(const char* name) {
    setenv("TZ", name, 1);
    tzset();
  }
  ~Zone() {
    unsetenv("TZ");
    tzset();
  }
};

struct Moment {
  WORD year, month, day, hour, minute;

  long long FileTime() const {
    const SYSTEMTIME time{year, month, 0, day, hour, minute, 0, 0};
    long long fileTime = kUntouched;
    EXPECT_TRUE(SystemTimeToFileTime(&time, &fileTime));
    return fileTime + 1;  // 100 ns, which must survive
  }
};

constexpr char kBerlin[] = "CET-1CEST,M3.5.0,M10.5.0/3";
constexpr char kAuckland[] = "NZST-12NZDT,M9.5.0,M4.1.0/3";

TEST(Time, FollowsTheZonesRulesForTheDate) {
  const struct {
    const char* zone;
    Moment utc;
    Moment local;
    Moment back;  // elsewhere only from the second of two equal local times
  } kCases[] = {{kBerlin, {2026, 1, 1, 0, 30}, {2026, 1, 1, 1, 30}, {2026, 1, 1, 0, 30}},
                {kBerlin, {2026, 6, 30, 22, 30}, {2026, 7, 1, 0, 30}, {2026, 6, 30, 22, 30}},
                {kBerlin, {2026, 3, 29, 0, 59}, {2026, 3, 29, 1, 59}, {2026, 3, 29, 0, 59}},
                {kBerlin, {2026, 3, 29, 1, 0}, {2026, 3, 29, 3, 0}, {2026, 3, 29, 1, 0}},
                {kBerlin, {2026, 10, 25, 0, 30}, {2026, 10, 25, 2, 30}, {2026, 10, 25, 0, 30}},
                {kBerlin, {2026, 10, 25, 1, 30}, {2026, 10, 25, 2, 30}, {2026, 10, 25, 0, 30}},
                {kBerlin, {2026, 10, 25, 2, 0}, {2026, 10, 25, 3, 0}, {2026, 10, 25, 2, 0}},
                {kBerlin, {2050, 7, 1, 12, 0}, {2050, 7, 1, 14, 0}, {2050, 7, 1, 12, 0}},
                {kAuckland, {2026, 12, 31, 12, 0}, {2027, 1, 1, 1, 0}, {2026, 12, 31, 12, 0}},
                {"NST3:30", {1905, 3, 1, 0, 0}, {1905, 2, 28, 20, 30}, {1905, 3, 1, 0, 0}}};
  for (const auto& test : kCases) {
    const Zone zone(test.zone);
    const long long utc = test.utc.FileTime();
    SCOPED_TRACE(utc);
    long long local = kUntouched;
    long long back = kUntouched;
    EXPECT_TRUE(FileTimeToLocalFileTime(&utc, &local));
    EXPECT_EQ(local, test.local.FileTime());
    EXPECT_TRUE(LocalFileTimeToFileTime(&local, &back));
    EXPECT_EQ(back, test.back.FileTime());
  }
}

TEST(Time, ASkippedLocalTimeIsReadWithTheOffsetBefore) {
  const Zone zone(kBerlin);
  const long long skipped = Moment{2026, 3, 29, 2, 30}.FileTime();
  long long utc = kUntouched;
  EXPECT_TRUE(LocalFileTimeToFileTime(&skipped, &utc));
  EXPECT_EQ(utc, (Moment{2026, 3, 29, 1, 30}.FileTime()));
}

TEST(Time, PastRulesAreThoseOfThePast) {
  if (access("/usr/share/zoneinfo/Europe/London", R_OK) != 0) GTEST_SKIP() << "no zone files";
  const Zone zone("Europe/London");
  const long long winterOf1969 = Moment{1969, 1, 1, 0, 0}.FileTime();  // an hour ahead all year
  long long local = kUntouched;
  EXPECT_TRUE(FileTimeToLocalFileTime(&winterOf1969, &local));
  EXPECT_EQ(local, (Moment{1969, 1, 1, 1, 0}.FileTime()));
}

TEST(Time, BothClocksShowNow) {
  const Zone zone("XST-5:30");
  SYSTEMTIME local{}, utc{}, expected{};
  long long localTime = 0, utcTime = 0;
  const long long now = time(nullptr) + 11'644'473'600;
  GetSystemTime(&utc);
  GetLocalTime(&local);
  ASSERT_TRUE(SystemTimeToFileTime(&utc, &utcTime));
  ASSERT_TRUE(SystemTimeToFileTime(&local, &localTime));
  EXPECT_NEAR(static_cast<double>(utcTime / 10'000'000 - now), 0, 2);
  EXPECT_NEAR(static_cast<double>((localTime - utcTime) / 10'000'000), 5.5 * 3600, 2);
  FileTimeToSystemTime(&localTime, &expected);
  ExpectSame(local, expected);  // the day of the week too
}

TEST(Sleep, LastsItsTimeWhateverSignalsCome) {
  signal(SIGALRM, [](int) {});
  const itimerval everyMillisecond{{0, 1000}, {0, 1000}};
  setitimer(ITIMER_REAL, &everyMillisecond, nullptr);
  const auto start = std::chrono::steady_clock::now();
  Sleep(30);
  const auto took = std::chrono::steady_clock::now() - start;
  const itimerval off{};
  setitimer(ITIMER_REAL, &off, nullptr);
  EXPECT_GE(took, std::chrono::milliseconds(30));
  EXPECT_LT(took, std::chrono::seconds(10));
}

}  // namespace
