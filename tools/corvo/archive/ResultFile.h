#ifndef TOOLS_CORVO_ARCHIVE_RESULTFILE_H
#define TOOLS_CORVO_ARCHIVE_RESULTFILE_H

#include <optional>
#include <string>
#include <vector>

#include "tools/corvo/archive/Results.h"

namespace corvo {

// Where the result for an input stands in a file.
struct ResultPlace {
  unsigned long long input;
  long long offset;
  std::size_t length;  // of the line, without its newline
};

// A file of results as `corvo verify --json` or a journal has them. Only places are held in
// memory, and no descriptor: there may be more files than a process can have open. Constant, so any
// thread may read from it.
class ResultFile {
 public:
  // Throws InputError: the file can't be read, or holds something else.
  explicit ResultFile(const std::string& path);

  const std::string& Path() const { return m_path; }

  // In the order of the inputs, each once: a later line replaces an earlier one.
  const std::vector<ResultPlace>& Places() const { return m_places; }

  // Nothing where the line is damaged. Read throws InputError then.
  std::optional<Result> TryRead(const ResultPlace& place) const;
  Result Read(const ResultPlace& place) const;

  // Of the journal's head or the totals; nothing in a file without either.
  const std::optional<RunOptions>& Options() const { return m_options; }

  // Nothing: the run that wrote it didn't come to its end.
  const std::optional<RunTotals>& Totals() const { return m_totals; }

  // Up to the end of the last whole line, and what an interrupted write left behind it.
  long long WholeSize() const { return m_wholeSize; }
  const std::string& Rest() const { return m_rest; }

 private:
  [[noreturn]] void RefuseContent() const;
  [[noreturn]] void RefuseSeveralRuns() const;
  void TakeLine(const std::string& line);
  void TakeOptions(const RunOptions& options);
  void TakeTotals(const RunTotals& totals);
  bool IsReplaced(const ResultPlace& earlier, const ResultPlace& later) const;
  void Sort();

  std::string m_path;
  std::vector<ResultPlace> m_places;
  bool m_isJournal = false;
  std::optional<RunOptions> m_options;
  std::optional<RunTotals> m_totals;
  long long m_wholeSize = 0;
  std::string m_rest;
};

}  // namespace corvo

#endif
