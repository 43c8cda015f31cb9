#ifndef TOOLS_CORVO_ARCHIVE_JOURNAL_H
#define TOOLS_CORVO_ARCHIVE_JOURNAL_H

#include <chrono>
#include <optional>
#include <string>

#include "tools/corvo/archive/ResultFile.h"

namespace corvo {

// The results of a run that may be interrupted at any time, also by a crash: a line is written as
// a whole, and what a crash leaves of one is cut off.
class Journal {
 public:
  // Takes up what is there, or begins. Throws InputError: another run uses it, it belongs to other
  // options, it is something else (then it isn't touched), or it can't be written.
  Journal(const std::string& path, const RunOptions& options);

  // What it holds about an input, true as long as the file is in that state. Nothing where the file
  // must be examined: also where it couldn't be before, or the line is damaged. Throws InputError
  // when the number belongs to another name. Any thread.
  std::optional<Result> Find(const Input& input) const;

  // Throw InputError when the line can't be written.
  void Add(const Result& result);
  void Finish(const RunTotals& totals);

 private:
  void Open();
  void TakeUp();
  void Begin(const std::string& head);
  void Write(const std::string& line);
  void Flush();

  std::string m_path;
  RunOptions m_options;
  Descriptor m_file;
  std::optional<ResultFile> m_old;
  bool m_isFinished = false;
  std::chrono::steady_clock::time_point m_flushed = std::chrono::steady_clock::now();
};

}  // namespace corvo

#endif
