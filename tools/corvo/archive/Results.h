#ifndef TOOLS_CORVO_ARCHIVE_RESULTS_H
#define TOOLS_CORVO_ARCHIVE_RESULTS_H

#include <optional>
#include <string>

#include "engine/Examination.h"
#include "tools/corvo/archive/Inputs.h"
#include "tools/corvo/archive/ReadOnly.h"
#include "tools/corvo/archive/Verdicts.h"

namespace corvo {

// What a verification says about one input, and in all: as lines of text and of JSON, neither with
// its newline. docs/archive.md describes the JSON.

// What decides about results beside the files.
struct RunOptions {
  bool strict = false;
  bool throughHostCall = false;
  Shard shard;

  bool operator==(const RunOptions& other) const {
    return strict == other.strict && throughHostCall == other.throughHostCall &&
           shard.index == other.shard.index && shard.count == other.shard.count;
  }
};

struct Result {
  unsigned long long input = 0;
  std::string name;
  RecordingVerdict verdict = RecordingVerdict::kUnreadable;
  std::string reason;  // empty for kOk
  long long size = 0;
  std::string state;  // see StateText; empty where nobody can tell
  std::string json;   // all of it; empty unless asked for
};

struct RunTotals {
  RunOptions options;
  VerdictCounts counts;
  SeenInputs seen;  // of all shards
};

// Size, inode and times as one text: equal for one state of one file alone.
std::string StateText(const FileState& state);

// "call.wav: FAILED (broken: its digest is not the one that was sealed)"
std::string TextLine(const Result& result);

// "5 inputs: 3 ok, ...", "2 of 5 inputs (shard 1/4): ..."
std::string TextLine(const RunTotals& totals);

std::string JsonLine(const Result& result, const std::optional<FileState>& state,
                     const RecordingExamination& found);
std::string JsonLine(const RunTotals& totals);

// The first line of a journal.
std::string JsonLine(const RunOptions& options);

// One of these lines, read back.
struct ParsedLine {
  enum class Kind { kResult, kTotals, kOptions } kind;
  Result result;
  RunTotals totals;  // of kOptions the options alone
};

// Nothing for any other text.
std::optional<ParsedLine> ParseJsonLine(const std::string& line);

// The input's number alone, quickly; 0 for other than results, and for numbers that no run reaches.
unsigned long long InputOf(const std::string& jsonLine);

}  // namespace corvo

#endif
