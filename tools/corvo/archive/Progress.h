#ifndef TOOLS_CORVO_ARCHIVE_PROGRESS_H
#define TOOLS_CORVO_ARCHIVE_PROGRESS_H

#include <atomic>
#include <chrono>
#include <optional>
#include <string>
#include <thread>

#include "tools/corvo/archive/Inputs.h"

namespace corvo {

struct Amount {
  unsigned long long files = 0;
  long long bytes = 0;
};

// Counts ahead, on a thread of its own, how much there is to do.
class Survey {
 public:
  // Lists may be pipes, which can be read but once: then nothing is counted.
  explicit Survey(const InputPlan& plan);
  ~Survey();
  Survey(const Survey&) = delete;
  Survey& operator=(const Survey&) = delete;

  // Null until all is counted.
  const Amount* Found() const { return m_isDone ? &m_found : nullptr; }

 private:
  void Count(const InputPlan& plan);

  Amount m_found;  // belongs to the thread until m_isDone
  std::atomic<bool> m_isDone{false};
  std::atomic<bool> m_mustStop{false};
  std::thread m_thread;
};

// The line that says how far a long run has come. It is shown where standard error is a terminal;
// elsewhere nothing is. One thread uses it.
class Progress {
 public:
  explicit Progress(const InputPlan& plan);
  ~Progress() { Erase(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // A file is done; a known one was done by an earlier run, and says nothing about the speed.
  void Add(long long bytes, bool isKnown);

  // Draws the line, at most five times a second.
  void Draw();

  // To be called before a result is printed: makes room for it where both share the terminal.
  void MakeRoom();

  void Erase();

 private:
  using Clock = std::chrono::steady_clock;

  std::string Line(double seconds) const;

  std::optional<Survey> m_survey;  // none where nothing is shown
  Amount m_done;
  long long m_read = 0;  // bytes, in this run
  Clock::time_point m_started = Clock::now();
  Clock::time_point m_drawn{};
  bool m_isShown = false;
  const bool m_sharesTerminal;
};

}  // namespace corvo

#endif
