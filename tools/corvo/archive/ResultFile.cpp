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

bool IsEarlier(const ResultPlace& a, const ResultPlace& b) {
  return a.input < b.input;
}

}  // namespace

ResultFile::ResultFile(const std::string& path) : m_path(path), m_file(OpenReadOnly(path, 0)) {
  const std::optional<FileState> state = m_file.IsOpen() ? StateOf(m_file) : std::nullopt;
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
  if (!m_rest.empty() && m_rest.front() != '{') RefuseContent();
  Sort();
}

void ResultFile::RefuseContent() const {
  throw InputError(NameInLine(m_path), "holds other than results of \"corvo verify --json\"");
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
  if (!parsed || parsed->kind == ParsedLine::Kind::kResult) {
    RefuseContent();
  }
  m_options = parsed->totals.options;
  if (parsed->kind == ParsedLine::Kind::kTotals) m_totals = parsed->totals;
}

// Almost always they are in order: a journal isn't where files changed before it was resumed.
void ResultFile::Sort() {
  if (!std::is_sorted(m_places.begin(), m_places.end(), IsEarlier)) {
    std::stable_sort(m_places.begin(), m_places.end(), IsEarlier);
  }
  const auto isSame = [](const ResultPlace& a, const ResultPlace& b) { return a.input == b.input; };
  const auto first = std::unique(m_places.rbegin(), m_places.rend(), isSame).base();
  m_places.erase(m_places.begin(), first);
}

Result ResultFile::Read(const ResultPlace& place) const {
  std::string line(place.length, '\0');
  const ssize_t count = ::pread(m_file.Number(), line.data(), line.size(), place.offset);
  const bool whole = count == static_cast<ssize_t>(line.size());
  std::optional<ParsedLine> parsed = whole ? ParseJsonLine(line) : std::nullopt;
  if (!parsed || parsed->kind != ParsedLine::Kind::kResult) {
    throw InputError(NameInLine(m_path),
                     "the result for input " + std::to_string(place.input) + " can't be read");
  }
  return std::move(parsed->result);
}

}  // namespace corvo
