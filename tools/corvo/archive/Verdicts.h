#ifndef TOOLS_CORVO_ARCHIVE_VERDICTS_H
#define TOOLS_CORVO_ARCHIVE_VERDICTS_H

#include <array>
#include <optional>
#include <string>

#include "engine/Examination.h"
#include "tools/corvo/Commands.h"

namespace corvo {

constexpr RecordingVerdict kVerdicts[] = {
    RecordingVerdict::kOk,        RecordingVerdict::kBroken,     RecordingVerdict::kUnsealed,
    RecordingVerdict::kMalformed, RecordingVerdict::kUnreadable, RecordingVerdict::kChanged};

// "ok", "broken", "unsealed", "malformed", "unreadable", "changed": the same words everywhere.
const char* VerdictWord(RecordingVerdict verdict);
std::optional<RecordingVerdict> ParseVerdict(const std::string& word);

// kRefused for what is negative about a recording, kBadInput where nothing can be said about it.
Outcome OutcomeOf(RecordingVerdict verdict);

// How many recordings got each verdict.
class VerdictCounts {
 public:
  void Add(RecordingVerdict verdict);
  unsigned long long Of(RecordingVerdict verdict) const;
  unsigned long long All() const;

  // The worst of all verdicts.
  Outcome Worst() const;

  // "3 ok, 1 broken, 0 unsealed, 1 malformed, 0 unreadable, 0 changed"
  std::string Text() const;

 private:
  std::array<unsigned long long, std::size(kVerdicts)> m_counts{};
};

}  // namespace corvo

#endif
