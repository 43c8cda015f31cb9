// The filter: which trace identifiers are wanted, and when the settings are looked at again.

#include "LarkspurCommon/debug.h"
#include "LarkspurCommon/debugState.h"

std::atomic<WORD> s_wDebugLevel{5};
std::array<std::atomic<unsigned char>, 16> s_DebugIdBitmap{{{0xFF}}};
std::atomic<bool> s_bInitialised{false};
std::atomic<bool> s_bDeInitCalled{false};
thread_local bool t_inSettings = false;

namespace {

constexpr DWORD kRereadInterval = 3000;  // milliseconds
constexpr DWORD kAny = 0xFFFF;           // as an ID or as a level
constexpr DWORD kLastId = 127;

// Whether the calling thread is the one to look at the settings file now. The others go on with
// the filter as it is.
bool ClaimReread() {
  static std::atomic<DWORD> dwLastUpdateTime{0};
  const DWORD now = TraceClock();
  DWORD last = dwLastUpdateTime.load(std::memory_order_relaxed);
  if (now - last <= kRereadInterval) return false;
  return dwLastUpdateTime.compare_exchange_strong(last, now, std::memory_order_relaxed);
}

void LookAtSettings() {
  if (!s_bInitialised.load(std::memory_order_acquire)) {
    InitDebug(nullptr, nullptr, nullptr);
  } else if (ClaimReread()) {
    const FlagScope inside(t_inSettings);  // a look that fails decides the answer
    RereadDebugSettings();
  }
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
  const KeepErrno keep;
  bool looked = true;
  Contain(LookAtSettings, [&] { looked = false; });
  return looked && PassesFilter(id);
}
