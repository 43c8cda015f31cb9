#ifndef ENGINE_OPERATION_H
#define ENGINE_OPERATION_H

#include <cxxabi.h>

#include "LarkspurCommon/XTTime.h"
#include "LarkspurCommon/debug.h"

// Trace identifiers of the engine.
constexpr DWORD kTraceFailure = 0x00270002;
constexpr DWORD kTraceCall = 0x00270008;

// One of the engine's operations as its trace lines and exception reports name it.
struct Operation {
  const char* name;
  const char* signature;  // first text of every failure line
  int line;               // given with an exception report
};

constexpr Operation kCreateSignature{
    "CreateSignature",
    "bool VerifyRecording::CreateSignature(const TCHAR*, UWORD, LONGLONG*, LONGLONG*)", 187};
constexpr Operation kVerifySignature{"VerifySignature",
                                     "bool VerifyRecording::VerifySignature(const TCHAR*)", 297};
constexpr Operation kIsSignaturePresent{
    "IsSignaturePresent", "bool VerifyRecording::IsSignaturePresent(const TCHAR*)", 336};
constexpr Operation kGetRecordingProperty{
    "GetRecordingProperty", "bool VerifyRecording::GetRecordingProperty(const TCHAR*, TCHAR*)",
    395};

// Runs a body and reports an exception that leaves it. The body keeps its result outside, so that
// what it had reached survives.
template <class Body>
void ReportExceptions(const Operation& operation, Body body) {
  try {
    body();
  } catch (abi::__forced_unwind&) {
    throw;  // a cancelled thread goes on unwinding: swallowed, the C library aborts the host
  } catch (...) {
    TraceException("CorvoVerifiedRecording", operation.signature, operation.line);
  }
}

// The frame of the operations that trace their call: entry line, body, exit line with the elapsed
// time. The body gets the result by reference.
template <class Body>
bool RunOperation(const Operation& operation, const char* path, Body body) {
  DebugA(kTraceCall, "> %s(\"%s\")", operation.name, path);
  bool result = false;
  unsigned long start = 0;
  unsigned long elapsed = 0;
  ReportExceptions(operation, [&] {
    start = os_clock();
    body(result);
  });
  ReportExceptions(operation, [&] {
    elapsed = static_cast<DWORD>(os_clock() - start);  // survives a clock's wrap
  });
  DebugA(kTraceCall, "< %s(\"%s\") - returning %s and took %lums", operation.name, path,
         result ? "true" : "false", elapsed);
  return result;
}

// The failure lines that several operations share.
inline void TraceError(const Operation& operation, const char* error) {
  DebugA(kTraceFailure, "%s - error \"%s\" has occurred.", operation.signature, error);
}

inline void TraceNoRecord(const Operation& operation, const char* path) {
  DebugA(kTraceFailure, "%s - no NA_INFO is found within the file \"%s\".", operation.signature,
         path);
}

#endif
