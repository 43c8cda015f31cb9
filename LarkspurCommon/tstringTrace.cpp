// The string class's own trace lines, and the trap that stops a debugger on a failed check.

#include <cxxabi.h>
#include <pthread.h>
#include <signal.h>

#include <atomic>

#include "LarkspurCommon/debug.h"
#include "LarkspurCommon/tstring.h"

namespace {

constexpr DWORD kTraceAlways = 0x0000FFFF;
constexpr DWORD kTraceDetail = 0x000F0008;
constexpr DWORD kTraceFunction = 0x000F0009;

// Set while the action of SIGTRAP, which is the whole process's, is changed.
std::atomic_flag g_trapping = ATOMIC_FLAG_INIT;

__attribute__((format(printf, 2, 0))) void Emit(DWORD id, char const* format, va_list args) {
  if (format == nullptr) return;
  try {
    __DebugA(id, format, args);
  } catch (abi::__forced_unwind&) {
    throw;
  } catch (...) {
  }
}

// A debugger sees the signal although it is ignored. It must not be blocked: it would stay pending
// and end the process once the previous action is back.
void RaiseIgnored() {
  struct sigaction ignore {};
  struct sigaction previousAction {};
  ignore.sa_handler = SIG_IGN;
  if (::sigaction(SIGTRAP, &ignore, &previousAction) != 0) return;
  sigset_t trap;
  sigset_t previousMask;
  ::sigemptyset(&trap);
  ::sigaddset(&trap, SIGTRAP);
  ::pthread_sigmask(SIG_UNBLOCK, &trap, &previousMask);
  ::raise(SIGTRAP);
  ::pthread_sigmask(SIG_SETMASK, &previousMask, nullptr);
  ::sigaction(SIGTRAP, &previousAction, nullptr);
}

// A check that fails during another's stop isn't waited with: it may be a signal handler's, or that
// of a child forked meanwhile, in which the stop never ends.
void StopDebugger() {
  if (g_trapping.test_and_set()) return;
  RaiseIgnored();
  g_trapping.clear();
}

}  // namespace

std::atomic<bool> tstring::m_bTrapInDebugger{true};

void tstring::OutputDebugStringV(char const* format, va_list args) {
  Emit(kTraceAlways, format, args);
}

void tstring::OutputDebugString(char const* format, ...) {
  va_list args;
  va_start(args, format);
  OutputDebugStringV(format, args);
  va_end(args);
}

void tstring::TraceV(char const* format, va_list args) {
  Emit(kTraceDetail, format, args);
}

void tstring::Trace(char const* format, ...) {
  va_list args;
  va_start(args, format);
  TraceV(format, args);
  va_end(args);
}

void tstring::TraceFnV(char const* format, va_list args) {
  Emit(kTraceFunction, format, args);
}

void tstring::TraceFn(char const* format, ...) {
  va_list args;
  va_start(args, format);
  TraceFnV(format, args);
  va_end(args);
}

void tstring::TraceAndBreak(char const* format, ...) {
  va_list args;
  va_start(args, format);
  TraceV(format, args);
  va_end(args);
  if (m_bTrapInDebugger) StopDebugger();
}

void tstring::Assert(char const* file, int line, char const* message) {
  TraceAndBreak("Assertion failed: %s, file %s, line %d", message, file, line);
}
