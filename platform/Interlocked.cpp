// Atomic counting: InterlockedIncrement and InterlockedDecrement, which a host may replace.

#include "platform/Win32Compat.h"

LONG InterlockedIncrement(LONG* value) {
  return __atomic_add_fetch(value, 1, __ATOMIC_SEQ_CST);
}

LONG InterlockedDecrement(LONG* value) {
  return __atomic_sub_fetch(value, 1, __ATOMIC_SEQ_CST);
}
