#ifndef LARKSPURCOMMON_XTTIME_H
#define LARKSPURCOMMON_XTTIME_H

#include "platform/Export.h"

extern "C" {

// Wall-clock milliseconds cut to 32 bits, also where a long is wider. Only the difference of two
// values means anything: taken in 32-bit unsigned arithmetic it survives one wrap (49.7 days).
CORVO_API unsigned long os_clock();

// Whether at least `timeout` milliseconds have passed since os_clock() gave `start`.
CORVO_API bool os_expired(unsigned long start, unsigned long timeout);

}  // extern "C"

#endif
