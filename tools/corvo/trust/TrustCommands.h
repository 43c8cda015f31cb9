#ifndef TOOLS_CORVO_TRUST_TRUSTCOMMANDS_H
#define TOOLS_CORVO_TRUST_TRUSTCOMMANDS_H

#include <CLI/CLI.hpp>
#include <functional>

#include "tools/corvo/Commands.h"

namespace corvo {

// Adds the commands for those who take nobody's word. The one that is named sets `run`.
void AddTrust(CLI::App& app, std::function<Outcome()>& run);

}  // namespace corvo

#endif
