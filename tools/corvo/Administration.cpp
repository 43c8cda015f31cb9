// The command line of the commands for administrators.

#include "tools/corvo/Administration.h"

#include <memory>

#include "tools/corvo/HostServices.h"
#include "tools/corvo/Paths.h"
#include "tools/corvo/Settings.h"
#include "tools/corvo/TraceSettings.h"

namespace corvo {
namespace {

using Run = std::function<Outcome()>;

struct TracePlan {
  std::string directory;
  unsigned level = 0;
  std::vector<std::string> on;
  std::vector<std::string> off;
};

void AddDirectory(CLI::App& command, std::string& directory) {
  command
      .add_option("--dir", directory,
                  "Where the settings files are, such as /etc. By default the\ncommand's own home")
      ->type_name("DIR");
}

CLI::App& AddSettingsCommand(CLI::App& settings, const char* name, const char* help,
                             const std::shared_ptr<SettingsPlan>& plan, Run& run,
                             Outcome (*action)(const SettingsPlan&)) {
  CLI::App& command = *settings.add_subcommand(name, help);
  command.callback([plan, &run, action] { run = [plan, action] { return action(*plan); }; });
  return command;
}

void AddTravelOptions(CLI::App& command, SettingsPlan& plan) {
  command.add_option("file", plan.file, "A file in the form of the settings file")
      ->required()
      ->type_name("FILE");
  command.add_option("--group", plan.group, "What travels. By default the settings")
      ->check(CLI::IsMember({"settings", "variables", "mappings"}).description(""))
      ->type_name("settings|variables|mappings");
  command.add_flag("--all", plan.all,
                   "Also what belongs to one machine: directories,\naddresses, ports");
}

void AddSettings(CLI::App& app, Run& run) {
  const auto plan = std::make_shared<SettingsPlan>();
  CLI::App& settings = *app.add_subcommand("settings", "See and change a server's settings");
  settings.require_subcommand(1);
  AddDirectory(settings, plan->directory);

  AddSettingsCommand(settings, "list", "Show all settings, or those named, and their origin", plan,
                     run, ListSettings)
      .add_option("names", plan->names)
      ->type_name("NAME");
  AddSettingsCommand(settings, "get", "Print the values of settings", plan, run, GetSettings)
      .add_option("names", plan->names)
      ->required()
      ->type_name("NAME");
  CLI::App& set = AddSettingsCommand(settings, "set", "Change settings", plan, run, SetSettings);
  set.add_option("names", plan->names)->required()->type_name("NAME=VALUE");
  set.add_flag("--force", plan->force, "Also settings that aren't known");

  CLI::App& exporting =
      AddSettingsCommand(settings, "export", "Write the settings to a file for another server",
                         plan, run, ExportSettings);
  AddTravelOptions(exporting, *plan);
  exporting.add_flag("--force", plan->force, "Replace an existing file");
  CLI::App& importing = AddSettingsCommand(settings, "import", "Take over an exported file", plan,
                                           run, ImportSettings);
  AddTravelOptions(importing, *plan);
  importing.add_flag("--clear", plan->clear, "Remove what isn't in the file");
}

// The trace module finds its settings file by a host service.
Run InDirectory(const std::shared_ptr<TracePlan>& plan, const Run& action) {
  return [plan, action] {
    if (!plan->directory.empty()) UseSettingsDirectory(ExistingDirectory(plan->directory));
    return action();
  };
}

void AddTrace(CLI::App& app, Run& run) {
  const auto plan = std::make_shared<TracePlan>();
  CLI::App& trace = *app.add_subcommand("trace", "See and change what a server traces");
  trace.require_subcommand(1);
  AddDirectory(trace, plan->directory);

  trace.add_subcommand("show", "Show the level, and the IDs that are off")->callback([plan, &run] {
    run = InDirectory(plan, ShowTraceSettings);
  });

  CLI::App& level = *trace.add_subcommand("level", "Set the level");
  level.add_option("level", plan->level, "0 (nothing), 2 (errors), 5 (default) to 9 (everything)")
      ->required()
      ->check(CLI::Range(0u, 9u))
      ->type_name("LEVEL");
  level.callback(
      [plan, &run] { run = InDirectory(plan, [plan] { return SetTraceLevel(plan->level); }); });

  CLI::App& ids = *trace.add_subcommand("ids", "List the IDs, and switch them on and off");
  ids.add_option("--on", plan->on, "IDs as two hex digits, or \"all\"")->type_name("ID");
  ids.add_option("--off", plan->off, "The same. What is named by itself wins over \"all\"")
      ->type_name("ID");
  ids.callback([plan, &run] {
    run = InDirectory(plan, [plan] { return SwitchTraceIds(plan->on, plan->off); });
  });
}

}  // namespace

void AddAdministration(CLI::App& app, Run& run) {
  AddSettings(app, run);
  AddTrace(app, run);
}

}  // namespace corvo
