// Reads files of results.

#include "tools/corvo/archive/ResultFile.h"

#include <errno.h>
#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "tools/corvo/InputError.h"
#include "tools/corvo/archive/Names.h"
#include "tools/corvo/archive/ReadOnly.h"

namespace corvo {
namespace {

bool HoldsOnlyZeros(const std::string& bytes) {
  return bytes.find_first_not_of('\0') == std::string::npos;
}

bool IsEarlier(const ResultPlace& a, const ResultPlace& b) {
  return a.input < b.input;
}

}  // namespace

ResultFile::ResultFile(const std::string& path) : m_path(path) {
  const std::optional<FileState> state = StateOf(path);
  if (!state) throw InputError(NameInLine(path), ErrorText(errno));
  if (!S_ISREG(state->mode)) throw InputError(NameInLine(path), "is not a regular file");
  std::ifstream stream(path, std::ios::binary);
  std::string line;
  while (std::getline(stream, line)) {
    if (stream.eof()) {
      m_rest = line;
    } else {
      TakeLine(line);
    }
  }
  if (stream.bad() || !stream.eof()) throw InputError(NameInLine(path), "can't be read");
  // A power failure may leave the file its length, without its last bytes.
  if (!HoldsOnlyZeros(m_rest) && m_rest.front() != '{') RefuseContent();
  Sort();
}

void ResultFile::RefuseContent() const {
  throw InputError(NameInLine(m_path), "holds other than results of \"corvo verify --json\"");
}

void ResultFile::RefuseSeveralRuns() const {
  throw InputError(NameInLine(m_path), "holds several runs");
}

void ResultFile::TakeLine(const std::string& line) {
  const long long offset = m_wholeSize;
  m_wholeSize += static_cast<long long>(line.size()) + 1;
  if (const unsigned long long input = InputOf(line); input != 0) {
    m_places.push_back({input, offset, line.size()});
    m_totals.reset();
    return;
  }
  const std::optional<ParsedLine> parsed = ParseJsonLine(line);
  if (!parsed || parsed->kind == ParsedLine::Kind::kResult) RefuseContent();
  TakeOptions(parsed->totals.options);
  if (parsed->kind == ParsedLine::Kind::kTotals) {
    TakeTotals(parsed->totals);
  } else if (offset == 0) {
    m_isJournal = true;
  }
}

void ResultFile::TakeOptions(const RunOptions& options) {
  if (m_options && !(*m_options == options)) RefuseSeveralRuns();
  m_options = options;
}

// There are fewer inputs than there were when a journal was begun; elsewhere, another run's results
// stand before these.
void ResultFile::TakeTotals(const RunTotals& totals) {
  const auto isGone = [&totals](const ResultPlace& p) { return p.input > totals.seen.count; };
  const auto gone = std::remove_if(m_places.begin(), m_places.end(), isGone);
  if (gone != m_places.end() && !m_isJournal) RefuseSeveralRuns();
  m_places.erase(gone, m_places.end());
  m_totals = totals;
}

// Whether two lines are about one input, the later one being true. Two about different inputs of
// one number are of several runs. A damaged line may be about any.
bool ResultFile::IsReplaced(const ResultPlace& earlier, const ResultPlace& later) const {
  if (earlier.input != later.input) return false;
  const std::optional<Result> before = TryRead(earlier);
  const std::optional<Result> after = TryRead(later);
  if (before && after && before->name != after->name) RefuseSeveralRuns();
  return true;
}

// Almost always they are in order: a journal isn't where files changed before it was resumed.
void ResultFile::Sort() {
  if (!std::is_sorted(m_places.begin(), m_places.end(), IsEarlier)) {
    std::stable_sort(m_places.begin(), m_places.end(), IsEarlier);
  }
  const auto isReplaced = [this](const ResultPlace& later, const ResultPlace& earlier) {
    return IsReplaced(earlier, later);
  };
  const auto first = std::unique(m_places.rbegin(), m_places.rend(), isReplaced).base();
  m_places.erase(m_places.begin(), first);
}

std::optional<Result> ResultFile::TryRead(const ResultPlace& place) const {
  const Descriptor file = OpenReadOnly(m_path, 0);
  std::string line(place.length, '\0');
  const ssize_t count = ::pread(file.Number(), line.data(), line.size(), place.offset);
  if (count != static_cast<ssize_t>(line.size())) return std::nullopt;
  std::optional<ParsedLine> parsed = ParseJsonLine(line);
  if (!parsed || parsed->kind != ParsedLine::Kind::kResult) return std::nullopt;
  if (parsed->result.input != place.input) return std::nullopt;
  return std::move(parsed->result);
}

Result ResultFile::Read(const ResultPlace& place) const {
  std::optional<Result> result = TryRead(place);
  if (result) return *std::move(result);
  throw InputError(NameInLine(m_path),
                   "the result for input " + std::to_string(place.input) + " can't be read");
}

}  // namespace corvo
