#ifndef TOOLS_CORVO_EVIDENCE_EVIDENCEPAGE_H
#define TOOLS_CORVO_EVIDENCE_EVIDENCEPAGE_H

#include "tools/corvo/evidence/Evidence.h"
#include "tools/corvo/evidence/Page.h"

namespace corvo {

// A report as a page, for a court file.
Page ReportPage(const EvidenceReport& report);

// One recording for an expert at a terminal.
Page InspectionPage(const RecordingEvidence& evidence);

}  // namespace corvo

#endif
