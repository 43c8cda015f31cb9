#ifndef LARKSPURCOMMON_FILEHANDLERBOUNDARY_H
#define LARKSPURCOMMON_FILEHANDLERBOUNDARY_H

#include <cxxabi.h>

#include "LarkspurCommon/debug.h"

namespace file_layer {

// Runs an operation's body and gives its result, or `otherwise` when the body throws: a host's
// version of something that it called may. Only a cancelled thread unwinds further.
template <class Result, class Body>
Result AtBoundary(const char* label, int line, Result otherwise, Body body) {
  try {
    return body();
  } catch (abi::__forced_unwind&) {
    throw;
  } catch (...) {
    TraceException("FileHandler", label, line);
  }
  return otherwise;
}

template <class Body>
void AtBoundary(const char* label, int line, Body body) {
  AtBoundary(label, line, false, [&] {
    body();
    return true;
  });
}

}  // namespace file_layer

#endif
