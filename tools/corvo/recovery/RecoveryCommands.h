#ifndef TOOLS_CORVO_RECOVERY_RECOVERYCOMMANDS_H
#define TOOLS_CORVO_RECOVERY_RECOVERYCOMMANDS_H

#include <CLI/CLI.hpp>
#include <functional>

#include "tools/corvo/Commands.h"

namespace corvo {

// Adds the command for what a crash has left. It sets `run`.
void AddRecovery(CLI::App& app, std::function<Outcome()>& run);

}  // namespace corvo

#endif
