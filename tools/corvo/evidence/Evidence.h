#ifndef TOOLS_CORVO_EVIDENCE_EVIDENCE_H
#define TOOLS_CORVO_EVIDENCE_EVIDENCE_H

#include <optional>
#include <string>
#include <vector>

#include "engine/Examination.h"
#include "tools/corvo/Metadata.h"
#include "tools/corvo/UtcTime.h"
#include "tools/corvo/evidence/Coverage.h"
#include "tools/corvo/evidence/Explain.h"
#include "tools/corvo/evidence/SelfTest.h"
#include "tools/corvo/evidence/Waveform.h"

namespace corvo {

// All that is found out about one recording, as plain data. Texts that come from it hold any byte.
struct RecordingEvidence {
  std::string name;
  RecordingExamination found;
  std::string modified;       // UTC; this and the next three are empty if it couldn't be read
  std::string statusChanged;  // UTC: the last change of content, name, owner or permissions
  std::string startTime;      // UTC; empty where it holds none
  std::string sha256;         // of the whole file
  std::vector<Explanation> explanations;
  std::vector<CoveredRange> coverage;
  std::vector<Item> metadata;  // of sealed and other records alike; empty without one
  std::optional<Waveform> waveform;

  // Whether anything can be said of it: it could be read, and stood still meanwhile.
  bool IsConclusive() const {
    return found.verdict != RecordingVerdict::kUnreadable &&
           found.verdict != RecordingVerdict::kChanged;
  }
  bool IsSealed() const { return found.hasRecord && found.record.dwSigned == 1; }
  bool StoresDigest() const;
  bool DigestsAgree() const;
};

// What a report says of the program that wrote it.
struct ReportingTool {
  std::string version;
  std::string programBuildId;
  std::string libraryBuildId;
  std::vector<KnownAnswer> selfTest;

  bool Passed() const;
};

struct EvidenceReport {
  ReportTime time;
  ReportingTool tool;
  bool waveformAsked = false;
  std::vector<RecordingEvidence> recordings;
};

// Examines the file, reading it as often as that takes; a change meanwhile is noticed, and leaves
// nothing but the verdict. What it finds amiss is part of the evidence.
RecordingEvidence GatherEvidence(const std::string& name, bool withWaveform);

ReportingTool DescribeTool();

}  // namespace corvo

#endif
