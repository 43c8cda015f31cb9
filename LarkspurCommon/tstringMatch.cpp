// Matching text with wildcards.
//
// The definition is recursive. Each star opens a level: the rest of the pattern, beginning with the
// star as a wildcard for one character, is tried at each start from the star's place on, and the
// first that matches counts. A literal is worth the length of the subject left where its level
// starts.

#include <algorithm>
#include <limits>

#include "LarkspurCommon/tstring.h"

namespace {

constexpr char kSource[] = "tstringMatch.cpp";
constexpr int kNoMatch = -1;
constexpr unsigned long long kLargestScore = std::numeric_limits<int>::max();

// What a level matches by itself: the pattern up to the star that opens the next one.
std::string_view LevelPattern(std::string_view pattern, bool afterStar) {
  return pattern.substr(0, pattern.find('*', afterStar ? 1 : 0));
}

}  // namespace

// The score of one level that starts where `subject` does; afterStar: a star opened it, and is the
// pattern's first character.
int tstring::InternalMatches(std::string_view subject, std::string_view pattern, bool afterStar) {
  if (subject.size() < pattern.size()) return kNoMatch;
  unsigned long long score = 0;
  for (std::size_t i = afterStar ? 1 : 0; i < pattern.size(); ++i) {
    if (pattern[i] == '?') {
      ++score;
    } else if (pattern[i] == subject[i]) {
      score += subject.size();
    } else {
      return kNoMatch;
    }
  }
  return static_cast<int>(std::min(score, kLargestScore));
}

// One level after the other rather than one inside the other, so that neither time nor stack grows
// with the ways to try. The first start at which a level itself matches is final: where the next
// star finds no match from there on, it finds none from further on either. The last level matches
// at the end of the subject or not at all.
int tstring::Matches(char const* pattern) const {
  if (!IsValidString(pattern, 0)) {
    Assert(kSource, __LINE__, "Invalid string passed to tstring::Matches");
    pattern = "";
  }
  tstring upperSubject(*this);
  tstring upperPattern(pattern);
  std::string_view subject = upperSubject.MakeUpper();
  std::string_view rest = upperPattern.MakeUpper();
  std::string_view level = LevelPattern(rest, false);
  int levelScore = InternalMatches(subject, level, false);
  unsigned long long score = 0;
  while (levelScore != kNoMatch && level.size() < rest.size()) {
    score += static_cast<unsigned int>(levelScore);
    subject.remove_prefix(level.size());
    rest.remove_prefix(level.size());
    level = LevelPattern(rest, true);
    const bool last = level.size() == rest.size();
    if (last && subject.size() > level.size()) subject.remove_prefix(subject.size() - level.size());
    while ((levelScore = InternalMatches(subject, level, true)) == kNoMatch &&
           subject.size() > level.size()) {
      subject.remove_prefix(1);
    }
  }
  if (levelScore == kNoMatch || subject.size() != level.size()) return kNoMatch;
  score += static_cast<unsigned int>(levelScore);
  return static_cast<int>(std::min(score, kLargestScore));
}
