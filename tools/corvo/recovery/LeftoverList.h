#ifndef TOOLS_CORVO_RECOVERY_LEFTOVERLIST_H
#define TOOLS_CORVO_RECOVERY_LEFTOVERLIST_H

#include <string>

#include "tools/corvo/Commands.h"

namespace corvo {

// Lists what a crash has left in a temporary directory, with whose each complete recording is. As
// JSON: one object a line. kFine: nothing; kRefused: something; kBadInput: something that can't be
// read. Throws InputError when the directory can't be.
Outcome ListLeftovers(const std::string& directory, bool json);

}  // namespace corvo

#endif
