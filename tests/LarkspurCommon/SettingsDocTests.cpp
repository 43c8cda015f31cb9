// The table of settings and its documentation say the same.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>

#include "LarkspurCommon/AregistrySettings.h"

namespace {

using settings::Beyond;
using settings::Form;
using settings::Setting;

std::string Quoted(const char* text) {
  return "`" + std::string(text) + "`";
}

// The first five columns of a setting's row.
std::string RowOf(const Setting& setting) {
  const char* const forms[] = {"text", "number", "integer", "Y/N", "directory"};
  const char* const beyonds[] = {"nearest", "default", "itself"};
  const bool limited = setting.low != 0 || setting.high != 0xFFFFFFFF;
  std::string row = "| " + Quoted(setting.name) + " | " + forms[static_cast<int>(setting.form)];
  if (setting.form == Form::Directory) {
    row += " | derived |";
  } else {
    row += " | " + (setting.written != nullptr ? Quoted(setting.written) : "") + " |";
  }
  if (!limited) return row + "  |  |";
  return row + " " + std::to_string(setting.low) + " to " + std::to_string(setting.high) + " | " +
         beyonds[static_cast<int>(setting.beyond)] + " |";
}

TEST(SettingsDocumentation, ListsEverySettingAsItIs) {
  std::ifstream file(CORVO_SETTINGS_DOC);
  std::string documented, expected;
  for (std::string line; std::getline(file, line);) {
    if (std::count(line.begin(), line.end(), '|') != 7 || line.rfind("| `", 0) != 0) continue;
    std::size_t end = 0;
    for (int column = 0; column < 5; ++column) end = line.find('|', end + 1);
    documented += line.substr(0, end + 1) + "\n";
  }
  for (const Setting& setting : settings::kSettings) expected += RowOf(setting) + "\n";
  EXPECT_EQ(documented, expected);
}

}  // namespace
