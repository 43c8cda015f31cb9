#ifndef TOOLS_CORVO_EVIDENCE_WORDING_H
#define TOOLS_CORVO_EVIDENCE_WORDING_H

#include <string>
#include <vector>

#include "tools/corvo/evidence/Evidence.h"

namespace corvo {

// The sentences of a report, the same in all its forms. They must bear being read out in court:
// each says what was computed, or what follows from it.

// What the verdict means, for those who have never heard of the format.
std::string PlainVerdict(const RecordingEvidence& evidence);

// What stands beside that which an intact seal covers, and might be taken for it; empty where
// nothing does.
std::string Warning(const RecordingEvidence& evidence);

// How the verdict was found, what it can't show, and how to find it without this program.
std::vector<std::string> Method();
std::vector<std::string> Limits();
std::vector<std::string> WithoutThisProgram();
const char* CommandsWithoutThisProgram();

// What comparing the stored digest with the computed one gave, or why they weren't compared.
std::string DigestStatement(const RecordingEvidence& evidence);

// Above and below the map of what the seal covers, or in its place.
std::string CoverageTitle(const RecordingEvidence& evidence);
std::string CoverageNote(const RecordingEvidence& evidence);

// Why there is a waveform, or why not.
const char* WaveformNote(bool asked);

// A metadata item by what it holds, as far as that is known: "Duration", "Call detail 7".
std::string ItemLabel(const Item& item);

const char* DigestInputWord(DigestInput taken);

}  // namespace corvo

#endif
