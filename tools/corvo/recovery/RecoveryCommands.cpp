// The command line of recover.

#include "tools/corvo/recovery/RecoveryCommands.h"

#include <memory>

#include "tools/corvo/InputError.h"
#include "tools/corvo/Times.h"
#include "tools/corvo/archive/Options.h"
#include "tools/corvo/recovery/LeftoverList.h"
#include "tools/corvo/recovery/Removal.h"
#include "tools/corvo/recovery/Restoration.h"

namespace corvo {
namespace {

using Run = std::function<Outcome()>;

constexpr char kFooter[] = R"(
A crash while a recording is sealed may leave it, complete and sealed, as a
file QRT….tmp in the server's temporary directory, and nowhere else.
docs/recovery.md tells what to do, step by step.)";

struct RecoveryPlan {
  LeftoverListPlan list;
  RestorationPlan restoration;
  RemovalPlan removal;
  std::string olderThan = "1h";
};

// In seconds, rounded up.
long long ReadAge(const std::string& text) {
  try {
    const long long ticks = ParseDuration(text);
    return ticks / kTicksPerSecond + (ticks % kTicksPerSecond != 0 ? 1 : 0);
  } catch (const InputError& error) {
    throw CLI::ValidationError("--older-than", "\"" + text + "\" is " + error.what());
  }
}

// The age holds for whichever is asked for.
Run ChooseRun(const std::shared_ptr<RecoveryPlan>& plan) {
  const long long age = ReadAge(plan->olderThan);
  plan->list.olderThan = plan->restoration.olderThan = plan->removal.olderThan = age;
  if (!plan->list.directory.empty()) return [plan] { return ListLeftovers(plan->list); };
  if (!plan->restoration.file.empty()) return [plan] { return Restore(plan->restoration); };
  if (!plan->removal.files.empty()) return [plan] { return Remove(plan->removal); };
  throw CLI::RequiredError("--dir, --restore or --remove");
}

CLI::Option* AddPath(CLI::App& command, const char* name, std::string& path, const char* type,
                     const char* help) {
  return command.add_option(name, path, help)->check(NotEmpty())->type_name(type);
}

}  // namespace

void AddRecovery(CLI::App& app, Run& run) {
  const auto plan = std::make_shared<RecoveryPlan>();
  CLI::App& command =
      *app.add_subcommand("recover", "Find and put back recordings that a crash has left");
  CLI::Option* const list = AddPath(command, "--dir", plan->list.directory, "DIR",
                                    "List what is left in this temporary directory");
  command.add_flag("--json", plan->list.json, "One JSON object a line instead of text")
      ->needs(list);
  CLI::Option* const restore = AddPath(command, "--restore", plan->restoration.file, "FILE",
                                       "Give a complete recording its name back")
                                   ->excludes(list);
  CLI::Option* const target = AddPath(command, "--to", plan->restoration.target, "PATH",
                                      "That name. No file is ever replaced")
                                  ->needs(restore);
  restore->needs(target);
  CLI::Option* const remove =
      command.add_option("--remove", plan->removal.files, "Remove incomplete files")
          ->check(NotEmpty())
          ->type_name("FILE")
          ->excludes(list)
          ->excludes(restore);
  AddPath(command, "--sealed-as", plan->removal.sealedAs, "PATH",
          "Also those that hold the seal of this intact recording")
      ->needs(remove);
  command
      .add_option("--older-than", plan->olderThan,
                  "Younger files may be in a server's hands: they are left\n"
                  "alone. By default 1h")
      ->type_name("DURATION");
  command.footer(kFooter);
  command.callback([plan, &run] { run = ChooseRun(plan); });
}

}  // namespace corvo
