// Any bytes as the trace settings file: the filter that it gives, against the definition of its
// lines; and what is set is in the file, beside what was there.

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>

#include "LarkspurCommon/debug.h"
#include "Target.h"
#include "platform/HostServices.h"
#include "support/Scratch.h"

namespace {

using Entries = std::map<std::string, std::string>;

constexpr std::size_t kLongestPiece = 511;
constexpr char kTrimmed[] = " \t\r\n\v\f";

// The pieces that fgets gives, which end at a NUL for those who look into them.
Entries Model(const std::string& bytes) {
  Entries entries;
  for (std::size_t at = 0; at < bytes.size();) {
    const std::size_t feed = bytes.find('\n', at);
    const std::size_t end = feed == std::string::npos ? bytes.size() : feed + 1;
    std::string line = bytes.substr(at, std::min(end - at, kLongestPiece));
    at += line.size();
    line.resize(std::strlen(line.c_str()));
    if (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
    const std::size_t equals = line.find('=');
    if (equals == std::string::npos) continue;
    const std::size_t begin = line.find_first_not_of(' ', equals + 1);
    if (begin == std::string::npos) continue;
    const std::string value = line.substr(begin);
    const std::size_t last = value.find_last_not_of(kTrimmed);
    entries.emplace(line.substr(0, equals),
                    last == std::string::npos ? std::string() : value.substr(0, last + 1));
  }
  return entries;
}

std::string Path() {
  return CorvoSettingsDirectory() + std::string("/corvo_debug_settings.ini");
}

// Each in a second of its own: that is how a change shows.
void Replace(const std::string& bytes) {
  static time_t second = 1'000'000'000;
  corvo_test::WriteFile(Path(), bytes);
  const timespec times[2] = {{++second, 0}, {second, 0}};
  Require(::utimensat(AT_FDCWD, Path().c_str(), times, 0) == 0, "the file's time is set");
}

DebugFilterLevel NameOf(int level) {
  constexpr DebugFilterLevel kNames[] = {DFL_OFF,      DFL_ESSENTIAL, DFL_ERRORS,   DFL_NOTICES,
                                         DFL_NOTICES,  DFL_REQUESTS,  DFL_REQUESTS, DFL_REQUESTS,
                                         DFL_REQUESTS, DFL_EVERYTHING};
  return kNames[std::min(level, 9)];
}

void CheckLevel(const Entries& model) {
  const auto entry = model.find("Filter Level");
  if (entry == model.end()) return;
  const std::string& text = entry->second;
  if (text.empty() || text.size() > 4 || text.find_first_not_of("0123456789") != std::string::npos)
    return;  // how odd numbers read is another matter
  Require(GetDebugFilterLevel() == NameOf(std::atoi(text.c_str())), "the level of the file");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool started = [] {
    InitDebug(nullptr, "fuzz", nullptr);
    return true;
  }();
  Require(started, "the module starts");
  const std::string bytes = Input(data, size).RestWithRun();
  Replace(bytes);
  Entries model = Model(bytes);
  ReadDebugSettings();
  CheckLevel(model);
  for (const auto& [key, value] : model) {
    bool found = false;
    Require(GetData(key.c_str(), found) == value && found, "an entry of the file");
  }

  SetDebugFilterLevel(DFL_NOTICES);
  const Entries written = Model(corvo_test::ReadFile(Path()));
  model["Filter Level"] = "3";
  for (const auto& [key, value] : model) {
    if (key == "ID Bitmap" || key == "Module Name") continue;
    if (value.empty() || key.size() + value.size() + 2 > kLongestPiece) continue;
    const auto entry = written.find(key);
    Require(entry != written.end() && entry->second == value, "other entries are kept");
  }
  return 0;
}
