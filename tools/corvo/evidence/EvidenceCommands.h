#ifndef TOOLS_CORVO_EVIDENCE_EVIDENCECOMMANDS_H
#define TOOLS_CORVO_EVIDENCE_EVIDENCECOMMANDS_H

#include <CLI/CLI.hpp>
#include <functional>

#include "tools/corvo/Commands.h"

namespace corvo {

// Adds the commands that show what a verdict rests on. The one that is named sets `run`.
void AddEvidence(CLI::App& app, std::function<Outcome()>& run);

}  // namespace corvo

#endif
