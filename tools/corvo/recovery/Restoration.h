#ifndef TOOLS_CORVO_RECOVERY_RESTORATION_H
#define TOOLS_CORVO_RECOVERY_RESTORATION_H

#include <string>

#include "tools/corvo/Commands.h"

namespace corvo {

struct RestorationPlan {
  std::string file;
  std::string target;
  long long olderThan = 0;  // seconds; younger files are left to the server
};

// Gives a complete leftover its recording's name; an existing file is never replaced. Both are on
// disk before the leftover's own name goes, and until then nothing can be lost. Permissions, owner
// and modification time stay what they are. kRefused: it isn't complete, or it is recent. Throws
// InputError, and Interrupted while it copies to another file system.
Outcome Restore(const RestorationPlan& plan);

}  // namespace corvo

#endif
