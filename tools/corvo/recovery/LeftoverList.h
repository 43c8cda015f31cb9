#ifndef TOOLS_CORVO_RECOVERY_LEFTOVERLIST_H
#define TOOLS_CORVO_RECOVERY_LEFTOVERLIST_H

#include <string>

#include "tools/corvo/Commands.h"

namespace corvo {

struct LeftoverListPlan {
  std::string directory;    // also as a server's settings spell it
  bool json = false;        // one object a line, and the totals
  long long olderThan = 0;  // seconds; younger files are recent
};

// Prints what stands in a temporary directory, in bytewise order of the names, and changes nothing.
// kFine: nothing that wants attention; what is recent and incomplete doesn't, since a server makes
// such files all the time. Throws InputError where the directory can't be read.
Outcome ListLeftovers(const LeftoverListPlan& plan);

}  // namespace corvo

#endif
