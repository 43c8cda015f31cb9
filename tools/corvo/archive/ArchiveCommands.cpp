// The command line of the commands for archives.

#include "tools/corvo/archive/ArchiveCommands.h"

#include <memory>

#include "tools/corvo/InputError.h"
#include "tools/corvo/archive/Options.h"
#include "tools/corvo/archive/Summary.h"
#include "tools/corvo/archive/VerifyArchive.h"

namespace corvo {
namespace {

using Run = std::function<Outcome()>;

constexpr char kVerifyFooter[] = R"(
Verdicts: ok; broken, unsealed, malformed (exit code 1); unreadable,
changed while it was read (exit code 2). Names with a backslash, control
characters or bytes that are no UTF-8 are written as the checksum tools do:
the line begins with a backslash. docs/archive.md tells the rest.)";

void AddPrinting(CLI::App& command, PrintPlan& print) {
  CLI::Option* const json =
      command.add_flag("--json", print.json, "One JSON object a line instead of text");
  CLI::Option* const quiet =
      command.add_flag("--quiet", print.quiet, "No lines for recordings that are ok");
  command.add_flag("--status", print.silent, "Print nothing: the exit code tells")
      ->excludes(json)
      ->excludes(quiet);
  quiet->excludes(json);
}

void AddInputs(CLI::App& command, VerifyPlan& plan) {
  command.add_option("files", plan.inputs.names, "Recordings, and directories of them")
      ->type_name("PATH");
  command
      .add_option("--files-from", plan.inputs.list,
                  "A file with more of them, one a line; \"-\" is standard\ninput")
      ->check(NotEmpty())
      ->type_name("FILE");
  command.add_flag("-0,--null", plan.inputs.zeroSeparated,
                   "They end at zero bytes in it, and are taken as they are");
  command
      .add_option_function<std::string>(
          "--shard",
          [&plan](const std::string& text) {
            try {
              plan.inputs.shard = ParseShard(text);
            } catch (const InputError& error) {
              throw CLI::ValidationError("--shard", "\"" + text + "\" is " + error.what());
            }
          },
          "Only the I-th of N shares of all inputs")
      ->type_name("I/N");
}

void AddRunning(CLI::App& command, VerifyPlan& plan) {
  CLI::Option* const host =
      command.add_flag("--through-host-call", plan.options.throughHostCall,
                       "Call the exported VerifySignature, as hosts do: slower,\n"
                       "by the library's path rules, with temporary copies");
  command
      .add_flag("--strict", plan.options.strict,
                "Malformed is also what departs from the sealed layout\n"
                "where the seal doesn't look")
      ->excludes(host);
  AddJobs(command, plan.jobs);
  command
      .add_option("--resume", plan.journal,
                  "Keep the results in this file as well, and don't examine\n"
                  "again what it holds already")
      ->check(NotEmpty())
      ->type_name("JOURNAL");
}

}  // namespace

void AddVerify(CLI::App& app, Run& run, Run& runAsHost) {
  const auto plan = std::make_shared<VerifyPlan>();
  CLI::App& command =
      *app.add_subcommand("verify", "Verify that sealed recordings are what was sealed");
  AddInputs(command, *plan);
  AddPrinting(command, plan->print);
  AddRunning(command, *plan);
  command.footer(kVerifyFooter);
  command.callback([plan, &run, &runAsHost] {
    plan->options.shard = plan->inputs.shard;
    (plan->options.throughHostCall ? runAsHost : run) = [plan] { return VerifyArchive(*plan); };
  });
}

void AddSummary(CLI::App& app, Run& run) {
  struct Plan {
    std::vector<std::string> files;
    PrintPlan print;
  };
  const auto plan = std::make_shared<Plan>();
  CLI::App& command =
      *app.add_subcommand("summary", "Put results of several runs of \"verify\" together");
  command.add_option("results", plan->files, "What \"verify --json\" printed, or journals")
      ->required()
      ->type_name("RESULTS");
  AddPrinting(command, plan->print);
  command.callback([plan, &run] { run = [plan] { return Summarize(plan->files, plan->print); }; });
}

}  // namespace corvo
