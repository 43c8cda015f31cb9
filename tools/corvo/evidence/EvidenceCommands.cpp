// The command line of inspect and report.

#include "tools/corvo/evidence/EvidenceCommands.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>

#include "tools/corvo/InputError.h"
#include "tools/corvo/PartFile.h"
#include "tools/corvo/Paths.h"
#include "tools/corvo/UtcTime.h"
#include "tools/corvo/archive/ReadOnly.h"
#include "tools/corvo/archive/Verdicts.h"
#include "tools/corvo/evidence/Evidence.h"
#include "tools/corvo/evidence/EvidenceJson.h"
#include "tools/corvo/evidence/EvidencePage.h"

namespace corvo {
namespace {

struct EvidencePlan {
  std::vector<std::string> files;
  bool json = false;
  std::string output = "-";
  std::string format = "html";
  std::string codec;
  bool force = false;
};

Outcome Inspect(const EvidencePlan& plan) {
  Outcome worst = Outcome::kFine;
  for (const std::string& file : plan.files) {
    const RecordingEvidence evidence = GatherEvidence(file, false);
    worst = std::max(worst, OutcomeOf(evidence.found.verdict));
    if (plan.json) {
      std::cout << RecordingJson(evidence);
    } else {
      std::cout << (&file == &plan.files.front() ? "" : "\n")
                << RenderText(InspectionPage(evidence));
    }
  }
  return worst;
}

std::string Rendered(const EvidenceReport& report, const std::string& format) {
  if (format == "json") return ReportJson(report);
  const Page page = ReportPage(report);
  return format == "text" ? RenderText(page) : RenderHtml(page);
}

void WriteNewFile(const std::string& target, const std::string& text, bool force) {
  PartFile part(target);
  std::ofstream file(part.Path(), std::ios::binary);
  if (!file.write(text.data(), static_cast<std::streamsize>(text.size())).flush()) {
    throw InputError(target, "can't be written");
  }
  file.close();
  part.Publish(force);
}

// A report never takes the place of what it is about.
void RefuseRecording(const EvidencePlan& plan) {
  const std::optional<FileState> output = StateOf(plan.output);
  for (const std::string& file : plan.files) {
    const std::optional<FileState> state = StateOf(file);
    if (output && state && output->IsFile(*state)) {
      throw InputError(plan.output, "is one of the recordings");
    }
  }
}

Outcome WriteReport(const EvidencePlan& plan) {
  const bool toFile = plan.output != "-";
  const std::string target = toFile ? NewFile(plan.output, plan.force) : std::string();
  if (toFile) RefuseRecording(plan);
  EvidenceReport report{TimeOfReport(), DescribeTool(), plan.codec == "g726", {}};
  Outcome worst = report.tool.Passed() ? Outcome::kFine : Outcome::kBadInput;
  for (const std::string& file : plan.files) {
    report.recordings.push_back(GatherEvidence(file, report.waveformAsked));
    worst = std::max(worst, OutcomeOf(report.recordings.back().found.verdict));
  }
  const std::string text = Rendered(report, plan.format);
  if (toFile) {
    WriteNewFile(target, text, plan.force);
  } else {
    std::cout << text;
  }
  return worst;
}

CLI::App& AddCommand(CLI::App& app, const char* name, const char* help,
                     const std::shared_ptr<EvidencePlan>& plan, std::function<Outcome()>& run,
                     Outcome (*action)(const EvidencePlan&)) {
  CLI::App& command = *app.add_subcommand(name, help);
  command.add_option("files", plan->files, "Recordings")->required()->type_name("FILE");
  command.callback([plan, &run, action] { run = [plan, action] { return action(*plan); }; });
  return command;
}

}  // namespace

void AddEvidence(CLI::App& app, std::function<Outcome()>& run) {
  const auto plan = std::make_shared<EvidencePlan>();
  AddCommand(app, "inspect", "Show how recordings are built and why a seal fails", plan, run,
             Inspect)
      .add_flag("--json", plan->json, "One JSON object a line");

  CLI::App& report = AddCommand(app, "report", "Write a report on recordings for a court file",
                                plan, run, WriteReport);
  report
      .add_option("-o,--output", plan->output,
                  "File to make. By default, and for \"-\", the report\ngoes to the output")
      ->type_name("FILE");
  report.add_option("--format", plan->format, "By default html")
      ->check(CLI::IsMember({"html", "json", "text"}).description(""))
      ->type_name("html|json|text");
  report
      .add_option("--codec", plan->codec,
                  "State that the audio is G.726, to have it drawn. The file\ncan't tell")
      ->check(CLI::IsMember({"g726"}).description(""))
      ->type_name("g726");
  report.add_flag("--force", plan->force, "Replace an existing file");
}

}  // namespace corvo
