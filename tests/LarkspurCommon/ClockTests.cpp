// The millisecond clock and time-outs by it, over a system clock of the test's own.

#define _TIME_BITS 64  // so that the stand-in below replaces the call that the library makes

#include <gtest/gtest.h>
#include <sys/time.h>

#include <utility>

#include "LarkspurCommon/XTTime.h"

namespace {

timeval g_systemTime;

}  // namespace

extern "C" int gettimeofday(timeval* now, void*) noexcept {
  *now = g_systemTime;
  return 0;
}

TEST(Clock, MillisecondsOfTheWallClockCutTo32Bits) {
  const std::pair<timeval, unsigned long> rows[] = {{{4294967, 295999}, 4294967295},
                                                    {{4294967, 296000}, 0},       // wraps
                                                    {{2147483648, 250000}, 250},  // 2038
                                                    {{4294967297, 1000}, 1001}};  // 2106
  for (const auto& [time, milliseconds] : rows) {
    g_systemTime = time;
    EXPECT_EQ(os_clock(), milliseconds) << time.tv_sec;
  }
}

TEST(Clock, TimeOuts) {
  const struct {
    unsigned long start;
    int now;  // microseconds
    unsigned long timeout;
    bool expired;
  } rows[] = {{100, 100000, 0, true},
              {100, 149999, 50, false},
              {100, 150000, 50, true},
              {0xFFFFFFF0, 15000, 32, false},  // across the wrap
              {0xFFFFFFF0, 16000, 32, true},
              {100, 99000, 0xFFFFFFFF, true}};  // clock set back: a huge interval
  for (const auto& row : rows) {
    g_systemTime = {0, row.now};
    EXPECT_EQ(os_expired(row.start, row.timeout), row.expired) << row.now;
  }
}
