// The command line of corvo recover.

#include "tools/corvo/recovery/RecoveryCommands.h"

#include <iostream>
#include <memory>

#include "tools/corvo/archive/Names.h"
#include "tools/corvo/archive/Options.h"
#include "tools/corvo/recovery/LeftoverList.h"
#include "tools/corvo/recovery/Recover.h"

namespace corvo {
namespace {

constexpr char kFooter[] = R"(
Lists what is left in a server's temporary directory, and changes nothing.
With --to, --same-as or --remove it deals with one file of it. A complete
recording may be the only copy: docs/recovery.md tells what to do.)";

struct RecoveryPlan {
  std::string path;
  std::string restored;   // the recording to restore
  std::string duplicate;  // the recording that is the same
  bool remove = false;
  bool json = false;
};

Outcome Say(const std::string& name, const std::string& text) {
  std::cout << NameInLine(name) << ": " << text << '\n';
  return Outcome::kFine;
}

Outcome Recover(const RecoveryPlan& plan) {
  if (!plan.restored.empty()) {
    RestoreLeftover(plan.path, plan.restored);
    return Say(plan.restored, "restored");
  }
  if (!plan.duplicate.empty() || plan.remove) {
    plan.remove ? RemoveLeftover(plan.path) : RemoveDuplicate(plan.path, plan.duplicate);
    return Say(plan.path, "removed");
  }
  return ListLeftovers(plan.path, plan.json);
}

}  // namespace

void AddRecover(CLI::App& app, std::function<Outcome()>& run) {
  const auto plan = std::make_shared<RecoveryPlan>();
  CLI::App& command =
      *app.add_subcommand("recover", "List, restore or remove what a crash has left");
  command
      .add_option("path", plan->path,
                  "The temporary directory, or one of the files in it that\nare named QRT….tmp")
      ->required()
      ->check(NotEmpty())
      ->type_name("DIR|FILE");
  CLI::Option* const restored =
      command
          .add_option("--to", plan->restored,
                      "Restore the complete recording in FILE under this\nname, which must be free")
          ->check(NotEmpty())
          ->type_name("RECORDING");
  CLI::Option* const duplicate =
      command
          .add_option("--same-as", plan->duplicate,
                      "Remove FILE, since this recording is the same, byte for\nbyte")
          ->check(NotEmpty())
          ->type_name("RECORDING")
          ->excludes(restored);
  CLI::Option* const remove =
      command.add_flag("--remove", plan->remove, "Remove FILE, which is incomplete")
          ->excludes(restored)
          ->excludes(duplicate);
  command.add_flag("--json", plan->json, "One JSON object a line")
      ->excludes(restored)
      ->excludes(duplicate)
      ->excludes(remove);
  command.footer(kFooter);
  command.callback([plan, &run] { run = [plan] { return Recover(*plan); }; });
}

}  // namespace corvo
