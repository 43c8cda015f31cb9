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

}  // namespace file_layer

#endif
