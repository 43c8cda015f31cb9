#ifndef LARKSPURCOMMON_PACING_H
#define LARKSPURCOMMON_PACING_H

#include "LarkspurCommon/XTTime.h"
#include "platform/Win32Compat.h"

// Keeps a long loop from starving the server's other threads: once `work` milliseconds have passed
// since `clock` (an os_clock() value), the thread sleeps `pause` milliseconds and the clock starts
// anew. The loop calls it after each step.
inline void PauseWhenDue(unsigned long& clock, DWORD work, DWORD pause) {
  if (!os_expired(clock, work)) return;
  Sleep(pause);
  clock = os_clock();
}

#endif
