// Any subject and pattern, against the recursive definition of a match. The fuzzer's limit of time
// finds those that take longer than the product of both lengths.

#include <cctype>
#include <map>
#include <utility>

#include "LarkspurCommon/tstring.h"
#include "Target.h"

namespace {

constexpr int kNoMatch = -1;

// Each star opens a level: the rest of the pattern, its first character the star as a wildcard for
// one, is tried at each start from there on. What a level gave at a start is remembered, or the
// model would never end.
class Model {
 public:
  Model(std::string subject, std::string pattern)
      : m_subject(std::move(subject)), m_pattern(std::move(pattern)) {}

  int Score() { return Compute(0, 0, false); }

 private:
  static bool SameLetter(char left, char right) {
    return std::toupper(static_cast<unsigned char>(left)) ==
           std::toupper(static_cast<unsigned char>(right));
  }

  int StarLevel(std::size_t start, std::size_t at) {
    const auto known = m_known.find({start, at});
    if (known != m_known.end()) return known->second;
    return m_known[{start, at}] = Compute(start, at, true);
  }

  int Compute(std::size_t start, std::size_t at, bool afterStar) {
    const int worth = static_cast<int>(m_subject.size() - start);
    int score = 0;
    std::size_t reached = start;
    for (bool isWildcard = afterStar; at < m_pattern.size(); ++at, ++reached, isWildcard = false) {
      if (m_pattern[at] == '*' && !isWildcard) {
        const int rest = FirstLevel(reached, at);
        return rest == kNoMatch ? kNoMatch : score + rest;
      }
      if (reached == m_subject.size()) return kNoMatch;
      if (isWildcard) continue;
      if (m_pattern[at] == '?') {
        ++score;
      } else if (SameLetter(m_pattern[at], m_subject[reached])) {
        score += worth;
      } else {
        return kNoMatch;
      }
    }
    return reached == m_subject.size() ? score : kNoMatch;
  }

  int FirstLevel(std::size_t from, std::size_t at) {
    for (std::size_t start = from; start < m_subject.size(); ++start) {
      const int score = StarLevel(start, at);
      if (score != kNoMatch) return score;
    }
    return kNoMatch;
  }

  const std::string m_subject;
  const std::string m_pattern;
  std::map<std::pair<std::size_t, std::size_t>, int> m_known;
};

std::string Repeated(const std::string& text, unsigned times) {
  std::string repeated;
  for (unsigned i = 0; i < times; ++i) repeated += text;
  return repeated;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  const unsigned times = 1 + input.Byte();
  const std::string pattern = input.Text();
  std::string subject = input.Rest();
  subject.resize(subject.find('\0') == std::string::npos ? subject.size() : subject.find('\0'));

  Require(tstring(subject).Matches(pattern.c_str()) == Model(subject, pattern).Score(),
          "the score of the definition");
  const std::string longPattern = Repeated(pattern, times);
  const int score = tstring(Repeated(subject, times)).Matches(longPattern.c_str());
  Require(score >= kNoMatch, "a score is not negative");
  return 0;
}
