// The command line: which commands there are and what they take.

#include "tools/corvo/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <functional>
#include <iostream>

#include "tools/corvo/Administration.h"
#include "tools/corvo/Commands.h"
#include "tools/corvo/HostServices.h"
#include "tools/corvo/InputError.h"
#include "tools/corvo/Recording.h"
#include "tools/corvo/RecordingMaker.h"
#include "tools/corvo/Times.h"
#include "tools/corvo/archive/ArchiveCommands.h"
#include "tools/corvo/archive/Interruption.h"
#include "tools/corvo/evidence/EvidenceCommands.h"
#include "tools/corvo/recovery/RecoveryCommands.h"
#include "tools/corvo/trust/TrustCommands.h"

namespace corvo {
namespace {

constexpr char kDescription[] =
    "Makes, seals and verifies call recordings that must stand as evidence.";

constexpr char kFooter[] = R"(
Examples:
  corvo record call.wav call.g726 --codec g726 --start 2024-05-17T09:30:00Z \
               --item szItem03=+442079460123 --item dwIPAddress=192.0.2.17
  corvo seal call.wav
  corvo verify call.wav archive/
  corvo properties call.wav
  corvo inspect call.wav
  corvo report call.wav -o report.html
  corvo manifest archive -o archive.sha256
  corvo recover --dir /var/tmp/corvo
  corvo settings --dir /etc list
  corvo trace --dir /etc level 9

Exit code: 0 all is well; 1 a recording is not sealed or fails, a crash
has left something, a setting is not set; 2 the command line or a file
can't be used; 128 and its number: a signal ended it.)";

template <class Value>
struct Named {
  const char* name;
  Value value;
};
constexpr Named<Codec> kInputCodecs[] = {
    {"g726", Codec::kG726}, {"gsm", Codec::kGsm}, {"pcm", Codec::kPcm}};
constexpr Named<UWORD> kSealCodecs[] = {{"g726", kSealG726}, {"gsm", kSealGsm}};

// What the options of all commands are read into. The one that was named sets `run`, or `runAsHost`
// where it calls the library as its host process.
struct Request {
  std::string home;
  bool trace = false;
  std::vector<std::string> files;
  RecordingPlan record;
  std::vector<std::string> items;  // NAME=VALUE
  std::optional<long long> recordStart;
  SealPlan seal;
  bool raw = false;
  std::function<Outcome()> run;
  std::function<Outcome()> runAsHost;
};

// An option whose text `parse` reads; what it throws becomes the option's error.
template <class Value, class Parse>
CLI::Option* AddParsed(CLI::App& command, const std::string& name, std::optional<Value>& value,
                       Parse parse, const char* type, const char* help) {
  const auto read = [&value, name, parse](const std::string& text) {
    try {
      value = parse(text);
    } catch (const InputError& error) {
      throw CLI::ValidationError(name, "\"" + text + "\" is " + error.what());
    }
  };
  return command.add_option_function<std::string>(name, read, help)->type_name(type);
}

template <class Value, std::size_t count>
auto OneOf(const Named<Value> (&choices)[count]) {
  return [&choices](const std::string& text) {
    for (const Named<Value>& choice : choices) {
      if (text == choice.name) return choice.value;
    }
    throw InputError("no codec that is known here");
  };
}

std::vector<Item> SplitItems(const std::vector<std::string>& texts) {
  std::vector<Item> items;
  for (const std::string& text : texts) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos) throw InputError("--item " + text + ": is not NAME=VALUE");
    items.push_back({text.substr(0, equals), text.substr(equals + 1)});
  }
  return items;
}

// Does every file, whatever becomes of the others; the worst outcome counts.
template <class Action>
Outcome ForEach(const std::vector<std::string>& files, Action action) {
  Outcome worst = Outcome::kFine;
  for (const std::string& file : files) {
    try {
      worst = std::max(worst, action(file));
    } catch (const InputError& error) {
      std::cerr << "corvo: " << error.what() << '\n';
      worst = Outcome::kBadInput;
    }
  }
  return worst;
}

CLI::App& AddFilesCommand(CLI::App& app, const char* name, const char* help, Request& request,
                          const std::function<Outcome(const std::string&)>& action) {
  CLI::App& command = *app.add_subcommand(name, help);
  command.add_option("files", request.files, "Recordings")->required()->type_name("FILE");
  command.callback([&request, action] {
    request.runAsHost = [&request, action] { return ForEach(request.files, action); };
  });
  return command;
}

void AddRecord(CLI::App& app, Request& request) {
  RecordingPlan& plan = request.record;
  CLI::App& command = *app.add_subcommand("record", "Make a recording from audio");
  command.add_option("output", plan.output, "Recording to make")->required()->type_name("OUTPUT");
  command
      .add_option("input", plan.input,
                  "G.726 at 16 kbit/s, GSM 6.10 or linear audio of 16 bits,\n"
                  "one channel at 8000 Hz, in a WAVE file or raw")
      ->required()
      ->type_name("INPUT");
  AddParsed(command, "--codec", plan.codec, OneOf(kInputCodecs), "g726|gsm|pcm",
            "What raw audio is");
  command.add_option("--metadata", plan.metadataFile, "JSON object of metadata items")
      ->type_name("FILE");
  command.add_option("--item", request.items, "One metadata item; wins over FILE's")
      ->type_name("NAME=VALUE")
      ->allow_extra_args(false);
  AddParsed(command, "--start", request.recordStart, ParseTime, "TIME",
            "When the call began; kept in G.726 recordings only");
  command.add_flag("--force", plan.force, "Replace an existing file");
  command.footer("\nMetadata items, named alike in the JSON object:\n" + DescribeItems());
  command.callback([&request, &plan] {
    request.runAsHost = [&request, &plan] {
      plan.items = SplitItems(request.items);
      plan.start = request.recordStart.value_or(0);
      MakeRecording(plan);
      return Outcome::kFine;
    };
  });
}

