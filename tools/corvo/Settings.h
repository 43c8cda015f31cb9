#ifndef TOOLS_CORVO_SETTINGS_H
#define TOOLS_CORVO_SETTINGS_H

#include <string>
#include <vector>

#include "tools/corvo/Commands.h"

namespace corvo {

// What an administrator does with a server's settings files. The files are opened as they are: no
// directory is made, and nothing is written but what is asked for. Each throws InputError.

struct SettingsPlan {
  std::string directory;           // where the settings files are; "" for the command's own
  std::vector<std::string> names;  // or NAME=VALUE
  std::string file;                // to export to or import from
  std::string group = "settings";  // which entries travel: settings, variables or mappings
  bool all = false;                // also what describes one machine
  bool clear = false;              // what the importing side had goes first
  bool force = false;              // set what isn't a known setting; replace a file
};

// Every setting, or those named: its value and where that comes from. kRefused: one that is named
// has no value.
Outcome ListSettings(const SettingsPlan& plan);

// The values alone, one on each line.
Outcome GetSettings(const SettingsPlan& plan);

Outcome SetSettings(const SettingsPlan& plan);
Outcome ExportSettings(const SettingsPlan& plan);
Outcome ImportSettings(const SettingsPlan& plan);

}  // namespace corvo

#endif
