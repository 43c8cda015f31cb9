#ifndef LARKSPURCOMMON_DEBUGSTATE_H
#define LARKSPURCOMMON_DEBUGSTATE_H

#include <array>
#include <atomic>
#include <cerrno>

#include "LarkspurCommon/Contain.h"
#include "LarkspurCommon/FlagScope.h"
#include "platform/Win32Types.h"

// What the trace module's sources share. Trace calls read all of it without a lock.

constexpr DWORD kUnconditional = 0x0000FFFF;

// All that a disabled trace call reads, in one cache line. The filter is written by the settings
// half of the module under its lock. A reader may see a bitmap half updated: that only decides
// which lines pass at that moment.
struct alignas(64) FilterState {
  std::atomic<bool> initialised{false};
  std::atomic<bool> stopped{false};
  std::atomic<WORD> level{5};            // 0 to 9
  std::atomic<DWORD> lastUpdateTime{0};  // milliseconds, at the last look at the settings file
  std::array<std::atomic<unsigned char>, 16> ids{{{0xFF}}};  // bit n % 8 of byte n / 8
};
extern FilterState s_filter;

inline constexpr auto& s_bInitialised = s_filter.initialised;
inline constexpr auto& s_bDeInitCalled = s_filter.stopped;
inline constexpr auto& s_wDebugLevel = s_filter.level;
inline constexpr auto& dwLastUpdateTime = s_filter.lastUpdateTime;
inline constexpr auto& s_DebugIdBitmap = s_filter.ids;

// 8 bytes, and the characters that these are, written once. Read them only after s_moduleNamed says
// that they are there.
extern char s_szModuleNameA[9];
extern wchar_t s_szModuleNameW[9];
extern std::atomic<bool> s_moduleNamed;

using NarrowHook = void (*)(char const* line, unsigned int length);
using WideHook = void (*)(wchar_t const* line, unsigned int length);
using TraceHandler = void (*)(char const* file, char const* function, int line);
extern std::atomic<NarrowHook> s_lpfndbgAHook;
extern std::atomic<WideHook> s_lpfndbgWHook;

// ReadDebugSettings, unless the module has been stopped or a thread is in the settings already.
void RereadDebugSettings();

// For IsOwn.
[[gnu::visibility("hidden")]] bool OwnIsDebugEnabled(DWORD id);
[[gnu::visibility("hidden")]] void OwnInternalDebugA(DWORD id, char const* format, va_list args);
[[gnu::visibility("hidden")]] void OwnInternalDebugW(DWORD id, wchar_t const* format, va_list args);

// Every thread indents from 0 again.
void RestartIndentation();

// Callers trace between a failing call and their look at errno, and may print it with %m. What a
// host supplies may change it; a host that replaces trace calls keeps it there itself.
class KeepErrno {
 public:
  KeepErrno() : m_errno(errno) {}
  ~KeepErrno() { Restore(); }
  KeepErrno(const KeepErrno&) = delete;
  KeepErrno& operator=(const KeepErrno&) = delete;
  void Restore() const { errno = m_errno; }

 private:
  const int m_errno;
};

// Tells the host's exception handler, if there is one. Whatever that throws is dropped.
void ReportCaught(char const* function, int line);

// Runs `body`; what it throws goes to the host's exception handler and no further.
template <class Body>
void RunGuarded(char const* function, int line, Body body) {
  Contain(body, [&] { ReportCaught(function, line); });
}

// Set while the thread is in a settings call, or in the trace module's own look at the settings.
extern thread_local bool t_inSettings;

// The body of a settings call. What it throws ends at the thread's outermost one: those inside let
// it through, so that nothing goes on with settings that were only half looked at.
template <class Body>
void RunSettingsCall(char const* function, int line, Body body) {
  if (t_inSettings) return body();
  const FlagScope inside(t_inSettings);
  RunGuarded(function, line, body);
}

#endif
