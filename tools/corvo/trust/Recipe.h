#ifndef TOOLS_CORVO_TRUST_RECIPE_H
#define TOOLS_CORVO_TRUST_RECIPE_H

#include <string>

#include "tools/corvo/Commands.h"

namespace corvo {

// Prints a shell script of plain commands (dd, head, tail, printf, sha1sum) that recomputes the
// seal of a recording and compares it with the stored one. Nothing is printed for a recording
// without a seal that can be recomputed: stderr tells why, and the outcome is that of its verdict.
Outcome PrintRecipe(const std::string& name);

}  // namespace corvo

#endif
