#ifndef TOOLS_CORVO_RECOVERY_REMOVAL_H
#define TOOLS_CORVO_RECOVERY_REMOVAL_H

#include <string>
#include <vector>

#include "tools/corvo/Commands.h"

namespace corvo {

struct RemovalPlan {
  std::vector<std::string> files;
  std::string sealedAs;     // where the recording of those that hold a seal is; may be empty
  long long olderThan = 0;  // seconds; younger files are left to the server
};

// Removes incomplete leftovers. One that holds a seal goes only where `sealedAs` is the same
// recording: another file, intact, on disk, with the same digest and start time. Does every file,
// whatever becomes of the others. kRefused: one was not removed.
Outcome Remove(const RemovalPlan& plan);

}  // namespace corvo

#endif
