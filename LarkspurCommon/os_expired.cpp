// The time-out test, apart from the clock so that it reads the host's where the host has one.

#include <cstdint>

#include "LarkspurCommon/XTTime.h"

bool os_expired(unsigned long start, unsigned long timeout) {
  const auto elapsed = static_cast<std::uint32_t>(os_clock() - start);
  return elapsed >= static_cast<std::uint32_t>(timeout);
}
