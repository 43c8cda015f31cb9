#ifndef TOOLS_CORVO_ARCHIVE_SUMMARY_H
#define TOOLS_CORVO_ARCHIVE_SUMMARY_H

#include <string>
#include <vector>

#include "tools/corvo/Commands.h"
#include "tools/corvo/archive/Printer.h"

namespace corvo {

// Puts the results of several runs (their JSON output, or their journals) together, and prints
// what one run over everything would have printed. What is missing, there twice or doesn't fit
// together is told on stderr and is kBadInput. Throws InputError for what are no results.
Outcome Summarize(const std::vector<std::string>& files, const PrintPlan& plan);

}  // namespace corvo

#endif
