#ifndef TOOLS_CORVO_ARCHIVE_ARCHIVECOMMANDS_H
#define TOOLS_CORVO_ARCHIVE_ARCHIVECOMMANDS_H

#include <CLI/CLI.hpp>
#include <functional>

#include "tools/corvo/Commands.h"

namespace corvo {

// Add the commands for archives. The one that is named sets `run`; or `runAsHost`, when it calls
// the library as its host process.
void AddVerify(CLI::App& app, std::function<Outcome()>& run, std::function<Outcome()>& runAsHost);
void AddSummary(CLI::App& app, std::function<Outcome()>& run);

}  // namespace corvo

#endif
