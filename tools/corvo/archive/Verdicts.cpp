// The vocabulary of verdicts.

#include "tools/corvo/archive/Verdicts.h"

#include <algorithm>
#include <numeric>

namespace corvo {
namespace {

struct Row {
  const char* word;
  Outcome outcome;
};

// In the order of RecordingVerdict.
constexpr Row kRows[] = {
    {"ok", Outcome::kFine},
    {"broken", Outcome::kRefused},
    {"unsealed", Outcome::kRefused},
    {"malformed", Outcome::kRefused},
    {"unreadable", Outcome::kBadInput},
    {"changed", Outcome::kBadInput},
};
static_assert(std::size(kRows) == std::size(kVerdicts));

std::size_t Index(RecordingVerdict verdict) {
  return static_cast<std::size_t>(verdict);
}

}  // namespace

const char* VerdictWord(RecordingVerdict verdict) {
  return kRows[Index(verdict)].word;
}

std::optional<RecordingVerdict> ParseVerdict(const std::string& word) {
  const auto found = std::find_if(std::begin(kVerdicts), std::end(kVerdicts),
                                  [&](RecordingVerdict v) { return word == VerdictWord(v); });
  if (found == std::end(kVerdicts)) return std::nullopt;
  return *found;
}

Outcome OutcomeOf(RecordingVerdict verdict) {
  return kRows[Index(verdict)].outcome;
}

void VerdictCounts::Add(RecordingVerdict verdict) {
  ++m_counts[Index(verdict)];
}

unsigned long long VerdictCounts::Of(RecordingVerdict verdict) const {
  return m_counts[Index(verdict)];
}

unsigned long long VerdictCounts::All() const {
  return std::accumulate(m_counts.begin(), m_counts.end(), 0ULL);
}

Outcome VerdictCounts::Worst() const {
  Outcome worst = Outcome::kFine;
  for (const RecordingVerdict verdict : kVerdicts) {
    if (Of(verdict) != 0) worst = std::max(worst, OutcomeOf(verdict));
  }
  return worst;
}

std::string VerdictCounts::Text() const {
  std::string text;
  for (const RecordingVerdict verdict : kVerdicts) {
    text += (text.empty() ? "" : ", ") + std::to_string(Of(verdict)) + ' ' + VerdictWord(verdict);
  }
  return text;
}

}  // namespace corvo
