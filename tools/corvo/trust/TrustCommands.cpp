// The command line of the commands for those who take nobody's word.

#include "tools/corvo/trust/TrustCommands.h"

#include <memory>

#include "tools/corvo/archive/Options.h"
#include "tools/corvo/trust/CheckManifest.h"
#include "tools/corvo/trust/Recipe.h"
#include "tools/corvo/trust/WriteManifest.h"

namespace corvo {
namespace {

using Run = std::function<Outcome()>;

constexpr char kManifestFooter[] = R"(
The list is one that sha256sum -c takes, in that directory. A seal proves nothing
against who can write the file: he can seal it again. A manifest that is
kept elsewhere, signed or time-stamped, does. docs/external-trust.md tells how.)";

void AddRecipe(CLI::App& app, Run& run) {
  const auto name = std::make_shared<std::string>();
  CLI::App& command =
      *app.add_subcommand("recipe", "Print the plain commands that recompute a seal");
  command.add_option("file", *name, "A sealed recording")->required()->type_name("FILE");
  command.footer("\nRun them as corvo recipe FILE | sh");
  command.callback([name, &run] { run = [name] { return PrintRecipe(*name); }; });
}

// The options of both, since one command writes and checks.
struct ManifestPlan {
  std::string output = "-";
  bool force = false;
  CheckManifestPlan check;
};

Outcome WriteOrCheck(const ManifestPlan& plan) {
  const CheckManifestPlan& check = plan.check;
  if (!check.manifest.empty()) return CheckManifest(check);
  return WriteManifest({check.directory, plan.output, plan.force, check.previous, check.jobs});
}

void AddManifest(CLI::App& app, Run& run) {
  const auto plan = std::make_shared<ManifestPlan>();
  CheckManifestPlan& check = plan->check;
  CLI::App& command = *app.add_subcommand(
      "manifest", "List the files of an archive, or check them against such a list");
  command.add_option("directory", check.directory, "The archive")->required()->type_name("DIR");
  CLI::Option* const output =
      command.add_option("-o,--output", plan->output, "File to make, outside the archive")
          ->type_name("FILE");
  command.add_flag("--force", plan->force, "Replace an existing file")->needs(output);
  command
      .add_option("--previous", check.previous,
                  "The manifest before this one, whose digest it holds")
      ->check(NotEmpty())
      ->type_name("MANIFEST");
  CLI::Option* const checked =
      command.add_option("--check", check.manifest, "Check the archive against this manifest")
          ->check(NotEmpty())
          ->type_name("MANIFEST")
          ->excludes(output);
  command.add_flag("--strict", check.strict, "Files that aren't listed fail")->needs(checked);
  CLI::Option* const quiet =
      command.add_flag("--quiet", check.quiet, "No lines for files that are as listed")
          ->needs(checked);
  command.add_flag("--status", check.silent, "Print nothing: the exit code tells")
      ->needs(checked)
      ->excludes(quiet);
  AddJobs(command, check.jobs);
  command.footer(kManifestFooter);
  command.callback([plan, &run] { run = [plan] { return WriteOrCheck(*plan); }; });
}

}  // namespace

void AddTrust(CLI::App& app, Run& run) {
  AddRecipe(app, run);
  AddManifest(app, run);
}

}  // namespace corvo
