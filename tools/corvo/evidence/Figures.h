#ifndef TOOLS_CORVO_EVIDENCE_FIGURES_H
#define TOOLS_CORVO_EVIDENCE_FIGURES_H

#include <vector>

#include "tools/corvo/evidence/Coverage.h"
#include "tools/corvo/evidence/Page.h"
#include "tools/corvo/evidence/Waveform.h"

namespace corvo {

// The whole file as a bar to scale and, where the audio would leave no room for the rest, what
// stands before the audio as a second one, to its own scale. `ranges` isn't empty.
Figure DrawCoverage(const std::vector<CoveredRange>& ranges, const std::string& title);

// The envelope, row by row, each with its own stretch of time.
Figure DrawWaveform(const Waveform& waveform);

// "0:01:05"
std::string ClockText(LONGLONG seconds);

}  // namespace corvo

#endif
