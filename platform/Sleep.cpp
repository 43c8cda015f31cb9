// Pausing a thread: Sleep, which a host may replace.

#include <errno.h>
#include <sched.h>
#include <time.h>

#include "platform/Win32Compat.h"

namespace {

constexpr long kNanosecondsPerSecond = 1'000'000'000;
constexpr long kNanosecondsPerMillisecond = 1'000'000;

timespec After(timespec time, DWORD milliseconds) {
  time.tv_sec += static_cast<time_t>(milliseconds / 1000);
  time.tv_nsec += static_cast<long>(milliseconds % 1000) * kNanosecondsPerMillisecond;
  if (time.tv_nsec >= kNanosecondsPerSecond) {
    time.tv_nsec -= kNanosecondsPerSecond;
    ++time.tv_sec;
  }
  return time;
}

}  // namespace

void Sleep(DWORD milliseconds) {
  if (milliseconds == 0) {
    ::sched_yield();
    return;
  }
  timespec now;
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  const timespec end = After(now, milliseconds);
  // An end that doesn't move: signals, however many, don't stretch the pause.
  while (::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr) == EINTR) {
  }
}
