#ifndef LARKSPURCOMMON_BOUNDARY_H
#define LARKSPURCOMMON_BOUNDARY_H

#include "LarkspurCommon/Contain.h"
#include "LarkspurCommon/debug.h"

// Where an operation ends for its caller: the source's name and the operation's signature, as an
// exception is reported.
struct Boundary {
  const char* source;
  const char* label;
  int line;
};

// Runs an operation's body and gives its result, or `otherwise` when the body throws: memory may
// run out, and a host's version of something that it called may throw.
template <class Result, class Body>
Result AtBoundary(const Boundary& boundary, Result otherwise, Body body) {
  Contain([&] { otherwise = body(); },
          [&] { TraceException(boundary.source, boundary.label, boundary.line); });
  return otherwise;
}

template <class Body>
void AtBoundary(const Boundary& boundary, Body body) {
  Contain(body, [&] { TraceException(boundary.source, boundary.label, boundary.line); });
}

#endif
