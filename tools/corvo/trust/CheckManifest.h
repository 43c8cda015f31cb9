#ifndef TOOLS_CORVO_TRUST_CHECKMANIFEST_H
#define TOOLS_CORVO_TRUST_CHECKMANIFEST_H

#include <string>

#include "tools/corvo/Commands.h"

namespace corvo {

struct CheckManifestPlan {
  std::string manifest;
  std::string directory;
  std::string previous;  // the manifest that it says was before it; empty: not looked at
  bool strict = false;   // files that aren't listed fail
  bool quiet = false;    // no lines for files that are as listed
  bool silent = false;   // print nothing
  unsigned jobs = 1;
};

// Holds every listed file against the directory, whatever becomes of any of them, and prints
// a line for each, then totals. kRefused: a file was altered, sealed again or is missing, or the
// manifest before is another one; kBadInput: a file can't be read. Throws InputError, and
// Interrupted after a signal.
Outcome CheckManifest(const CheckManifestPlan& plan);

}  // namespace corvo

#endif
