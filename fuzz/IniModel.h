#ifndef FUZZ_INIMODEL_H
#define FUZZ_INIMODEL_H

#include <cctype>
#include <map>
#include <string>

#include "TextLines.h"

// What a store of keys and values makes of a file, and the file that it makes of them.

using IniEntries = std::map<std::string, std::string>;

inline bool IsSpace(char ch) {
  return ch == ' ' || (ch >= '\t' && ch <= '\r');
}

inline std::string TrimmedRight(std::string text) {
  while (!text.empty() && IsSpace(text.back())) text.pop_back();
  return text;
}

inline std::string Trimmed(const std::string& text) {
  std::size_t begin = 0;
  while (begin < text.size() && IsSpace(text[begin])) ++begin;
  return TrimmedRight(text.substr(begin));
}

inline std::string Upper(std::string text) {
  for (char& ch : text) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
  return text;
}

// `repeated`: a key occurs twice.
inline IniEntries LoadIni(const std::string& bytes, bool& repeated) {
  IniEntries entries;
  repeated = false;
  for (std::size_t at = 0; at < bytes.size();) {
    std::string line = TakeLine(bytes, at, 1023);
    line = line.substr(0, line.find('\0'));
    const std::size_t equals = line.find('=');
    const std::size_t value =
        line.find_first_not_of(' ', equals == line.npos ? equals : equals + 1);
    if (equals == line.npos || value == line.npos) continue;
    const bool isNew =
        entries.insert_or_assign(Upper(line.substr(0, equals)), TrimmedRight(line.substr(value)))
            .second;
    repeated = repeated || !isNew;
  }
  return entries;
}

// A text of entries, as it is written: each line feed, also within a value, as CR LF.
inline std::string IniFile(const IniEntries& entries) {
  std::string file;
  for (const auto& [key, value] : entries) {
    for (const char ch : key + "=" + value + "\n") {
      if (ch == '\n') file += '\r';
      file += ch;
    }
  }
  return file;
}

#endif
