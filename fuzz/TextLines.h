#ifndef FUZZ_TEXTLINES_H
#define FUZZ_TEXTLINES_H

#include <string>

// What one read of a text file gives: character by character, as the reading of lines is defined.
// LF, CR, CR LF and LF CR end a line and become LF; a line that `most` characters or the file's end
// cut comes unchanged. `at` moves past what was read. Empty at the end of the file.
inline std::string TakeLine(const std::string& bytes, std::size_t& at, std::size_t most) {
  const auto isEnd = [](char ch) { return ch == '\r' || ch == '\n'; };
  std::string line;
  bool ended = false;
  while (line.size() < most && !ended && at < bytes.size()) {
    const char next = bytes[at];
    const bool afterEnd = !line.empty() && isEnd(line.back());
    ended = afterEnd;
    if (afterEnd && (!isEnd(next) || next == line.back())) break;
    line += next;
    ++at;
  }
  if (!ended) return line;
  if (line.size() > 1 && isEnd(line[line.size() - 2])) line.pop_back();
  line.back() = '\n';
  return line;
}

#endif
