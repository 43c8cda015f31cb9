#ifndef TOOLS_CORVO_EVIDENCE_COVERAGE_H
#define TOOLS_CORVO_EVIDENCE_COVERAGE_H

#include <string>
#include <vector>

#include "engine/Examination.h"

namespace corvo {

enum class Protection {
  kCovered,  // any change breaks the seal
  kFixed,    // leads the reading: another value breaks the seal too, or the recording isn't found,
             // unless it leads to the same bytes
  kSeal,     // the flag and the digest themselves
  kOpen,     // may change without breaking the seal
};

struct CoveredRange {
  LONGLONG offset;
  LONGLONG size;
  Protection protection;
  std::string what;
};

// The whole of a recording, range by range in the order of the file, by its own offsets. Empty for
// a file whose record or audio can't be found.
std::vector<CoveredRange> FindCoverage(const RecordingExamination& found);

// How many bytes of the file are protected so.
LONGLONG CountBytes(const std::vector<CoveredRange>& ranges, Protection protection);

const char* ProtectionWord(Protection protection);

}  // namespace corvo

#endif
