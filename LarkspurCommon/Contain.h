#ifndef LARKSPURCOMMON_CONTAIN_H
#define LARKSPURCOMMON_CONTAIN_H

#include <cxxabi.h>

// Runs `body`. What it throws is dropped once `caught` has run, inside the handler. Only a
// cancelled thread goes on unwinding: were it swallowed, the C library would abort the host.
template <class Body, class Caught>
void Contain(Body body, Caught caught) {
  try {
    body();
  } catch (abi::__forced_unwind&) {
    throw;
  } catch (...) {
    caught();
  }
}

template <class Body>
void Contain(Body body) {
  Contain(body, [] {});
}

#endif
