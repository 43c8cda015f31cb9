// The trace calls, where their lines and the exceptions inside them go, and exception reports.

#include "LarkspurCommon/debug.h"

#include "LarkspurCommon/FlagScope.h"
#include "LarkspurCommon/debugState.h"

std::atomic<NarrowHook> s_lpfndbgAHook{nullptr};
std::atomic<WideHook> s_lpfndbgWHook{nullptr};

namespace {

std::atomic<TraceHandler> s_lpfnTraceHandler{nullptr};

constexpr DWORD kExceptionReport = 0x00250002;
constexpr char kExceptionFormat[] = "Exception has occurred in %s (%s[%d])";

char const* Printable(char const* text) {
  return text != nullptr ? text : "(null)";
}

// A handler that traces may meet the same exception again: that isn't reported to it once more.
void CallHandler(TraceHandler handler, char const* file, char const* function, int line) {
  static thread_local bool t_telling = false;
  if (t_telling) return;
  const KeepErrno keep;
  const FlagScope telling(t_telling);
  Contain([&] { handler(file, function, line); });
}

}  // namespace

void DebugA(DWORD id, char const* format, ...) {
  va_list args;
  va_start(args, format);
  __DebugA(id, format, args);
  va_end(args);
}

void DebugW(DWORD id, wchar_t const* format, ...) {
  va_list args;
  va_start(args, format);
  __DebugW(id, format, args);
  va_end(args);
}

void _DebugA(char const* format, ...) {
  va_list args;
  va_start(args, format);
  __DebugA(kUnconditional, format, args);
  va_end(args);
}

void _DebugW(wchar_t const* format, ...) {
  va_list args;
  va_start(args, format);
  __DebugW(kUnconditional, format, args);
  va_end(args);
}

void SetDebugHooks(WideHook wideHook, NarrowHook narrowHook) {
  s_lpfndbgWHook.store(wideHook);
  s_lpfndbgAHook.store(narrowHook);
}

void SetExceptionHandlerCallback(TraceHandler handler) {
  s_lpfnTraceHandler.store(handler);
}

void ReportCaught(char const* function, int line) {
  const TraceHandler handler = s_lpfnTraceHandler.load();
  if (handler != nullptr) CallHandler(handler, "debug", function, line);
}

void TraceException(char const* file, char const* function, int line) {
  DebugA(kExceptionReport, kExceptionFormat, Printable(function), Printable(file), line);
}

void DebugTraceException(char const* file, char const* function, int line) {
  const TraceHandler handler = s_lpfnTraceHandler.load();
  if (handler != nullptr) return CallHandler(handler, file, function, line);
  _DebugA(kExceptionFormat, Printable(function), Printable(file), line);
}
