// The filter's clock, in a source of its own: no other may see this time_t.

#define _TIME_BITS 64  // a 32-bit time_t fails after 2038

#include <time.h>

#include "LarkspurCommon/debugState.h"

DWORD TraceClock() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME_COARSE, &now);
  return static_cast<DWORD>(now.tv_sec) * 1000U + static_cast<DWORD>(now.tv_nsec) / 1000000U;
}
