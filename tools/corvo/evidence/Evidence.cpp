// Gathers what is to be said about a recording.

#include "tools/corvo/evidence/Evidence.h"

#include <algorithm>
#include <cstring>

#include "tools/corvo/UtcTime.h"
#include "tools/corvo/archive/Check.h"
#include "tools/corvo/archive/FileDigest.h"
#include "tools/corvo/evidence/BuildId.h"

namespace corvo {
namespace {

int ReadTheRest(const RecordingFile& file, bool withWaveform, RecordingEvidence& evidence) {
  const RecordingExamination& found = evidence.found;
  const int error = DigestFile(file.File(), found.fileSize, evidence.sha256);
  if (error != 0 || !withWaveform || !found.hasAudio) return error;
  const LONGLONG there = LONGLONG{found.audioSize} - found.missingAudio;
  return DecodeWaveform(file.File(), found.audioOffset, there, evidence.waveform.emplace());
}

// The record's own items; SealedItems takes for granted that it is sealed.
std::vector<Item> ItemsOf(const RecordingEvidence& evidence) {
  if (!evidence.found.hasRecord) return {};
  std::vector<Item> items = SealedItems(evidence.found.record);
  for (Item& item : items) {
    if (item.name == "dwSigned") item.value = evidence.IsSealed() ? "Yes" : "No";
  }
  return items;
}

void Describe(const RecordingFile& file, RecordingEvidence& evidence) {
  if (file.State()) {
    evidence.modified = UtcText(file.State()->modified);
    evidence.statusChanged = UtcText(file.State()->statusChanged);
  }
  if (evidence.found.startTime > 0) evidence.startTime = UtcTextOfTicks(evidence.found.startTime);
  evidence.coverage = FindCoverage(evidence.found);
  evidence.metadata = ItemsOf(evidence);
}

// What was found belongs to no single state of the file.
RecordingEvidence VerdictAlone(const RecordingEvidence& evidence) {
  RecordingEvidence bare;
  bare.name = evidence.name;
  bare.found.verdict = evidence.found.verdict;
  bare.found.reason = evidence.found.reason;
  return bare;
}

}  // namespace

bool RecordingEvidence::StoresDigest() const {
  const unsigned char* const stored = found.record.bySignature;
  return found.hasRecord &&
         (IsSealed() || std::any_of(stored, stored + kDigestSize, [](int byte) { return byte; }));
}

bool RecordingEvidence::DigestsAgree() const {
  return found.hasDigest &&
         std::memcmp(found.storedDigest, found.computedDigest, sizeof found.storedDigest) == 0;
}

bool ReportingTool::Passed() const {
  return std::all_of(selfTest.begin(), selfTest.end(),
                     [](const KnownAnswer& answer) { return answer.Passed(); });
}

RecordingEvidence GatherEvidence(const std::string& name, bool withWaveform) {
  RecordingEvidence evidence;
  evidence.name = name;
  const RecordingFile file(name);
  const auto examine = [&](const RecordingFile& opened, RecordingExamination& found) {
    Examine(opened, found);
    if (found.verdict == RecordingVerdict::kUnreadable) return;
    Describe(opened, evidence);
    evidence.explanations = Explain(opened.File().Number(), found);
    const int error = ReadTheRest(opened, withWaveform, evidence);
    if (error == 0) return;
    found.verdict = RecordingVerdict::kUnreadable;
    found.reason = ErrorText(error);
  };
  Check(file, evidence.found, examine);
  return evidence.IsConclusive() ? evidence : VerdictAlone(evidence);
}

ReportingTool DescribeTool() {
  return {CORVO_VERSION, ProgramBuildId(), LibraryBuildId(), RunSelfTest()};
}

}  // namespace corvo