void AddSeal(CLI::App& app, Request& request) {
  SealPlan& plan = request.seal;
  CLI::App& command =
      AddFilesCommand(app, "seal", "Seal recordings; sealed ones are left as they are", request,
                      [&plan](const std::string& file) { return Seal(file, plan); });
  AddParsed(command, "--start", plan.start, ParseTime, "TIME",
            "When the call began, such as 2024-05-17T09:30:00Z or\n"
            "a count of 100 ns since 1601-01-01 UTC.\n"
            "By default what a G.726 recording says itself");
  CLI::Option* const end =
      AddParsed(command, "--end", plan.end, ParseTime, "TIME", "When it ended");
  AddParsed(command, "--duration", plan.duration, ParseDuration, "DURATION",
            "How long it took, such as 65.9s or 1m5s.\nBy default the length of the audio")
      ->excludes(end);
  AddParsed(command, "--codec", plan.codec, OneOf(kSealCodecs), "g726|gsm",
            "By default what the recording's format says");
}

void AddProperties(CLI::App& app, Request& request) {
  CLI::App& command = AddFilesCommand(
      app, "properties", "Show the metadata of sealed recordings", request,
      [&request](const std::string& file) { return ShowProperties(file, request.raw); });
  command.add_flag("--raw", request.raw, "The 28 items as one line, joined by \";\"");
}

// After the commands, which would take the examples over.
void AddGeneralOptions(CLI::App& app, Request& request) {
  app.set_version_flag("--version", "corvo " CORVO_VERSION);
  app.footer(kFooter);
  app.add_option("--home", request.home,
                 "Where settings and temporary files are kept. By default\n"
                 "$XDG_STATE_HOME/corvo or ~/.local/state/corvo")
      ->type_name("DIR");
  app.add_flag("--trace", request.trace, "Show the library's trace on stderr");
}

void AddCommands(CLI::App& app, Request& request) {
  app.require_subcommand(1);
  app.fallthrough();
  app.failure_message([](const CLI::App*, const CLI::Error& error) {
    return std::string("corvo: ") + error.what() + "\nRun with --help for more information.\n";
  });
  AddRecord(app, request);
  AddSeal(app, request);
  AddVerify(app, request.run, request.runAsHost);
  AddFilesCommand(app, "status", "Tell whether recordings are sealed", request, ShowStatus);
  AddProperties(app, request);
  AddEvidence(app, request.run);
  AddTrust(app, request.run);
  AddSummary(app, request.run);
  AddRecovery(app, request.run);
  AddAdministration(app, request.runAsHost);
}

// Only a host process needs a home: whoever examines recordings may have none that can be written.
Outcome RunAsAsked(const Request& request) {
  if (!request.runAsHost) return request.run();
  SetUpHost(request.home.empty() ? DefaultHome() : request.home, request.trace);
  return request.runAsHost();
}

int Run(const Request& request) {
  const Outcome outcome = RunAsAsked(request);
  if (!std::cout.flush()) throw InputError("the output can't be written");
  return static_cast<int>(outcome);
}

// Whether CLI11 would take a path for something else: for a list, for the end of a command, or,
// though it stands behind "--", for an option.
bool IsMistaken(const std::string& text, bool isPath) {
  if (text.empty()) return false;
  return (text.front() == '[' && text.back() == ']') || text == "++" ||
         (isPath && text.front() == '-');
}

// The arguments, with such paths written otherwise; the parser wants the last one first.
std::vector<std::string> Arguments(int argc, char** argv) {
  std::vector<std::string> arguments;
  bool onlyPaths = false;
  for (int i = 1; i < argc; ++i) {
    const std::string text = argv[i];
    if (text == "--" && !onlyPaths) {
      onlyPaths = true;
    } else {
      arguments.push_back((IsMistaken(text, onlyPaths) ? "./" : "") + text);
    }
  }
  std::reverse(arguments.begin(), arguments.end());
  return arguments;
}

}  // namespace

int RunCommandLine(int argc, char** argv) {
  constexpr int kUnusable = static_cast<int>(Outcome::kBadInput);
  Request request;
  CLI::App app(kDescription, "corvo");
  AddCommands(app, request);
  AddGeneralOptions(app, request);
  try {
    app.parse(Arguments(argc, argv));
    return Run(request);
  } catch (const CLI::ParseError& error) {  // help and version too
    return app.exit(error) == 0 ? 0 : kUnusable;
  } catch (const Interrupted& interrupted) {
    std::cerr << "corvo: " << interrupted.what() << '\n';
    return interrupted.ExitCode();
  } catch (const std::exception& error) {
    std::cerr << "corvo: " << error.what() << '\n';
    return kUnusable;
  }
}

}  // namespace corvo
