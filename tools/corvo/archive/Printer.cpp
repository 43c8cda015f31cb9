// Prints results as the user wants to see them.

#include "tools/corvo/archive/Printer.h"

#include <iostream>

#include "tools/corvo/InputError.h"

namespace corvo {
namespace {

void PrintLine(const std::string& line) {
  if (!(std::cout << line << '\n')) throw InputError("the output can't be written");
}

}  // namespace

bool IsPrinted(const PrintPlan& plan, const Result& result) {
  return !plan.silent && !(plan.quiet && result.verdict == RecordingVerdict::kOk);
}

void Print(const PrintPlan& plan, const Result& result) {
  if (IsPrinted(plan, result)) PrintLine(plan.json ? result.json : TextLine(result));
}

void Print(const PrintPlan& plan, const RunTotals& totals) {
  if (!plan.silent) PrintLine(plan.json ? JsonLine(totals) : TextLine(totals));
}

}  // namespace corvo
