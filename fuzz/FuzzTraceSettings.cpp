// Any bytes as the trace settings file, against a model of its reading; then a level and a name are
// set, and the file that this makes is read again.

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <vector>

#include "LarkspurCommon/debug.h"
#include "LarkspurCommon/tstring.h"
#include "Target.h"
#include "platform/HostServices.h"
#include "support/Scratch.h"

using namespace corvo_test;

namespace {

using Entries = std::map<std::string, std::string>;
constexpr std::size_t kLineBytes = 511;
constexpr std::size_t kIds = 128;

bool IsSpace(char ch) {
  return ch == ' ' || (ch >= '\t' && ch <= '\r');
}

// The first of two equal keys counts; an empty value is none.
Entries Parse(const std::string& file) {
  Entries entries;
  for (std::size_t at = 0; at < file.size();) {
    const std::size_t end = std::min(file.find('\n', at), file.size() - 1);
    std::string line = file.substr(at, std::min(end + 1 - at, kLineBytes));
    at += line.size();
    line = line.substr(0, line.find('\0'));
    if (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
    const std::size_t equals = line.find('=');
    if (equals == std::string::npos) continue;
    std::string value = line.substr(equals + 1);
    value.erase(0, value.find_first_not_of(' '));
    if (value.empty()) continue;
    while (!value.empty() && IsSpace(value.back())) value.pop_back();
    entries.emplace(line.substr(0, equals), value);
  }
  return entries;
}

std::string FileOf(const Entries& entries) {
  std::string file;
  for (const auto& [key, value] : entries) file += key + "=" + value + "\n";
  return file;
}

// Of a number in text: what a 32-bit strtoul gives, cut to 16 bits and limited to 9.
unsigned Level(const std::string& text) {
  std::size_t at = 0;
  while (at < text.size() && IsSpace(text[at])) ++at;
  const bool negative = at < text.size() && text[at] == '-';
  if (at < text.size() && (text[at] == '-' || text[at] == '+')) ++at;
  unsigned long long value = 0;
  for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
    value = std::min(value * 10 + static_cast<unsigned>(text[at] - '0'), 0x100000000ULL);
  }
  if (value > 0xFFFFFFFF) {
    value = 0xFFFFFFFF;
  } else if (negative) {
    value = 0x100000000 - value;
  }
  return std::min(static_cast<unsigned>(value & 0xFFFF), 9u);
}

unsigned HexValue(char ch) {
  return static_cast<unsigned>(
      std::string("0123456789abcdef").find(static_cast<char>(std::tolower(ch))));
}

// A pair that doesn't begin with a digit is 0, one that doesn't end with one has that digit only.
unsigned Pair(const std::string& pair) {
  if (std::isxdigit(static_cast<unsigned char>(pair[0])) == 0) return 0;
  const bool both = pair.size() == 2 && std::isxdigit(static_cast<unsigned char>(pair[1])) != 0;
  return both ? HexValue(pair[0]) * 16 + HexValue(pair[1]) : HexValue(pair[0]);
}

struct Filter {
  unsigned level = 5;
  std::vector<unsigned> bitmap = std::vector<unsigned>(kIds / 8, 0xFF);

  void Take(const Entries& entries) {
    if (entries.count("Filter Level") != 0) level = Level(entries.at("Filter Level"));
    const std::string text = entries.count("ID Bitmap") != 0 ? entries.at("ID Bitmap") : "";
    for (std::size_t i = 0; i < bitmap.size() && 2 * i < text.size(); ++i) {
      bitmap[i] = Pair(text.substr(2 * i, 2));
    }
  }
  std::string BitmapText() const {
    std::string text;
    for (const unsigned byte : bitmap) text += tstring::FromFormat("%02x", byte);
    return text;
  }
};

std::string Path() {
  return std::string(CorvoSettingsDirectory()) + "/corvo_debug_settings.ini";
}

// Whole seconds tell whether the file has changed: each time it is touched it gets another.
void Touch() {
  static time_t second = 1'000'000;
  const timespec times[] = {{++second, 0}, {second, 0}};
  Require(::utimensat(AT_FDCWD, Path().c_str(), times, 0) == 0, "the file's time can be set");
}

void ReadFileOf(const std::string& bytes) {
  WriteFile(Path(), bytes);
  Touch();
  ReadDebugSettings();
}

void CompareFilter(const Filter& filter) {
  static constexpr unsigned kOffered[] = {0, 1, 2, 3, 3, 5, 5, 5, 5, 9};
  Require(GetDebugFilterLevel() == kOffered[filter.level], "the level");
  for (unsigned id = 0; id < kIds; ++id) {
    const bool enabled = filter.level > 0 && (filter.bitmap[id / 8] >> id % 8 & 1) != 0;
    Require(IsDebugEnabled(id << 16 | filter.level) == enabled, "whether an ID is enabled");
    Require(!IsDebugEnabled(id << 16 | (filter.level + 1)), "no line above the level");
  }
}

void CompareEntries(const Entries& entries) {
  for (const auto& [key, value] : entries) {
    bool found = false;
    Require(GetData(key.c_str(), found) == value && found, "an entry");
  }
}

// Sets a level and a name; the file then has the whole model.
void Change(Entries& entries, Filter& filter, DebugFilterLevel level, unsigned id,
            const std::string& name) {
  const char* const names[] = {name.c_str()};
  SetDebugIdNames(id, 1, names);
  SetDebugFilterLevel(level);
  filter.level = level;
  entries[tstring::FromFormat("ID %02x Name", id)] = name;
  entries["Filter Level"] = std::to_string(filter.level);
  entries["ID Bitmap"] = filter.BitmapText();
  entries["Module Name"] = "Fuzzed  ";
  Require(ReadFile(Path()) == FileOf(entries), "the file with the settings");
}

void Compare(const Entries& entries, Filter& filter) {
  filter.Take(entries);
  CompareEntries(entries);
  CompareFilter(filter);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool started = (InitDebug(nullptr, "Fuzzed", nullptr), true);
  static_cast<void>(started);
  static constexpr DebugFilterLevel kLevels[] = {DFL_OFF, DFL_ERRORS, DFL_REQUESTS, DFL_EVERYTHING};
  Input input(data, size);
  const DebugFilterLevel level = kLevels[input.Byte() % 4];
  const unsigned id = input.Byte();
  const std::string name = input.Text();
  const std::string bytes = input.Rest();

  Filter filter;
  ReadFileOf("Filter Level=5\nID Bitmap=" + filter.BitmapText() + "\n");
  ReadFileOf(bytes);
  Entries entries = Parse(bytes);
  Compare(entries, filter);
  Change(entries, filter, level, id, name);
  Touch();
  ReadDebugSettings();
  Compare(Parse(FileOf(entries)), filter);
  return 0;
}
