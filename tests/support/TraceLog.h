#ifndef TESTS_SUPPORT_TRACELOG_H
#define TESTS_SUPPORT_TRACELOG_H

#include <string>
#include <vector>

namespace corvo_test {

// One trace line, taken apart. The time, process and thread fields are left out.
struct TraceLine {
  unsigned id;       // as printed: 0x27 for the engine
  char level;        // '0' to '9', or '?'
  std::string text;  // indentation and message, without the line feed
};

// Records every trace line of the process while it lives, through the narrow hook, with the filter
// at level 9. One at a time; lines may come from any thread.
class TraceLog {
 public:
  TraceLog();
  ~TraceLog();
  TraceLog(const TraceLog&) = delete;
  TraceLog& operator=(const TraceLog&) = delete;

  std::vector<TraceLine> Lines() const;
  std::vector<std::string> Texts() const;                         // of every line
  std::vector<std::string> Texts(unsigned id, char level) const;  // of these lines only
  void Clear();
};

}  // namespace corvo_test

#endif
