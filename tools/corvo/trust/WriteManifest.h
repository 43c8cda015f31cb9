#ifndef TOOLS_CORVO_TRUST_WRITEMANIFEST_H
#define TOOLS_CORVO_TRUST_WRITEMANIFEST_H

#include <string>

#include "tools/corvo/Commands.h"

namespace corvo {

struct WriteManifestPlan {
  std::string directory;
  std::string output;    // "-": standard output
  bool force = false;    // replace an existing file
  std::string previous;  // the manifest before; empty: none
  unsigned jobs = 1;
};

// Lists every file below the directory: the same bytes for the same files, whenever and with
// however many jobs. A file that can't be listed is told on stderr, and then the manifest isn't
// completed: nothing appears under the output's name, and standard output lacks the last line.
// Throws InputError, and Interrupted after a signal.
Outcome WriteManifest(const WriteManifestPlan& plan);

}  // namespace corvo

#endif
