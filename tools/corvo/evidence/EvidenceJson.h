#ifndef TOOLS_CORVO_EVIDENCE_EVIDENCEJSON_H
#define TOOLS_CORVO_EVIDENCE_EVIDENCEJSON_H

#include <string>

#include "tools/corvo/evidence/Evidence.h"

namespace corvo {

// For programs: objects of the same shape whatever the verdict, null where nothing is known. What
// the results of a verification have too bears the same name; texts of the recording are as Visible
// gives them.

// A whole report, indented.
std::string ReportJson(const EvidenceReport& report);

// One recording on one line.
std::string RecordingJson(const RecordingEvidence& evidence);

}  // namespace corvo

#endif
