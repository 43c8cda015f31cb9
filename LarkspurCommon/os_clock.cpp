// The millisecond clock, in a source of its own: a host may supply another.

// The 32-bit C library's plain time_t ends in 2038, and its clock calls then fail. This one
// source asks for the wide type, which needs _FILE_OFFSET_BITS=64 beside it.
#define _TIME_BITS 64

#include <sys/time.h>

#include <cstdint>

#include "LarkspurCommon/XTTime.h"

static_assert(sizeof(timeval::tv_sec) == 8);

unsigned long os_clock() {
  timeval now;
  gettimeofday(&now, nullptr);
  return static_cast<std::uint32_t>(now.tv_sec) * 1000u +
         static_cast<std::uint32_t>(now.tv_usec) / 1000u;
}
