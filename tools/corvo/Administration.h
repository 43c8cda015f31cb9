#ifndef TOOLS_CORVO_ADMINISTRATION_H
#define TOOLS_CORVO_ADMINISTRATION_H

#include <CLI/CLI.hpp>
#include <functional>

#include "tools/corvo/Commands.h"

namespace corvo {

// Adds the commands for a server's settings and its trace. The one that is named sets `run`.
void AddAdministration(CLI::App& app, std::function<Outcome()>& run);

}  // namespace corvo

#endif
