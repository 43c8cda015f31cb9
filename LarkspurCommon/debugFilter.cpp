// The filter: which trace identifiers are wanted, and when the settings are looked at again.

// The clock fails after 2038 with a 32-bit time_t. Nothing here passes one on.
#define _TIME_BITS 64

#include <time.h>

#include "LarkspurCommon/debug.h"
#include "LarkspurCommon/debugState.h"

FilterState s_filter;
thread_local bool t_inSettings = false;

namespace {

constexpr DWORD kRereadInterval = 3000;  // milliseconds
constexpr DWORD kAny = 0xFFFF;           // as an ID or as a level
constexpr DWORD kLastId = 127;

// Wall-clock milliseconds, cut to 32 bits, in steps of a few milliseconds: cheap.
DWORD TraceClock() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME_COARSE, &now);
  return static_cast<DWORD>(now.tv_sec) * 1000U + static_cast<DWORD>(now.tv_nsec) / 1000000U;
}

bool IsLookDue() {
  const DWORD last = dwLastUpdateTime.load(std::memory_order_relaxed);
  return TraceClock() - last > kRereadInterval;
}

// Whether the calling thread is the one to look at the settings file now. The others go on with
// the filter as it is. The clock is read last: another thread's look can't be later than it.
bool ClaimReread() {
  DWORD last = dwLastUpdateTime.load(std::memory_order_acquire);
  const DWORD now = TraceClock();
  return now - last > kRereadInterval &&
         dwLastUpdateTime.compare_exchange_strong(last, now, std::memory_order_acq_rel);
}

// False: something threw. A look that fails decides the answer.
[[gnu::noinline]] bool LookAtSettings() {
  const KeepErrno keep;
  bool looked = true;
  Contain(
      [] {
        if (!s_bInitialised.load(std::memory_order_acquire)) {
          InitDebug(nullptr, nullptr, nullptr);
        } else if (ClaimReread()) {
          const FlagScope inside(t_inSettings);
          RereadDebugSettings();
        }
      },
      [&] { looked = false; });
  return looked;
}

bool PassesFilter(DWORD id) {
  const WORD filterLevel = s_wDebugLevel.load(std::memory_order_relaxed);
  if (filterLevel == 0) return false;
  const DWORD level = id & 0xFFFF;
  if (level != kAny && level > filterLevel) return false;
  DWORD number = id >> 16;
  if (number == kAny) return true;
  if (number > kLastId) number = 0;
  return (s_DebugIdBitmap[number / 8].load(std::memory_order_relaxed) >> (number % 8) & 1) != 0;
}

}  // namespace

bool IsDebugEnabled(DWORD id) {
  const bool isCurrent = s_bInitialised.load(std::memory_order_acquire) && !IsLookDue();
  return (isCurrent || LookAtSettings()) && PassesFilter(id);
}

bool OwnIsDebugEnabled(DWORD id) __attribute__((alias("_Z14IsDebugEnabledj")));
