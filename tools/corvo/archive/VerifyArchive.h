#ifndef TOOLS_CORVO_ARCHIVE_VERIFYARCHIVE_H
#define TOOLS_CORVO_ARCHIVE_VERIFYARCHIVE_H

#include <string>

#include "tools/corvo/Commands.h"
#include "tools/corvo/archive/Inputs.h"
#include "tools/corvo/archive/Printer.h"
#include "tools/corvo/archive/Results.h"

namespace corvo {

struct VerifyPlan {
  InputPlan inputs;
  RunOptions options;
  PrintPlan print;
  unsigned jobs = 1;
  std::string journal;  // empty: none
};

// Verifies all inputs, whatever becomes of any of them, and prints results and totals: the same
// bytes for any number of jobs, and whether or not the run was interrupted before. Throws
// InputError, and Interrupted after a signal.
Outcome VerifyArchive(const VerifyPlan& plan);

}  // namespace corvo

#endif
