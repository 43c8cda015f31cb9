#ifndef TOOLS_CORVO_ARCHIVE_PRINTER_H
#define TOOLS_CORVO_ARCHIVE_PRINTER_H

#include <string>

#include "tools/corvo/archive/Results.h"

namespace corvo {

// What stands on standard output.
struct PrintPlan {
  bool json = false;
  bool quiet = false;   // without the lines of those that are ok
  bool silent = false;  // nothing at all
};

// A result's line is printed; false for one that the plan leaves out.
bool IsPrinted(const PrintPlan& plan, const Result& result);

// Throw InputError when standard output can't be written.
void Print(const PrintPlan& plan, const Result& result);
void Print(const PrintPlan& plan, const RunTotals& totals);

}  // namespace corvo

#endif
