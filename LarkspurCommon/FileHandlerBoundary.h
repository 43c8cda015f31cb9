#ifndef LARKSPURCOMMON_FILEHANDLERBOUNDARY_H
#define LARKSPURCOMMON_FILEHANDLERBOUNDARY_H

#include "LarkspurCommon/Boundary.h"

namespace file_layer {

template <class Result, class Body>
Result AtBoundary(const char* label, int line, Result otherwise, Body body) {
  return ::AtBoundary({"FileHandler", label, line}, otherwise, body);
}

template <class Body>
void AtBoundary(const char* label, int line, Body body) {
  ::AtBoundary({"FileHandler", label, line}, body);
}

// As AtBoundary, for what moves a file's data: whoever looks only at the file afterwards must see
// there, in `failed`, that something was thrown.
template <class Body>
bool AtDataBoundary(const char* label, int line, bool& failed, Body body) {
  bool thrown = true;
  const bool ok = AtBoundary(label, line, false, [&] {
    const bool result = body();
    thrown = false;
    return result;
  });
  if (thrown) failed = true;
  return ok;
}

}  // namespace file_layer

#endif
