#ifndef TOOLS_CORVO_EVIDENCE_EXPLAIN_H
#define TOOLS_CORVO_EVIDENCE_EXPLAIN_H

#include <string>
#include <vector>

#include "engine/Examination.h"

namespace corvo {

// Something that is true of a recording whose verdict is not ok and that tells what became of it.
struct Explanation {
  std::string kind;    // a fixed word for programs, such as "flag-cleared"
  std::string expert;  // what was computed or compared
  std::string plain;   // what that means, for those who don't know the format
};

// Tries what commonly befalls recordings, each by computing the digest anew over a few other
// readings of the open file, and gives those that hold; where none does, what was tried. Empty: the
// verdict is ok, or nothing can be said.
std::vector<Explanation> Explain(int descriptor, const RecordingExamination& found);

}  // namespace corvo

#endif
