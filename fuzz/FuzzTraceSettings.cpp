// Any bytes as the trace settings file: a filter comes of it, and the file that is written when a
// level and a name are set gives the same filter and name again.

#include <vector>

#include "LarkspurCommon/debug.h"
#include "LarkspurCommon/tstring.h"
#include "Target.h"
#include "platform/HostServices.h"
#include "support/Scratch.h"

using namespace corvo_test;

namespace {

std::string Path() {
  return std::string(CorvoSettingsDirectory()) + "/corvo_debug_settings.ini";
}

void ReadFileOf(const std::string& bytes) {
  EditFile(Path(), bytes);
  ReadDebugSettings();
}

// The level up to which each ID is traced; 0: it isn't.
std::vector<unsigned> Levels() {
  std::vector<unsigned> levels;
  for (unsigned id = 0; id < 128; ++id) {
    unsigned level = 0;
    while (level < 10 && IsDebugEnabled(id << 16 | (level + 1))) ++level;
    Require(level <= 9, "no line above level 9");
    levels.push_back(level);
  }
  return levels;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool started = (InitDebug(nullptr, "Fuzzed", nullptr), true);
  static_cast<void>(started);
  static constexpr DebugFilterLevel kLevels[] = {DFL_OFF, DFL_ERRORS, DFL_REQUESTS, DFL_EVERYTHING};
  Input input(data, size);
  const DebugFilterLevel level = kLevels[input.Byte() % 4];
  const unsigned id = input.Byte();
  const std::string text = input.Text();
  const std::string name = text.substr(0, text.find('\n'));
  const char* const names[] = {name.c_str()};

  ReadFileOf("Filter Level=5\nID Bitmap=" + std::string(32, 'f') + "\n");
  ReadFileOf(input.Rest());
  Levels();
  SetDebugIdNames(id, 1, names);
  SetDebugFilterLevel(level);
  const std::vector<unsigned> levels = Levels();
  for (const unsigned each : levels) Require(each == 0 || each == level, "the level that was set");
  const std::string written = ReadFile(Path());
  ReadFileOf("Filter Level=2\nID Bitmap=01\n");
  ReadFileOf(written);
  Require(Levels() == levels, "the same filter again");
  return 0;
}
