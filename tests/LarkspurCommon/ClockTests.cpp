// The millisecond clock over a system clock of the test's own, and time-outs over a clock of the
// host's own.

#define _TIME_BITS 64  // so that the stand-in below replaces the call that the library makes

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/time.h>

#include "LarkspurCommon/XTTime.h"

namespace {

timeval g_systemTime;
unsigned long g_hostClock;

}  // namespace

extern "C" int gettimeofday(timeval* now, void*) noexcept {
  *now = g_systemTime;
  return 0;
}

unsigned long os_clock() {
  return g_hostClock;
}

namespace {

TEST(Clock, MillisecondsOfTheWallClockCutTo32Bits) {
  const auto libraryClock = reinterpret_cast<decltype(&os_clock)>(::dlsym(RTLD_NEXT, "os_clock"));
  ASSERT_NE(libraryClock, nullptr);
  const struct {
    const char* name;
    long long seconds;
    int microseconds;
    unsigned long expected;
  } rows[] = {{"less than a millisecond", 0, 999, 0},
              {"one second", 1, 0, 1000},
              {"microseconds are cut, not rounded", 12, 345999, 12345},
              {"last value", 4294967, 295999, 4294967295},
              {"wraps", 4294967, 296000, 0},
              {"2038, beyond a 32-bit time_t", 2147483648, 250000, 250},
              {"2106, beyond 32 bits of seconds", 4294967297, 1000, 1001}};
  for (const auto& row : rows) {
    g_systemTime.tv_sec = row.seconds;
    g_systemTime.tv_usec = row.microseconds;
    EXPECT_EQ(libraryClock(), row.expected) << row.name;
  }
}

TEST(Clock, TimeOutsByTheHostsClock) {
  const struct {
    const char* name;
    unsigned long start, now, timeout;
    bool expired;
  } rows[] = {{"no time-out", 1000, 1000, 0, true},
              {"one short", 1000, 1049, 50, false},
              {"exact", 1000, 1050, 50, true},
              {"before the wrap", 0xFFFFFFF0, 0xFFFFFFFF, 16, false},
              {"across the wrap, one short", 0xFFFFFFF0, 15, 32, false},
              {"across the wrap", 0xFFFFFFF0, 16, 32, true},
              {"clock set back: a huge interval", 1000, 999, 0xFFFFFFFF, true}};
  for (const auto& row : rows) {
    g_hostClock = row.now;
    EXPECT_EQ(os_expired(row.start, row.timeout), row.expired) << row.name;
  }
}

}  // namespace
